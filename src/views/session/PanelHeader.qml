import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The product's name, and the way out.
RowLayout {
    id: header

    signal logOutClicked

    spacing: Theme.spacing

    SvgImage {
        Layout.preferredWidth: 30
        Layout.preferredHeight: 30
        name: "quillmateLogo"
    }
    Text {
        text: "Quillmate"
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        color: Theme.primary
        font.pixelSize: Theme.headline
        font.bold: true
    }
    Item {
        Layout.fillWidth: true
    }
    PlainButton {
        id: logOut

        objectName: "logOutButton"
        text: "Log out"
        padding: 3
        onClicked: header.logOutClicked()

        contentItem: Row {
            spacing: Theme.spacing

            SvgImage {
                anchors.verticalCenter: parent.verticalCenter
                width: 25
                height: 25
                name: "symbols/rectangle.portrait.and.arrow.right"
                tint: logOut.hovered ? Theme.accentText : Theme.primary
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: logOut.text
                color: logOut.hovered ? Theme.accentText : Theme.primary
                font.pixelSize: Theme.headline
                font.bold: true
            }
        }
    }
}
