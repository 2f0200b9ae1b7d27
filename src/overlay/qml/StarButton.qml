import QtQuick
import QtQuick.Controls.Basic

// The favourite star, shared by both row kinds: toggles the favourite without running the command,
// on disabled rows too.
Item {
    id: star
    required property bool isFavorite
    signal toggled

    implicitWidth: 16
    implicitHeight: 16

    Symbol {
        anchors.centerIn: parent
        name: star.isFavorite ? "star.fill" : "star"
        size: 11
        color: star.isFavorite ? Theme.accentDeep : Theme.secondary
    }
    MouseArea {
        anchors.fill: parent
        onClicked: star.toggled()
    }
    HoverHandler {
        id: hover
    }
    ToolTip.visible: hover.hovered
    ToolTip.delay: 600
    ToolTip.text: star.isFavorite ? qsTr("Remove from favorites") : qsTr("Add to favorites")
}
