import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import Corvane.Overlay
import Corvane.Windows

// The Welcome window's view: header, how-to card, permission section, privacy note and the closing
// button, 440 points wide, as high as its content.
WindowSurface {
    id: root
    required property QtObject model
    readonly property bool trusted: model.trusted

    implicitWidth: 440
    implicitHeight: content.implicitHeight + 2 * 28
    focus: true

    // Return presses the default button: "Grant Accessibility Access…" while the permission is
    // missing; when it is granted there is none.
    Keys.onReturnPressed: event => pressDefault(event)
    Keys.onEnterPressed: event => pressDefault(event)
    function pressDefault(event) {
        if (!trusted) {
            grantButton.clicked()
            event.accepted = true
        }
    }

    ColumnLayout {
        id: content
        objectName: "content"
        anchors {
            fill: parent
            margins: 28
        }
        spacing: 18

        // 1. Header.
        ColumnLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: true
            spacing: 10
            Item {
                objectName: "keycapFrame"
                Layout.alignment: Qt.AlignHCenter
                implicitWidth: 60
                implicitHeight: 60
                Keycap {
                    objectName: "keycap"
                    anchors.centerIn: parent
                    label: root.model.trigger
                    scale: 2.2
                }
            }
            Label {
                objectName: "heading"
                Layout.alignment: Qt.AlignHCenter
                text: qsTr("Welcome to Corvane")
                font: Theme.font(24, Font.Bold)
                color: Theme.primary
            }
            Label {
                objectName: "pitch"
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: qsTr("Every menu command and shortcut of the app you're using — one held key away.")
                font: Theme.font(13, Font.Normal)
                color: Theme.secondary
            }
        }

        // 2. How-to card.
        Rectangle {
            objectName: "howTo"
            Layout.fillWidth: true
            implicitHeight: rows.implicitHeight + 2 * 16
            radius: 12
            color: Theme.primaryAt(0.045)
            ColumnLayout {
                id: rows
                anchors {
                    fill: parent
                    margins: 16
                }
                spacing: 12
                Repeater {
                    model: [
                        { symbol: "hand.tap", text: qsTr("Hold %1 for a moment — the overlay appears. Release — it's gone.").arg(root.model.trigger) },
                        { symbol: "pin", text: qsTr("Release %1 over the panel to pin it: search, arrow around, hit ↩ to run any menu command.").arg(root.model.trigger) },
                        { symbol: "star", text: qsTr("Star the commands you keep forgetting — they float to the top for that app.") }
                    ]
                    delegate: RowLayout {
                        required property var modelData
                        objectName: "howToRow"
                        Layout.fillWidth: true
                        spacing: 10
                        Item {
                            Layout.alignment: Qt.AlignTop
                            implicitWidth: 20
                            implicitHeight: 18
                            Symbol {
                                anchors.centerIn: parent
                                name: modelData.symbol
                                size: 14
                                color: Theme.accentDeep
                            }
                        }
                        Label {
                            objectName: "howToText"
                            Layout.fillWidth: true
                            Layout.alignment: Qt.AlignTop
                            wrapMode: Text.Wrap
                            text: modelData.text
                            font: Theme.font(12.5, Font.Normal)
                            color: Theme.primary
                        }
                    }
                }
            }
        }

        // One sentence when held keys cannot be watched, with the way in that still works.
        Label {
            objectName: "inputNote"
            visible: !root.model.globalInputWatched
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("This session does not let Corvane watch held keys, so holding %1 does nothing here; choose \"Peek Current App\" in Corvane's tray menu instead.").arg(root.model.trigger)
            font: Theme.font(11.5, Font.Medium)
            color: Theme.accentDeep
        }

        // Where only the desktop itself can let Corvane see the trigger everywhere.
        CompanionStatus {
            Layout.fillWidth: true
            companionState: root.model.companionState
            fontSize: 11.5
            onTurnOn: root.model.turnOnCompanion()
        }

        // 3. Permission section.
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 8
            RowLayout {
                Layout.alignment: Qt.AlignHCenter
                spacing: 7
                Rectangle {
                    objectName: "statusDot"
                    implicitWidth: 9
                    implicitHeight: 9
                    radius: 4.5
                    color: root.trusted ? "#34c759" : "#ff9500"
                }
                Label {
                    objectName: "statusText"
                    text: root.trusted ? qsTr("Accessibility access granted — you're all set.")
                                       : qsTr("Corvane needs Accessibility access to read menus.")
                    font: Theme.font(12.5, Font.Medium)
                    color: Theme.primary
                }
            }
            Button {
                id: grantButton
                objectName: "grantButton"
                visible: !root.trusted
                Layout.alignment: Qt.AlignHCenter
                text: qsTr("Grant Accessibility Access…")
                highlighted: true // the default button
                onClicked: root.model.grantAccess()
            }
            Label {
                objectName: "hint"
                visible: !root.trusted
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: qsTr("This switches on the desktop's accessibility support for every application. Applications that were already running may need a restart before Corvane can read their menus.")
                font: Theme.font(10.5, Font.Normal)
                color: Theme.tertiary
            }
            RowLayout {
                objectName: "smallButtons"
                visible: !root.trusted
                Layout.alignment: Qt.AlignHCenter
                Button {
                    objectName: "openSettingsButton"
                    text: qsTr("Open Accessibility Settings…")
                    font: Theme.font(11, Font.Normal)
                    onClicked: root.model.openAccessibilitySettings()
                }
                // A link, not a button: it explains rather than acts.
                Button {
                    id: helpLink
                    objectName: "helpLink"
                    flat: true
                    text: qsTr("Why does Corvane need this?")
                    font: Theme.font(11, Font.Normal)
                    contentItem: Label {
                        text: helpLink.text
                        font.pointSize: helpLink.font.pointSize
                        font.underline: helpLink.hovered
                        color: Theme.accentDeep
                    }
                    background: null
                    onClicked: root.model.openAccessibilityHelp()
                }
            }
        }

        // Without a tray, the way back to Corvane.
        Label {
            objectName: "noTrayNote"
            visible: !root.model.trayAvailable
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("This session has no tray: to reach Corvane's settings later, open Corvane again from your applications.")
            font: Theme.font(10.5, Font.Normal)
            color: Theme.secondary
        }

        // 4. Privacy note.
        Label {
            objectName: "privacy"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("Corvane reads menus on this computer only. Nothing is sent anywhere.")
            font: Theme.font(10.5, Font.Normal)
            color: Theme.tertiary
        }

        // 5. Closing button.
        Button {
            objectName: "closeButton"
            Layout.alignment: Qt.AlignHCenter
            text: root.trusted ? qsTr("Start Peeking") : qsTr("I'll grant it later")
            onClicked: root.model.close()
        }
    }
}
