import QtQuick
import Quillmate.Views

// The theme's roles for the plain controls of the Mail host's windows.
Palette {
    window: Theme.windowBackground
    windowText: Theme.primary
    base: Theme.controlBackground
    text: Theme.primary
    button: Theme.raised
    buttonText: Theme.primary
    placeholderText: Theme.secondary
    highlight: Theme.selection
    highlightedText: Theme.primary
    mid: Theme.separator
    dark: Theme.secondary
}
