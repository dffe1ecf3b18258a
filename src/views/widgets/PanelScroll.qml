import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// Holds a content that fills it, and that scrolls where it needs more height than there is. What the keyboard reaches
// comes into sight.
Flickable {
    id: scroll

    // How high the content must be at least.
    required property real contentMinimumHeight
    default property alias content: holder.data

    readonly property Item focused: Window.activeFocusItem

    function isWithin(item: Item): bool {
        for (let outer = item; outer; outer = outer.parent) {
            if (outer === holder)
                return true;
        }
        return false;
    }
    // What of an item can be seen at most: a long text shows through a window of its own.
    function windowOf(item: Item): Item {
        let window = item;
        for (let outer = item; outer !== holder; outer = outer.parent) {
            if (outer.clip)
                window = outer;
        }
        return window;
    }
    function bringIntoSight(focused: Item) {
        if (!focused || !interactive || !isWithin(focused))
            return;
        const item = windowOf(focused);
        if (item.height > height)
            return;
        const top = item.mapToItem(holder, 0, 0).y - Theme.spacing;
        const bottom = top + item.height + 2 * Theme.spacing;
        if (top < contentY)
            contentY = Math.max(0, Math.min(top, contentHeight - height));
        else if (bottom > contentY + height)
            contentY = Math.min(bottom, contentHeight) - height;
    }

    contentWidth: width
    contentHeight: Math.max(height, contentMinimumHeight)
    interactive: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds
    clip: interactive
    onFocusedChanged: bringIntoSight(focused)

    ScrollBar.vertical: ScrollBar {
        policy: scroll.interactive ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
        Accessible.ignored: true
    }

    Item {
        id: holder

        width: scroll.width
        height: scroll.contentHeight
    }
}
