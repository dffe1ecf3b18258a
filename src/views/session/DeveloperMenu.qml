import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The hidden menu for developers: which environment to talk to, and which version this is.
Item {
    id: menu

    required property DeveloperMenuState menuState
    property color backgroundColor: "transparent"

    implicitWidth: column.implicitWidth + 2 * Theme.smallPadding
    implicitHeight: column.implicitHeight + 2 * Theme.smallPadding

    ContinuousRectangle {
        anchors.fill: parent
        radius: Theme.cornerRadius
        color: menu.backgroundColor
        borderColor: Theme.separator
    }
    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: Theme.smallPadding
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: Theme.smallPadding
            Layout.topMargin: 2 * Theme.smallPadding
            spacing: Theme.spacing

            Text {
                Layout.fillWidth: true
                Layout.minimumWidth: 60
                Layout.maximumWidth: Math.ceil(implicitWidth) + 1
                text: "Select API endpoint"
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                color: Theme.primary
                font.pixelSize: Theme.caption
            }
            SegmentedPicker {
                objectName: "environmentPicker"
                options: menu.menuState.environments
                selection: menu.menuState.selectedApiEndpoint
                onChosen: key => menu.menuState.selectedApiEndpoint = key
            }
            Item {
                Layout.fillWidth: true
            }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spacing

            Text {
                Layout.margins: Theme.smallPadding
                Layout.topMargin: 2 * Theme.smallPadding
                text: "Version"
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                color: Theme.primary
                font.pixelSize: Theme.caption
            }
            Text {
                Layout.topMargin: Theme.smallPadding
                text: menu.menuState.version
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                textFormat: Text.PlainText
                color: Theme.primary
                font.pixelSize: Theme.body
            }
            Item {
                Layout.fillWidth: true
            }
        }
    }
}
