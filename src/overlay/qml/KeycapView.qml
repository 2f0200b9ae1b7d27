import QtQuick

// A shortcut as a row of caps, modifiers first. A shortcut without a key draws nothing and takes no
// space (invisible items take none in a layout).
Row {
    id: view
    property var modifiers: []
    property string key: ""
    // The caps drawn: the modifiers, then the key.
    readonly property int count: key === "" ? 0 : modifiers.length + 1
    // The caps made so far. They stay, hidden when not needed, so that a reused row (the
    // search results, re-ranked on every keystroke) changes labels instead of making caps.
    property int made: 0

    visible: key !== ""
    spacing: 3
    onCountChanged: made = Math.max(made, count)
    Component.onCompleted: made = count

    Repeater {
        // Identified by position: equal labels would still get a cap each.
        model: view.made
        Keycap {
            required property int index
            visible: index < view.count
            label: index < view.modifiers.length ? view.modifiers[index]
                                                 : index === view.modifiers.length ? view.key : ""
            anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        }
    }
}
