import QtQuick
import QtQuick.Layouts

// One command in the search results, with its location in the menus.
Item {
    id: row
    required property var list
    required property int index
    required property string title
    required property string location
    required property bool isEnabled
    required property var modifiers
    required property string key
    required property bool isFavorite
    required property bool selected
    readonly property bool hovered: hover.hovered

    implicitHeight: content.implicitHeight + 12
    opacity: isEnabled ? 1 : 0.4

    Rectangle {
        objectName: "highlight"
        anchors.fill: parent
        radius: 9
        // The selection wins over the hover; neither depends on `enabled`.
        color: row.selected ? Theme.colorAt(Theme.accent, 0.22)
                            : row.hovered ? Theme.primaryAt(0.05) : "transparent"
    }
    MouseArea {
        anchors.fill: parent
        onClicked: row.list.click(row.index)
    }
    HoverHandler {
        id: hover
    }

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.topMargin: 6
        anchors.bottomMargin: 6
        spacing: 8

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0
            Text {
                objectName: "title"
                Layout.fillWidth: true
                text: row.title
                font: Theme.rowFont
                color: Theme.primary
                elide: Text.ElideMiddle
                maximumLineCount: 1
            }
            Text {
                objectName: "location"
                Layout.fillWidth: true
                text: row.location
                font: Theme.breadcrumbFont
                color: Theme.tertiary
                elide: Text.ElideRight
                maximumLineCount: 1
            }
        }
        Item {
            Layout.preferredWidth: 4 // the spacer of at least 4, with the stack's spacing
        }
        Loader {
            objectName: "star"
            active: row.hovered || row.isFavorite
            visible: active
            sourceComponent: StarButton {
                isFavorite: row.isFavorite
                onToggled: row.list.toggleFavorite(row.index)
            }
        }
        KeycapView {
            objectName: "keycaps"
            modifiers: row.modifiers
            key: row.key
        }
    }
}
