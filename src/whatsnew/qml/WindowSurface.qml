import QtQuick
import QtQuick.Controls.Fusion
import Corvane.Overlay

// The ground of every secondary window: the window colour, and the desktop's palette handed to
// the controls inside (Qt Quick Controls do not follow the application palette by themselves).
// Where the compositor frames no window (GNOME Shell on Wayland), it draws the window's title bar
// too: the title, a grip that moves the window, and its buttons.
Pane {
    id: surface
    property bool ownTitleBar: false
    property bool minimizable: false
    readonly property real titleBarHeight: ownTitleBar ? 38 : 0

    // As large as the window, which the view's implicit size and the title bar decide.
    width: implicitWidth
    height: implicitHeight + titleBarHeight
    padding: 0
    topPadding: titleBarHeight
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

    // A child of the surface itself, above the content: the items of a control's background hear
    // no pointer.
    Item {
        id: titleBar
        objectName: "titleBar"
        parent: surface
        z: 1
        readonly property var window: surface.Window.window
        visible: surface.ownTitleBar
        width: parent.width
        height: surface.titleBarHeight

        // Dragged anywhere but on a button, the compositor moves the window.
        DragHandler {
            target: null
            onActiveChanged: if (active && titleBar.window)
                titleBar.window.startSystemMove()
        }
        Label {
            anchors.centerIn: parent
            width: Math.min(implicitWidth, titleBar.width - 2 * buttons.width - 24)
            elide: Text.ElideRight
            text: titleBar.window ? titleBar.window.title : ""
            font.bold: true
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            spacing: 6
            TitleBarButton {
                objectName: "minimizeButton"
                visible: surface.minimizable
                minimize: true
                onActivated: titleBar.window.showMinimized()
            }
            TitleBarButton {
                objectName: "closeButton"
                onActivated: titleBar.window.close()
            }
        }
        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: 1
            color: surface.palette.mid
        }
    }

    // A round button with a cross (close) or a bar (minimize), in the text colour: it draws its own
    // hover and press and takes no focus, as a title bar's buttons do.
    component TitleBarButton: MouseArea {
        id: button
        property bool minimize: false
        implicitWidth: 24
        implicitHeight: 24
        hoverEnabled: true
        Accessible.role: Accessible.Button
        Accessible.name: minimize ? qsTr("Minimize") : qsTr("Close")
        signal activated
        onClicked: activated()
        Accessible.onPressAction: activated()
        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: surface.palette.windowText
            opacity: button.pressed ? 0.22 : button.containsMouse ? 0.14 : 0.07
        }
        Repeater {
            model: button.minimize ? [0] : [45, -45]
            Rectangle {
                required property int modelData
                anchors.centerIn: parent
                width: 10
                height: 1.5
                antialiasing: true
                rotation: modelData
                color: surface.palette.windowText
            }
        }
    }
}
