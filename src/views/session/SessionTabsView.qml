import QtQuick
import QtQuick.Window
import Quillmate.Views

// What a signed-in user sees beside the compose window.
Item {
    id: root

    required property SessionTabsViewState viewState

    // The first of its controls while the notice lies over them.
    readonly property Item keyboardHome: updateAnnounced ? null : panel.keyboardHome
    readonly property bool updateAnnounced: viewState.incommingUpdatesAvailable

    implicitWidth: Theme.panelMinimumWidth
    implicitHeight: viewState.customHeight

    // Components bound to their context would let the linter follow these names, but this Qt's Loader refuses such ones.
    // qmllint disable unqualified

    Binding {
        target: root.viewState.modal.developerMenu
        property: "window"
        value: root.Window.window
    }
    BackgroundView {
        anchors.fill: parent
    }
    Item {
        id: frame

        anchors.centerIn: parent
        width: Math.max(Theme.panelMinimumWidth, Math.min(Theme.panelMaximumWidth, root.width))
        height: Math.max(root.viewState.customHeight, Math.min(Theme.panelMaximumHeight, root.height))

        SessionModalView {
            id: panel

            objectName: "sessionModalView"
            // While a blurred picture of it stands in its place the panel is out of sight, but there, so that it can be
            // grabbed.
            x: root.updateAnnounced ? -100000 : 0
            width: parent.width
            height: parent.height
            enabled: !root.updateAnnounced
            viewState: root.viewState.modal
        }
        Loader {
            anchors.fill: parent
            active: root.updateAnnounced
            sourceComponent: BlurredPicture {
                objectName: "blurredPanel"
                source: panel
                blurRadius: 3
                opacity: 0.4
            }
        }
        Loader {
            anchors.fill: parent
            opacity: root.updateAnnounced ? 1 : 0
            active: root.updateAnnounced || opacity > 0
            enabled: root.updateAnnounced
            sourceComponent: UpdateModalView {
                objectName: "updateModalView"
                viewState: root.viewState
            }

            Behavior on opacity {
                NumberAnimation {
                    duration: Theme.quick
                }
            }
        }
    }
}
