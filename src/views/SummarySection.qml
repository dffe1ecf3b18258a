import QtQuick
import Quillmate.Views

// What is known of the summary: itself, a place to paste the message, a spinner, or nothing.
Item {
    id: section

    required property SessionModalViewState viewState
    property real maximumTextHeight: 220

    readonly property int shown: viewState.summarizeStateManager.section

    implicitHeight: Math.max(result.implicitHeight, fallbackEditor.implicitHeight, spinner.implicitHeight)

    // Each is there only while it is shown: the editor takes up the kept text whenever it appears.
    Loader {
        id: result

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SummarizeStateManager.Result
        sourceComponent: SummaryResult {
            summary: section.viewState.summarizeStateManager.summarizeResponse
            maximumTextHeight: section.maximumTextHeight
        }
    }
    Loader {
        id: fallbackEditor

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SummarizeStateManager.FallbackEditor
        sourceComponent: FallbackEditor {
            viewState: section.viewState
        }
    }
    Loader {
        id: spinner

        anchors.left: parent.left
        anchors.right: parent.right
        active: section.shown === SummarizeStateManager.Spinner
        sourceComponent: Item {
            objectName: "summarySpinner"
            implicitHeight: 52

            ActivityIndicator {
                anchors.centerIn: parent
            }
        }
    }
}
