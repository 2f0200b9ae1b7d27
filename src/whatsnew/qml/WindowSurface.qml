import QtQuick
import QtQuick.Controls.Fusion
import Corvane.Overlay

// The ground of every secondary window: the window colour, and the desktop's palette handed to
// the controls inside (Qt Quick Controls do not follow the application palette by themselves).
Pane {
    padding: 0
    readonly property SystemPalette system: SystemPalette { colorGroup: SystemPalette.Active }
    palette {
        window: system.window
        windowText: system.windowText
        base: system.base
        alternateBase: system.alternateBase
        text: system.text
        button: system.button
        buttonText: system.buttonText
        highlight: system.highlight
        highlightedText: system.highlightedText
        light: system.light
        midlight: system.midlight
        mid: system.mid
        dark: system.dark
        shadow: system.shadow
        placeholderText: system.placeholderText
    }
    background: Rectangle { color: Theme.windowBackground }
}
