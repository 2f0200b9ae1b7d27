import QtQuick
import QtQuick.Controls.Fusion
import Corvane.Overlay
import Corvane.Windows

// The What's New window's view: a scrolling column with the key cap, the heading and each release's
// features, then a divider and the bar with "Continue". 520 points wide, at most 640 high.
WindowSurface {
    id: root
    required property QtObject model
    readonly property var releases: model.releases

    implicitWidth: 520
    implicitHeight: Math.min(640, scrolled.height + divider.height + bar.height)
    focus: true

    // Return presses "Continue", the default button.
    Keys.onReturnPressed: root.model.close()
    Keys.onEnterPressed: root.model.close()

    Flickable {
        id: scroll
        objectName: "scroll"
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            bottom: divider.top
        }
        contentWidth: width
        contentHeight: scrolled.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

        Column {
            id: scrolled
            objectName: "scrolled"
            x: 36
            width: root.width - 72
            topPadding: 28
            bottomPadding: 18
            spacing: 18

            Item {
                objectName: "keycapFrame"
                anchors.horizontalCenter: parent.horizontalCenter
                width: 54
                height: 54
                Keycap {
                    anchors.centerIn: parent
                    label: root.model.trigger
                    scale: 2
                }
            }
            Label {
                objectName: "heading"
                anchors.horizontalCenter: parent.horizontalCenter
                text: qsTr("What's New in Corvane")
                font: Theme.font(22, Font.Bold)
                color: Theme.primary
            }
            Repeater {
                model: root.releases
                delegate: Column {
                    id: release
                    required property var modelData
                    required property int index
                    objectName: "release"
                    width: scrolled.width
                    spacing: 14
                    Label {
                        objectName: "versionLine"
                        visible: root.releases.length >= 2
                        text: qsTr("Version %1").arg(release.modelData.version)
                        font: Theme.font(12, Font.DemiBold)
                        color: Theme.secondary
                    }
                    Repeater {
                        model: release.modelData.features
                        delegate: FeatureRow {
                            required property var modelData
                            required property int index
                            width: release.width
                            feature: modelData
                            onActionRequested: root.model.performAction(release.index, index)
                        }
                    }
                }
            }
        }
    }

    Rectangle {
        id: divider
        objectName: "divider"
        anchors.bottom: bar.top
        width: parent.width
        height: 1
        color: Theme.primaryAt(0.12)
    }

    Item {
        id: bar
        anchors.bottom: parent.bottom
        width: parent.width
        height: continueButton.implicitHeight + 2 * 16
        Button {
            id: continueButton
            objectName: "continueButton"
            anchors {
                right: parent.right
                rightMargin: 36
                verticalCenter: parent.verticalCenter
            }
            width: Math.max(160, implicitWidth)
            text: qsTr("Continue")
            highlighted: true // the default button
            font: Theme.font(13, Font.Normal)
            onClicked: root.model.close()
        }
    }
}
