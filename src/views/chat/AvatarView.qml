import QtQuick
import Quillmate.Views

// The assistant's picture: a symbol on a disc, with some room to what follows.
Item {
    id: avatar

    implicitWidth: 38 + 5
    implicitHeight: 38

    ContinuousRectangle {
        objectName: "disc"
        width: 38
        height: 38
        radius: 19
        color: Theme.userBubble
    }
    SvgImage {
        x: 9
        y: 9
        width: 20
        height: 20
        name: "symbols/wand.and.stars"
        tint: "white"
    }
}
