import QtQuick
import Quillmate.Views

// The theme's roles for what the plain controls of the Mail host's windows draw by themselves: selections, scroll bars.
Palette {
    highlight: Theme.selection
    highlightedText: Theme.primary
    mid: Theme.separator
    dark: Theme.secondary
}
