import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import Corvane.Overlay
import Corvane.Windows

// The settings form: five grouped sections in a scrolling form, 470 × 470. Every control reads and writes the settings
// store through the model at once.
WindowSurface {
    id: root
    required property QtObject model

    implicitWidth: 470
    implicitHeight: 470

    readonly property font captionFont: Theme.font(10, Font.Normal)

    component SectionHeader: Label {
        Layout.fillWidth: true
        Layout.topMargin: 4
        font: Theme.font(11, Font.DemiBold)
        color: Theme.secondary
    }
    component Group: Rectangle {
        default property alias rows: column.data
        Layout.fillWidth: true
        implicitHeight: column.implicitHeight + 2 * 6
        radius: 8
        color: Theme.primaryAt(0.045)
        border.width: 1
        border.color: Theme.primaryAt(0.08)
        ColumnLayout {
            id: column
            anchors {
                fill: parent
                margins: 6
                leftMargin: 14
                rightMargin: 14
            }
            spacing: 2
        }
    }
    component Footer: Label {
        Layout.fillWidth: true
        wrapMode: Text.Wrap
        font: root.captionFont
        color: Theme.secondary
    }
    component ToggleRow: RowLayout {
        id: toggleRow
        property alias text: label.text
        property alias checked: toggle.checked
        property alias toggleName: toggle.objectName
        signal toggled(bool checked)
        Layout.fillWidth: true
        Label {
            id: label
            Layout.fillWidth: true
            color: Theme.primary
        }
        Switch {
            id: toggle
            onToggled: toggleRow.toggled(checked)
        }
    }

    Flickable {
        anchors.fill: parent
        contentHeight: form.implicitHeight + 2 * 16
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        ColumnLayout {
            id: form
            x: 20
            y: 16
            width: root.width - 40
            spacing: 5

            // 1. Trigger.
            SectionHeader { text: qsTr("Trigger") }
            Group {
                RowLayout {
                    Layout.fillWidth: true
                    Label {
                        text: qsTr("Hold to peek:")
                        color: Theme.primary
                        Layout.fillWidth: true
                    }
                    ComboBox {
                        id: trigger
                        objectName: "triggerPicker"
                        Layout.preferredWidth: 170
                        textRole: "label"
                        valueRole: "value"
                        model: [
                            { label: qsTr("Ctrl"), value: "command" },
                            { label: qsTr("Alt"), value: "option" },
                            { label: qsTr("Super"), value: "control" },
                            { label: qsTr("Off"), value: "off" }
                        ]
                        currentIndex: ["command", "option", "control", "off"].indexOf(root.model.triggerModifier)
                        onActivated: root.model.triggerModifier = currentValue
                    }
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    RowLayout {
                        Layout.fillWidth: true
                        Label {
                            text: qsTr("Hold delay:")
                            color: Theme.primary
                        }
                        Slider {
                            objectName: "delaySlider"
                            Layout.fillWidth: true
                            from: 0.3
                            to: 2.0
                            stepSize: 0.05
                            snapMode: Slider.SnapAlways
                            value: root.model.holdDelay
                            onMoved: root.model.holdDelay = value
                        }
                    }
                    Label {
                        objectName: "delayText"
                        text: root.model.holdDelayText
                        font: root.captionFont
                        color: Theme.secondary
                    }
                }
            }
            Footer {
                text: qsTr("To peek with a key of your own, bind the command “corvane --peek” in your desktop's keyboard shortcuts.")
            }

            // 2. Commands.
            SectionHeader { text: qsTr("Commands") }
            Group {
                ToggleRow {
                    toggleName: "showDisabledToggle"
                    text: qsTr("Show disabled commands")
                    checked: root.model.showDisabledItems
                    onToggled: checked => root.model.showDisabledItems = checked
                }
                ToggleRow {
                    toggleName: "showWithoutShortcutToggle"
                    text: qsTr("Show commands without shortcuts")
                    checked: root.model.showItemsWithoutShortcut
                    onToggled: checked => root.model.showItemsWithoutShortcut = checked
                }
                RowLayout {
                    Layout.fillWidth: true
                    ToggleRow {
                        toggleName: "rememberCommandsToggle"
                        text: qsTr("Remember commands I run")
                        checked: root.model.rememberCommands
                        onToggled: checked => root.model.rememberCommands = checked
                    }
                    Button {
                        objectName: "forgetHistoryButton"
                        text: qsTr("Forget…")
                        onClicked: forgetDialog.open()
                    }
                }
            }
            Footer {
                text: qsTr("Commands you run often and lately come first in search and in a Recent card.")
            }
            Group {
                ToggleRow {
                    toggleName: "readBrowserMenusToggle"
                    text: qsTr("Read browser menus")
                    checked: root.model.readBrowserMenus
                    onToggled: checked => root.model.readBrowserMenus = checked
                }
            }
            Footer {
                text: qsTr("Where the desktop has no global menu, Corvane stands in for one for a moment to read a Chromium-family browser's menus; a Qt application that starts in that moment shows no menu bar in its window until it restarts.")
            }

            // Where holding the trigger does nothing.
            SectionHeader { text: qsTr("Don't peek in:") }
            Group {
                Label {
                    visible: excludedList.count === 0
                    text: qsTr("No applications")
                    color: Theme.secondary
                }
                Repeater {
                    id: excludedList
                    objectName: "excludedList"
                    model: root.model.excludedApplications
                    delegate: RowLayout {
                        required property var modelData
                        Layout.fillWidth: true
                        spacing: 8
                        Image {
                            visible: modelData.icon !== "" && status === Image.Ready
                            Layout.preferredWidth: 18
                            Layout.preferredHeight: 18
                            sourceSize: Qt.size(36, 36)
                            source: modelData.icon === "" ? "" : "image://appicon/" + modelData.icon
                        }
                        Label {
                            Layout.fillWidth: true
                            text: modelData.name
                            color: Theme.primary
                            elide: Text.ElideRight
                        }
                        Button {
                            objectName: "removeExcludedButton"
                            text: "−"
                            implicitWidth: 28
                            Accessible.name: qsTr("Remove %1").arg(modelData.name)
                            onClicked: root.model.include(modelData.appId)
                        }
                    }
                }
                Button {
                    objectName: "addExcludedButton"
                    text: "+"
                    implicitWidth: 28
                    Accessible.name: qsTr("Add an application")
                    onClicked: {
                        addMenu.choices = root.model.applicationsToExclude()
                        addMenu.popup()
                    }
                    Menu {
                        id: addMenu
                        objectName: "addExcludedMenu"
                        property var choices: []
                        Instantiator {
                            model: addMenu.choices
                            delegate: MenuItem {
                                required property var modelData
                                text: modelData.name
                                icon.source: modelData.icon === "" ? "" : "image://appicon/" + modelData.icon
                                onTriggered: root.model.exclude(modelData.appId)
                            }
                            onObjectAdded: (index, object) => addMenu.insertItem(index, object)
                            onObjectRemoved: (index, object) => addMenu.removeItem(object)
                        }
                        MenuItem {
                            enabled: false
                            visible: addMenu.choices.length === 0
                            height: visible ? implicitHeight : 0
                            text: qsTr("No other application has a window")
                        }
                    }
                }
            }
            Footer { text: qsTr("Holding the trigger does nothing in these applications; the tray's Peek Current App still works.") }

            // 3. Appearance.
            SectionHeader { text: qsTr("Appearance") }
            Group {
                ToggleRow {
                    toggleName: "glassyToggle"
                    text: qsTr("Glassy background")
                    checked: root.model.glassyBackground
                    onToggled: checked => root.model.glassyBackground = checked
                }
            }
            Footer { text: qsTr("Turn off for a solid, higher-contrast background.") }

            // 4. System.
            SectionHeader { text: qsTr("System") }
            Group {
                visible: root.model.companionState !== ""
                CompanionStatus {
                    Layout.fillWidth: true
                    Layout.topMargin: 4
                    Layout.bottomMargin: 4
                    companionState: root.model.companionState
                    onTurnOn: root.model.turnOnCompanion()
                }
            }
            Group {
                ToggleRow {
                    toggleName: "launchAtLoginToggle"
                    text: qsTr("Launch Corvane at login")
                    checked: root.model.launchAtLogin
                    onToggled: checked => root.model.launchAtLogin = checked
                }
                RowLayout {
                    objectName: "accessibilityRow"
                    visible: !root.model.trusted
                    Layout.fillWidth: true
                    Label {
                        text: qsTr("Accessibility:")
                        color: Theme.primary
                        Layout.fillWidth: true
                    }
                    RowLayout {
                        spacing: 6
                        Rectangle {
                            implicitWidth: 8
                            implicitHeight: 8
                            radius: 4
                            color: "#ff9500"
                        }
                        Label {
                            text: qsTr("Not granted")
                            color: Theme.secondary
                        }
                        Button {
                            objectName: "openSystemSettingsButton"
                            text: qsTr("Open Accessibility Settings…")
                            onClicked: root.model.openSystemSettings()
                        }
                    }
                }
            }
            Footer { text: qsTr("Corvane reads menus on this computer only. Nothing is sent anywhere.") }

            // Without a tray, what its menu would offer.
            Group {
                objectName: "noTrayGroup"
                visible: !root.model.trayAvailable
                RowLayout {
                    Layout.fillWidth: true
                    Button {
                        objectName: "peekButton"
                        text: qsTr("Peek Current App")
                        onClicked: root.model.peekNow()
                    }
                    Item { Layout.fillWidth: true }
                    Button {
                        objectName: "quitButton"
                        text: qsTr("Quit Corvane")
                        onClicked: root.model.quit()
                    }
                }
            }
            Footer {
                visible: !root.model.trayAvailable
                text: qsTr("This session has no tray: open Corvane again from your applications to come back to these settings.")
            }
        }
    }

    Dialog {
        id: forgetDialog
        objectName: "forgetDialog"
        anchors.centerIn: parent
        width: Math.min(380, root.width - 40)
        modal: true
        title: qsTr("Forget the commands you ran?")
        Label {
            width: parent.width
            wrapMode: Text.Wrap
            text: qsTr("Search and the Recent card no longer know which commands you ran, in any application. Favorites stay.")
        }
        footer: DialogButtonBox {
            Button {
                objectName: "forgetConfirmButton"
                text: qsTr("Forget")
                DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
            }
            Button {
                text: qsTr("Cancel")
                DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            }
        }
        onAccepted: root.model.forgetHistory()
    }
}
