import QtQuick

// Part 5.5's KeycapView: a shortcut as a row of caps, modifiers first. A shortcut without a key
// draws nothing and takes no space (invisible items take none in a layout).
Row {
    id: view
    property var modifiers: []
    property string key: ""

    visible: key !== ""
    spacing: 3

    Repeater {
        // Identified by position: equal labels would still get a cap each.
        model: view.key === "" ? [] : view.modifiers.concat([view.key])
        Keycap {
            required property string modelData
            label: modelData
            anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        }
    }
}
