pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Quillmate.Views

// One choice out of a few, side by side.
Item {
    id: picker

    // Each a map of "key" and "name".
    required property var options
    required property string selection
    // The user has chosen.
    signal chosen(string key)

    function focusSegment(index: int) {
        segments.itemAt(Math.max(0, Math.min(segments.count - 1, index))).forceActiveFocus(Qt.TabFocusReason);
    }

    implicitWidth: row.implicitWidth + 4
    implicitHeight: Theme.controlHeight
    Accessible.role: Accessible.Grouping

    ContinuousRectangle {
        anchors.fill: parent
        radius: 7
        color: Theme.hover
        borderColor: Theme.separator
    }
    Row {
        id: row

        anchors.centerIn: parent
        height: parent.height - 4

        Repeater {
            id: segments

            model: picker.options

            T.RadioButton {
                id: segment

                required property int index
                required property var modelData

                text: modelData.name
                width: Math.max(64, implicitContentWidth + 20)
                height: row.height
                checked: picker.selection === modelData.key
                hoverEnabled: true
                focusPolicy: Qt.StrongFocus
                Accessible.name: text
                Accessible.onPressAction: if (enabled) clicked()
                onClicked: picker.chosen(modelData.key)

                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
                Keys.onLeftPressed: picker.focusSegment(index - 1)
                Keys.onRightPressed: picker.focusSegment(index + 1)

                background: ContinuousRectangle {
                    radius: 6
                    color: segment.checked ? Theme.raised : "transparent"
                    borderColor: segment.checked ? Theme.separator : "transparent"
                }
                contentItem: Text {
                    text: segment.text
                    textFormat: Text.PlainText
                    color: segment.checked || segment.hovered ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.body
                    font.weight: segment.checked ? Font.DemiBold : Font.Normal
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }

                FocusRing {
                    shown: segment.visualFocus
                    distance: 0
                    radius: 6
                }
            }
        }
    }
}
