pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// The conversation, oldest message first. Only the rows in sight are there. The keyboard walks from message to message
// with the arrow keys and copies the one it is on.
ListView {
    id: list

    required property ChatViewState viewState

    signal sentAgain

    readonly property bool onScreen: visible && Window.window !== null
    // The message that the keyboard is on.
    property int walkedIndex: -1
    // The keyboard walks here; a click into a message's text gives the list no more than the text.
    readonly property bool walking: Window.activeFocusItem === list
    // The end stays in sight, whatever changes, until the user goes elsewhere.
    property bool following: true

    // The rows' heights are estimates until they are made, so that one call stops short of the end.
    function settleAtEnd() {
        for (let i = 0; i < 2; ++i) {
            forceLayout();
            positionViewAtEnd();
        }
    }
    function scrollToEnd() {
        glide.stop();
        following = true;
        const before = contentY;
        settleAtEnd();
        // From far away it glides in over the last page alone.
        const from = Math.max(before, contentY - height);
        if (!onScreen || from >= contentY)
            return;
        glide.from = from;
        glide.to = contentY;
        glide.start();
    }
    function walk(step: int) {
        glide.stop();
        walkedIndex = walkedIndex < 0 ? count - 1 : Math.max(0, Math.min(count - 1, walkedIndex + step));
        positionViewAtIndex(walkedIndex, ListView.Contain);
        following = walkedIndex === count - 1;
    }
    function follow() {
        if (following && !glide.running)
            settleAtEnd();
    }

    model: viewState.messages
    currentIndex: -1 // The list would give the keyboard to the current row.
    highlightFollowsCurrentItem: false
    keyNavigationEnabled: false
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: count > 0
    clip: true
    Accessible.role: Accessible.List
    Accessible.name: "Conversation"
    onWalkingChanged: if (walking && walkedIndex < 0) walk(0)
    onHeightChanged: followSoon.restart()
    onWidthChanged: followSoon.restart()
    onContentHeightChanged: followSoon.restart()
    onMovementStarted: {
        glide.stop();
        following = false;
    }
    onMovementEnded: following = atYEnd
    Component.onCompleted: settleAtEnd()

    Keys.onUpPressed: walk(-1)
    Keys.onDownPressed: walk(1)
    Keys.onPressed: event => {
        const pages = {
            [Qt.Key_Home]: -count,
            [Qt.Key_End]: count,
            [Qt.Key_PageUp]: -5,
            [Qt.Key_PageDown]: 5
        };
        if (event.matches(StandardKey.Copy)) {
            viewState.copyMessage(walkedIndex);
            event.accepted = true;
        } else if (pages[event.key] !== undefined) {
            walk(pages[event.key]);
            event.accepted = true;
        }
    }

    ScrollBar.vertical: ScrollBar {
        policy: list.contentHeight > list.height ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
        Accessible.ignored: true
        onPressedChanged: list.following = !pressed && list.atYEnd
    }

    delegate: ChatRow {
        width: list.width - 8 // The scroll bar's.
        errorText: index === list.viewState.errorRow ? list.viewState.chatErrorMessage : ""
        current: list.walking && index === list.walkedIndex
        onCopyClicked: list.viewState.copyMessage(index)
        onAgainClicked: {
            list.viewState.sendAgain();
            list.sentAgain();
        }
    }

    // After what changes now has come to rest.
    Timer {
        id: followSoon

        interval: 0
        onTriggered: list.follow()
    }
    NumberAnimation {
        id: glide

        target: list
        property: "contentY"
        duration: 200
        easing.type: Easing.OutCubic
        onFinished: if (list.following) list.settleAtEnd()
    }
    Connections {
        target: list.viewState

        function onMessagesChanged() {
            list.walkedIndex = list.walking ? list.count - 1 : -1;
            list.scrollToEnd();
        }
    }
}
