import QtQuick

// One key as a small rounded key cap with a lower lip.
Item {
    id: cap
    required property string label

    // Padding only for labels of more than one character ("F5", "Ctrl"); code points, so that a
    // symbol outside the Basic Multilingual Plane counts once.
    readonly property real padding: Array.from(label).length > 1 ? 5 : 0

    implicitWidth: Math.max(20, text.implicitWidth + 2 * padding)
    implicitHeight: Math.max(20, text.implicitHeight)

    Rectangle {
        anchors.fill: parent
        radius: 5.5
        color: Theme.primaryAt(0.06)
    }
    Rectangle {
        objectName: "lip"
        anchors {
            left: parent.left
            right: parent.right
            bottom: parent.bottom
            leftMargin: 3.5
            rightMargin: 3.5
            bottomMargin: 1.8
        }
        height: 1.8
        radius: 1.5
        color: Theme.primaryAt(0.16)
    }
    Rectangle {
        anchors.fill: parent
        radius: 5.5
        color: "transparent"
        border.width: 1
        border.color: Theme.primaryAt(0.2)
    }
    Text {
        id: text
        anchors.centerIn: parent
        text: cap.label
        font: Theme.keycapFont
        color: Theme.primary
    }
}
