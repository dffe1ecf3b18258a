import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The panel body.
PanelScroll {
    id: panel

    required property SessionModalViewState viewState
    readonly property Item keyboardHome: tabs.selectedTab

    contentMinimumHeight: {
        let height = header.implicitHeight + tabs.minimumHeight + 2 * Theme.padding + body.spacing;
        for (const optional of [developerMenu, summary]) {
            if (optional.visible)
                height += optional.implicitHeight + body.spacing;
        }
        return height;
    }

    ColumnLayout {
        id: body

        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: Theme.spacing

        PanelHeader {
            id: header

            Layout.fillWidth: true
            onLogOutClicked: panel.viewState.logOutClicked()
        }
        DeveloperMenu {
            id: developerMenu

            Layout.fillWidth: true
            objectName: "developerMenu"
            visible: panel.viewState.developerMenu.shown
            menuState: panel.viewState.developerMenu
        }
        SummarySection {
            id: summary

            Layout.fillWidth: true
            objectName: "summarySection"
            visible: panel.viewState.hasSummarySection && implicitHeight > 0
            viewState: panel.viewState
            // The tabs below keep their share of a panel of any height.
            maximumTextHeight: Math.max(100, Math.min(panel.height * 0.45, panel.height - header.implicitHeight - tabs.minimumHeight - 110))
        }
        PanelTabs {
            id: tabs

            Layout.fillWidth: true
            Layout.fillHeight: true
            viewState: panel.viewState
        }
    }
}
