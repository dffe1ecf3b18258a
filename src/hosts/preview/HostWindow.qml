import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// What the Mail host's windows have in common.
ApplicationWindow {
    id: window

    minimumWidth: 760
    minimumHeight: 480
    color: Theme.windowBackground
    // For what plain controls draw by themselves: selections, scroll bars.
    palette {
        highlight: Theme.selection
        highlightedText: Theme.primary
        mid: Theme.separator
        dark: Theme.secondary
    }

    Shortcut {
        sequence: "Ctrl+W"
        onActivated: window.close()
    }
}
