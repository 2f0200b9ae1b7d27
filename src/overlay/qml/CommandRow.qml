import QtQuick
import QtQuick.Layouts

// Part 5.4's CommandRow: one command in a section card. `list` is the card's CommandListModel;
// the row's values come from its roles.
Item {
    id: row
    required property var list
    required property int index
    required property string title
    required property string breadcrumb
    required property bool isChecked
    required property bool isEnabled
    required property var modifiers
    required property string key
    required property bool isFavorite
    property bool showBreadcrumb: true
    readonly property bool hovered: hover.hovered

    implicitHeight: Math.max(26, content.implicitHeight + 8)
    opacity: isEnabled ? 1 : 0.4

    Rectangle {
        objectName: "highlight"
        anchors.fill: parent
        anchors.leftMargin: 4
        anchors.rightMargin: 4
        radius: 7
        color: row.hovered && row.isEnabled ? Theme.colorAt(Theme.accent, 0.14) : "transparent"
    }
    // The whole rectangle of the row takes the click, not only its drawn parts.
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
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        anchors.topMargin: 4
        anchors.bottomMargin: 4
        spacing: 8

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0
            RowLayout {
                spacing: 5
                Symbol {
                    objectName: "checkmark"
                    visible: row.isChecked
                    name: "checkmark"
                    size: 9
                    color: Theme.secondary
                }
                Text {
                    objectName: "title"
                    Layout.fillWidth: true
                    text: row.title
                    font: Theme.rowFont
                    color: Theme.primary
                    elide: Text.ElideMiddle
                    maximumLineCount: 1
                }
            }
            Text {
                objectName: "breadcrumb"
                Layout.fillWidth: true
                visible: row.showBreadcrumb && row.breadcrumb !== ""
                text: row.breadcrumb
                font: Theme.breadcrumbFont
                color: Theme.tertiary
                elide: Text.ElideRight
                maximumLineCount: 1
            }
        }
        Item {
            Layout.preferredWidth: 4 // the spacer of at least 4, with the stack's spacing
        }
        StarButton {
            objectName: "star"
            visible: row.hovered || row.isFavorite
            isFavorite: row.isFavorite
            onToggled: row.list.toggleFavorite(row.index)
        }
        KeycapView {
            objectName: "keycaps"
            modifiers: row.modifiers
            key: row.key
        }
    }
}
