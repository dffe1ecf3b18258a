import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The panel body.
Item {
    id: panel

    required property SessionModalViewState viewState

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: Theme.spacing

        PanelHeader {
            Layout.fillWidth: true
            onLogOutClicked: panel.viewState.logOutClicked()
        }
        DeveloperMenu {
            Layout.fillWidth: true
            objectName: "developerMenu"
            visible: panel.viewState.developerMenu.shown
            menuState: panel.viewState.developerMenu
        }
        SummarySection {
            Layout.fillWidth: true
            objectName: "summarySection"
            visible: panel.viewState.hasSummarySection && implicitHeight > 0
            viewState: panel.viewState
            // The tabs below keep their share of a panel of any height.
            maximumTextHeight: Math.max(120, panel.height * 0.45)
        }
        PanelTabs {
            Layout.fillWidth: true
            Layout.fillHeight: true
        }
    }
}
