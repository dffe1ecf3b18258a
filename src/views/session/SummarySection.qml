import QtQuick
import Quillmate.Views

// What is known of the summary: itself, a place to paste the message, a spinner, or nothing.
Item {
    id: section

    required property SessionModalViewState viewState
    property real maximumTextHeight: 220

    readonly property int shown: viewState.summary

    // A Loader does not tell that it asks for no more height once it is empty, so that only the full one is asked.
    implicitHeight: {
        switch (shown) {
        case SessionModalViewState.Result:
            return result.implicitHeight;
        case SessionModalViewState.FallbackEditor:
            return fallbackEditor.implicitHeight;
        case SessionModalViewState.Spinner:
            return spinner.implicitHeight;
        default:
            return 0;
        }
    }

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
