import QtQuick
import Quillmate.Views

// The logo, with something to see in its place should it ever be missing.
Item {
    id: view

    property string firstName: "quillmateLogo"
    property string secondName: "logo"

    implicitWidth: 70
    implicitHeight: 70

    SvgImage {
        id: first
        objectName: "firstImage"
        anchors.fill: parent
        name: view.firstName
        visible: available
    }
    SvgImage {
        id: second
        objectName: "secondImage"
        anchors.fill: parent
        name: view.secondName
        visible: !first.available && available
    }
    ContinuousRectangle {
        objectName: "missingImage"
        anchors.fill: parent
        visible: !first.available && !second.available
        radius: 35
        color: "red"

        Text {
            anchors.centerIn: parent
            width: parent.width
            text: "Failed to load image"
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            color: "white"
            font.pixelSize: Theme.caption
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
