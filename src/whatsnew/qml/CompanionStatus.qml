import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import Corvane.Overlay

// GNOME Shell's companion, in the settings and Welcome windows: whether it is on, what to do when
// it is not, and the button that switches it on. Hidden where the desktop needs none.
ColumnLayout {
    id: companion
    objectName: "companionStatus"
    // "", "notInstalled", "needsRestart", "off", "failed" or "on".
    required property string companionState
    property real fontSize: 12
    signal turnOn()

    visible: companionState !== ""
    spacing: 4

    RowLayout {
        Layout.fillWidth: true
        spacing: 7
        Rectangle {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 5
            implicitWidth: 8
            implicitHeight: 8
            radius: 4
            color: companion.companionState === "on" ? "#34c759" : "#ff9500"
        }
        Label {
            objectName: "companionText"
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            font: Theme.font(companion.fontSize, Font.Normal)
            color: Theme.primary
            text: ({
                on: qsTr("The GNOME Shell companion is on."),
                off: qsTr("The GNOME Shell companion is off."),
                needsRestart: qsTr("The GNOME Shell companion is installed. Log out and back in, then switch it on here."),
                notInstalled: qsTr("The GNOME Shell companion is not installed."),
                failed: qsTr("This version of GNOME Shell cannot run the companion.")
            })[companion.companionState] ?? ""
        }
        Button {
            objectName: "turnOnCompanionButton"
            visible: companion.companionState === "off"
            text: qsTr("Turn On")
            onClicked: companion.turnOn()
        }
    }
    Label {
        Layout.fillWidth: true
        wrapMode: Text.Wrap
        font: Theme.font(companion.fontSize - 1.5, Font.Normal)
        color: Theme.secondary
        text: qsTr("With it on, holding the trigger works over every application, and the panel opens in the middle of the screen.")
    }
}
