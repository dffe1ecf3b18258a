import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmate.Views

// The panel's two tabs.
ColumnLayout {
    id: tabs

    property alias currentIndex: bar.currentIndex

    spacing: 0

    component Tab: T.TabButton {
        id: tab

        required property string iconName

        implicitHeight: 34
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
            iconName: tab.iconName
            color: tab.checked ? Theme.primary : Theme.secondary
            fontWeight: tab.checked ? Font.DemiBold : Font.Normal
        }

        FocusRing {
            shown: tab.visualFocus
            distance: 0
            radius: 8
        }
    }

    T.TabBar {
        id: bar

        Layout.fillWidth: true
        implicitHeight: 40
        padding: 3
        spacing: 3
        background: ContinuousRectangle {
            radius: Theme.cornerRadius
            color: Theme.hover
        }
        contentItem: ListView {
            model: bar.contentModel
            currentIndex: bar.currentIndex
            orientation: ListView.Horizontal
            interactive: false
            spacing: bar.spacing
        }

        Tab {
            text: "Quick response"
            iconName: "wand.and.stars"
            width: (bar.availableWidth - bar.spacing) * 0.4
        }
        Tab {
            text: "Custom interactive response"
            iconName: "bubble.left.and.text.bubble.right.fill"
            width: (bar.availableWidth - bar.spacing) * 0.6 // The longer title gets the wider tab.
        }
    }
    Item {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.topMargin: Theme.spacing

        ContinuousRectangle {
            anchors.fill: parent
            radius: Theme.cornerRadius
            borderColor: Theme.separator
        }
        StackLayout {
            anchors.fill: parent
            anchors.margins: Theme.smallPadding
            currentIndex: bar.currentIndex

            Item {
                objectName: "quickResponse"
            }
            Item {
                objectName: "customInteractiveResponse"
            }
        }
    }
}
