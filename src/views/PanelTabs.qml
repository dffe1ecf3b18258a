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

        // The longer title gets the wider tab.
        width: (bar.availableWidth - bar.spacing) * tabWeight
        property real tabWeight: 0.5
        implicitHeight: 34
        hoverEnabled: true
        focusPolicy: Qt.StrongFocus
        Accessible.name: text

        background: ContinuousRectangle {
            radius: 8
            color: tab.checked ? Theme.raised : tab.hovered ? Theme.hover : "transparent"
            borderColor: tab.checked ? Theme.separator : "transparent"
        }
        contentItem: Item {
            Row {
                anchors.centerIn: parent
                spacing: 6

                SvgImage {
                    anchors.verticalCenter: parent.verticalCenter
                    width: 16
                    height: 16
                    name: "symbols/" + tab.iconName
                    tint: tab.checked ? Theme.accentText : Theme.secondary
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: tab.text
                    color: tab.checked ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.body
                    font.weight: tab.checked ? Font.DemiBold : Font.Normal
                }
            }
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
            tabWeight: 0.4
        }
        Tab {
            text: "Custom interactive response"
            iconName: "bubble.left.and.text.bubble.right.fill"
            tabWeight: 0.6
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
