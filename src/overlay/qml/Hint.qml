import QtQuick

// One of the footer's hints: a key cap and its label.
Row {
    id: hint
    required property string key
    required property string label
    spacing: 4
    Keycap {
        anchors.verticalCenter: parent.verticalCenter
        label: hint.key
    }
    Text {
        anchors.verticalCenter: parent.verticalCenter
        text: hint.label
        font: Theme.font(10.5, Font.Normal)
        color: Theme.secondary
    }
}
