import QtQuick
import QtQuick.Templates as T
import Quillmate.Views

// One of the panel's tabs: a symbol and a title.
T.TabButton {
    id: tab

    required property string iconName

    implicitHeight: Math.max(34, implicitContentHeight + 10)
    horizontalPadding: 3
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: if (enabled) choose()

    function choose() {
        T.TabBar.tabBar.setCurrentIndex(T.TabBar.index);
    }
    function chooseBeside(step: int) {
        const tabBar = T.TabBar.tabBar;
        tabBar.setCurrentIndex(Math.max(0, Math.min(tabBar.count - 1, T.TabBar.index + step)));
        tabBar.currentItem.forceActiveFocus(Qt.TabFocusReason);
    }

    Keys.onReturnPressed: choose()
    Keys.onEnterPressed: choose()
    Keys.onLeftPressed: chooseBeside(-1)
    Keys.onRightPressed: chooseBeside(1)

    background: ContinuousRectangle {
        radius: 8
        color: tab.checked ? Theme.raised : tab.hovered ? Theme.hover : "transparent"
        borderColor: tab.checked ? Theme.separator : "transparent"
    }
    contentItem: IconLabel {
        text: tab.text
        iconName: Theme.textScale < 1.3 ? tab.iconName : "" // A large text needs the room.
        color: tab.checked ? Theme.primary : Theme.secondary
        fontWeight: tab.checked ? Font.DemiBold : Font.Normal
    }

    FocusRing {
        shown: tab.visualFocus
        distance: 0
        radius: 8
    }
}
