import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmate.Views

// The panel's two tabs, and what lies over them.
ColumnLayout {
    id: tabs

    required property SessionModalViewState viewState
    property alias currentIndex: bar.currentIndex
    readonly property Item selectedTab: bar.currentItem

    // The least height at which both tabs can be used.
    readonly property real minimumHeight: bar.implicitHeight + spacing + area.chrome + Math.max(quickResponse.minimumHeight, customInteractiveResponse.minimumHeight)

    objectName: "panelTabs"
    spacing: Theme.spacing

    T.TabBar {
        id: bar

        Layout.fillWidth: true
        implicitHeight: Math.max(quickTab.implicitHeight, customTab.implicitHeight) + topPadding + bottomPadding
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

        PanelTab {
            id: quickTab

            text: "Quick response"
            iconName: "wand.and.stars"
            width: (bar.availableWidth - bar.spacing) * 0.375
            height: bar.availableHeight
        }
        PanelTab {
            id: customTab

            text: "Custom interactive response"
            iconName: "bubble.left.and.text.bubble.right.fill"
            width: (bar.availableWidth - bar.spacing) * 0.625 // The longer title gets the wider tab.
            height: bar.availableHeight
        }
    }
    Item {
        id: area

        readonly property real chrome: 2 * Theme.smallPadding

        Layout.fillWidth: true
        Layout.fillHeight: true

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
                id: quickResponse

                readonly property real minimumHeight: Math.max(200, reply.minimumHeight + 2 * Theme.smallPadding)

                objectName: "quickResponse"
                enabled: bar.currentIndex === 0 // An item that is out of sight would keep the keyboard.

                ReplySection {
                    id: reply

                    anchors.fill: parent
                    anchors.margins: Theme.smallPadding
                    anchors.bottomMargin: Theme.smallPadding + Math.max(0, parent.height - 500)
                    viewState: tabs.viewState.reply
                }
            }
            Item {
                id: customInteractiveResponse

                readonly property real minimumHeight: prompt.implicitHeight + 2 * Theme.smallPadding + 10 + chat.minimumHeight

                objectName: "customInteractiveResponse"
                enabled: bar.currentIndex === 1

                Text {
                    id: prompt

                    anchors.left: parent.left
                    anchors.right: parent.right
                    anchors.top: parent.top
                    anchors.margins: Theme.smallPadding
                    text: "Provide specific prompts to the AI assistant for more detailed and personalized reply options."
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                    color: Theme.primary
                    font.pixelSize: Theme.body
                    font.weight: Font.Light
                    wrapMode: Text.Wrap
                }
                ChatView {
                    id: chat

                    anchors.left: parent.left
                    anchors.right: parent.right
                    anchors.top: prompt.bottom
                    anchors.bottom: parent.bottom
                    anchors.topMargin: 10
                    viewState: tabs.viewState.chat
                }
            }
        }
        ToastView {
            anchors.fill: parent
            objectName: "toast"
            message: tabs.viewState.reply.toastMessage
            shown: tabs.viewState.reply.showToast
        }
        LoadingOverlay {
            anchors.fill: parent
            objectName: "loadingOverlay"
            shown: tabs.viewState.reply.isLoading
        }
        TooltipView {
            // In the middle of what 40 points below it leave.
            anchors.centerIn: parent
            anchors.verticalCenterOffset: -20
            objectName: "tooltip"
            message: "Text copied to clipboard!"
            shown: tabs.viewState.reply.showTooltip
        }
    }
}
