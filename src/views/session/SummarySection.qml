import QtQuick
import Quillmate.Views

// What is known of the summary: itself, a place to paste the message, a spinner, or nothing.
Item {
    id: section

    required property SessionModalViewState viewState
    property real maximumTextHeight: 220

    readonly property int shown: viewState.summary

    implicitHeight: Math.max(result.implicitHeight, fallbackEditor.implicitHeight, spinner.implicitHeight)

    // Components bound to their context would let the linter follow these names, but this Qt's Loader refuses such ones.
    // qmllint disable unqualified

    // Each is there only while it is shown: the editor takes up the kept text whenever it appears.
    Loader {
        id: result

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SessionModalViewState.Result
        sourceComponent: SummaryResult {
            summary: section.viewState.summaryText
            note: section.viewState.summaryNote
            onCopyAllClicked: section.viewState.copySummaryClicked()
            maximumTextHeight: section.maximumTextHeight
        }
    }
    Loader {
        id: fallbackEditor

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SessionModalViewState.FallbackEditor
        sourceComponent: FallbackEditor {
            viewState: section.viewState
        }
    }
    Loader {
        id: spinner

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SessionModalViewState.Spinner
        sourceComponent: Item {
            objectName: "summarySpinner"
            implicitHeight: 52

            ActivityIndicator {
                anchors.centerIn: parent
            }
        }
    }
}
