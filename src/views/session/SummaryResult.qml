import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The summary, under its heading.
Item {
    id: result

    required property string summary
    property string note: ""
    signal copyAllClicked

    property real maximumTextHeight: 220

    implicitHeight: column.implicitHeight + 2 * Theme.smallPadding

    ContinuousRectangle {
        anchors.fill: parent
        radius: Theme.cornerRadius
        borderColor: Theme.separator
    }
    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: Theme.smallPadding
        spacing: 0

        Text {
            Layout.fillWidth: true
            Layout.margins: Theme.smallPadding
            text: "Summary"
            color: Theme.primary
            font.pixelSize: Theme.headline
            font.bold: true
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        ScrollableText {
            Layout.fillWidth: true
            Layout.margins: Theme.smallPadding
            objectName: "summaryText"
            text: result.summary
            note: result.note
            onCopyAllClicked: result.copyAllClicked()
            maximumHeight: result.maximumTextHeight
        }
    }
}
