pragma ComponentBehavior: Bound

import QtQuick

// What is known of the summary: itself, a place to paste the message, a spinner, or nothing.
Item {
    id: section

    required property SessionModalViewState viewState
    property real maximumTextHeight: 220

    implicitHeight: loader.item ? loader.item.implicitHeight : 0

    Loader {
        id: loader

        objectName: "summaryLoader"
        anchors.left: parent.left
        anchors.right: parent.right
        sourceComponent: {
            switch (section.viewState.summarizeStateManager.section) {
            case SummarizeStateManager.Result:
                return result;
            case SummarizeStateManager.FallbackEditor:
                return fallbackEditor;
            case SummarizeStateManager.Spinner:
                return spinner;
            default:
                return null;
            }
        }
    }
    Component {
        id: result

        SummaryResult {
            summary: section.viewState.summarizeStateManager.summarizeResponse
            maximumTextHeight: section.maximumTextHeight
        }
    }
    Component {
        id: fallbackEditor

        FallbackEditor {
            viewState: section.viewState
        }
    }
    Component {
        id: spinner

        Item {
            implicitHeight: 52

            ActivityIndicator {
                anchors.centerIn: parent
            }
        }
    }
}
