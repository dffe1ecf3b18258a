import QtQuick
import QtQuick.Layouts
import QtQuick.Window
import Quillmate.Views

// What the panel shows while nobody is signed in.
Item {
    id: screen

    required property LoginViewState viewState
    readonly property Item keyboardHome: loginButton

    implicitWidth: Theme.panelMinimumWidth
    implicitHeight: viewState.customHeight

    Binding {
        target: screen.viewState.developerMenu
        property: "window"
        value: screen.Window.window
    }
    // Lies over whatever the panel showed before.
    Rectangle {
        anchors.fill: parent
        color: Theme.controlBackground
    }
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.AllButtons
        onWheel: wheel => wheel.accepted = true
    }

    PanelScroll {
        objectName: "content"
        contentMinimumHeight: column.implicitHeight
        anchors.centerIn: parent
        width: Math.max(Theme.panelMinimumWidth, Math.min(Theme.panelMaximumWidth, screen.width))
        height: Math.max(screen.viewState.customHeight, Math.min(Theme.panelMaximumHeight, screen.height))

        ColumnLayout {
            id: column

            anchors.fill: parent
            spacing: 20

            DeveloperMenu {
                Layout.fillWidth: true
                objectName: "developerMenu"
                visible: screen.viewState.developerMenu.shown
                menuState: screen.viewState.developerMenu
                backgroundColor: Theme.controlBackground
            }
            Item {
                Layout.fillHeight: true
            }
            ColumnLayout {
                Layout.fillWidth: true
                Layout.margins: Theme.padding
                spacing: 20

                ImageView {
                    Layout.alignment: Qt.AlignHCenter
                }
                Text {
                    Layout.fillWidth: true
                    text: "Quillmate"
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                    color: Theme.primary
                    font.pixelSize: Math.round(24 * Theme.textScale)
                    font.bold: true
                    horizontalAlignment: Text.AlignHCenter
                }
                Text {
                    Layout.fillWidth: true
                    Layout.leftMargin: 20
                    Layout.rightMargin: 20
                    text: "To use this plugin, you need to authenticate your account. Please log in to verify your subscription and access all the Quillmate features."
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                    color: Theme.primary
                    font.pixelSize: Math.round(14 * Theme.textScale)
                    lineHeight: 1.2
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                }
                CustomButton {
                    id: loginButton

                    Layout.alignment: Qt.AlignHCenter
                    Layout.preferredWidth: 200
                    Layout.preferredHeight: Math.max(40, Math.round(26 * Theme.textScale))
                    objectName: "loginButton"
                    title: "Login"
                    backgroundColor: Theme.accent
                    onClicked: screen.viewState.loginButtonTapped()
                }
                // Its room is kept, so that the button stands still.
                Item {
                    Layout.fillWidth: true
                    Layout.leftMargin: 20
                    Layout.rightMargin: 20
                    implicitHeight: Math.max(32, problem.implicitHeight)

                    ActivityIndicator {
                        anchors.centerIn: parent
                        width: 24
                        height: 24
                        running: screen.viewState.progress.asking
                    }
                    Text {
                        id: problem

                        objectName: "problem"
                        width: parent.width
                        visible: text !== ""
                        text: screen.viewState.progress.problem || (screen.viewState.progress.asking ? "" : screen.viewState.explanation)
                        onTextChanged: if (problem.text !== "")
                            Announcer.alert(problem)
                        textFormat: Text.PlainText
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                        color: Theme.primary
                        font.pixelSize: Math.round(13 * Theme.textScale)
                        lineHeight: 1.2
                        wrapMode: Text.Wrap
                        horizontalAlignment: Text.AlignHCenter
                    }
                }
            }
            Item {
                Layout.fillHeight: true
            }
        }
    }
}
