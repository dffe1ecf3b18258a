pragma Singleton

import QtQuick
import Quillmate.Views

// The roles that more than one view uses, for the light and the dark appearance. Lengths are in points.
QtObject {
    readonly property bool dark: Appearance.dark

    // Colours
    readonly property color primary: dark ? "#f2f2f4" : "#1c1c1f"
    readonly property color secondary: dark ? "#a3a3ab" : "#63636b"
    readonly property color controlBackground: dark ? "#1f1f23" : "#ffffff"
    readonly property color windowBackground: dark ? "#28282d" : "#f5f5f8"
    readonly property color raised: dark ? "#35353c" : "#ffffff"
    readonly property color hover: dark ? "#3a3a42" : "#ececf1"
    readonly property color separator: dark ? "#4b4b54" : "#d5d5dc"
    readonly property color accent: "#9333ea"
    readonly property color accentText: dark ? "#c18bf5" : "#7e22ce"
    readonly property color focusRing: dark ? "#b06df0" : "#9333ea"
    readonly property color blue: dark ? "#5b93ff" : "#2563eb"
    readonly property color purple: dark ? "#b06df0" : "#9333ea"
    readonly property color indigo: dark ? "#7d7aff" : "#5856d6"
    readonly property color selection: dark ? "#5a3b7c" : "#e3ccf9"

    // Font sizes
    readonly property int title: 22
    readonly property int title2: 17
    readonly property int headline: 13
    readonly property int body: 13
    readonly property int subheadline: 11
    readonly property int caption: 11

    // Sizes
    readonly property int padding: 16
    readonly property int smallPadding: 5
    readonly property int spacing: 8
    readonly property int cornerRadius: 10
    readonly property int controlHeight: 28
    readonly property int panelMinimumWidth: 400
    readonly property int panelMaximumWidth: 500
    readonly property int panelMaximumHeight: 900

    readonly property int quick: 120
}
