import QtQuick
import Quillmate.Views

// What a signed-in user sees beside the compose window.
Item {
    id: root

    required property SessionTabsViewState viewState

    implicitWidth: Theme.panelMinimumWidth
    implicitHeight: viewState.customHeight

    BackgroundView {
        anchors.fill: parent
    }
    SessionModalView {
        objectName: "sessionModalView"
        anchors.centerIn: parent
        width: Math.max(Theme.panelMinimumWidth, Math.min(Theme.panelMaximumWidth, root.width))
        height: Math.max(root.viewState.customHeight, Math.min(Theme.panelMaximumHeight, root.height))
        viewState: root.viewState.modal
    }
}
