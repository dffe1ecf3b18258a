pragma Singleton

import QtQuick
import Quillmate.Views

// The roles that more than one view uses, for the light and the dark appearance. Lengths are in points.
QtObject {
    readonly property bool dark: Appearance.dark

    // Colours
    readonly property color primary: dark ? "#f2f2f4" : "#1c1c1f"
    readonly property color secondary: dark ? "#a6a6ae" : "#63636b"
    readonly property color controlBackground: dark ? "#1f1f23" : "#ffffff"
    readonly property color windowBackground: dark ? "#28282d" : "#f5f5f8"
    readonly property color raised: dark ? "#35353c" : "#ffffff"
    readonly property color hover: dark ? "#3a3a42" : "#ececf1"
    readonly property color separator: dark ? "#4b4b54" : "#d5d5dc"
    readonly property color accent: "#9333ea"
    readonly property color accentText: dark ? "#c18bf5" : "#7e22ce"
    readonly property color focusRing: dark ? "#b06df0" : "#9333ea"
    // Fills of buttons as well: white text on them keeps a contrast of 4.5 to 1.
    readonly property color blue: dark ? "#2f6fed" : "#2563eb"
    readonly property color indigo: dark ? "#5e5ce6" : "#5856d6"
    readonly property color purple: dark ? "#b06df0" : "#9333ea"
    readonly property color userBubble: "#2563eb"
    readonly property color error: dark ? "#ff8a80" : "#c62828"
    readonly property color notice: Qt.rgba(0.5, 0.5, 0.5, 0.2)
    readonly property color noticeSecondary: dark ? "#b4b4bc" : "#57575f"
    readonly property color selection: dark ? "#5a3b7c" : "#e3ccf9"

    // Font sizes; they go with the desktop's.
    readonly property real textScale: Appearance.textScale
    readonly property int title: Math.round(22 * textScale)
    readonly property int title2: Math.round(17 * textScale)
    readonly property int headline: Math.round(13 * textScale)
    readonly property int body: Math.round(13 * textScale)
    readonly property int subheadline: Math.round(11 * textScale)
    readonly property int caption: Math.round(11 * textScale)
    readonly property int symbol: Math.round(16 * textScale)

    // Sizes
    readonly property int padding: 16
    readonly property int smallPadding: 5
    readonly property int spacing: 8
    readonly property int cornerRadius: 10
    readonly property int controlHeight: Math.round(28 * textScale)
    readonly property int panelMinimumWidth: 400
    readonly property int panelMaximumWidth: 500
    readonly property int panelMaximumHeight: 900

    readonly property int quick: 120
}
