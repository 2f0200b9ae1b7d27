import QtQuick
import QtQuick.Layouts

// One command in a section card, row `row` of the card's CommandListModel `list`. The card gives it
// its height (SectionCard lays rows out itself).
Item {
    id: row
    required property var list
    property int row: -1
    property bool showBreadcrumb: true
    readonly property var command: (list.revision, list.rowData(row.row))
    readonly property bool isEnabled: command.isEnabled === true
    readonly property bool isFavorite: command.isFavorite === true
    readonly property bool hovered: hover.hovered

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
        onClicked: row.list.click(row.row)
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

        Column {
            Layout.fillWidth: true
            Row {
                width: parent.width
                spacing: 5
                Symbol {
                    objectName: "checkmark"
                    anchors.verticalCenter: parent.verticalCenter
                    visible: row.command.isChecked === true
                    name: "checkmark"
                    size: 9
                    color: Theme.secondary
                }
                Text {
                    objectName: "title"
                    width: parent.width - (row.command.isChecked === true ? 9 + 5 : 0)
                    height: Theme.rowLine
                    verticalAlignment: Text.AlignVCenter
                    text: row.command.title ?? ""
                    font: Theme.rowFont
                    color: Theme.primary
                    elide: Text.ElideMiddle
                    maximumLineCount: 1
                }
            }
            Text {
                objectName: "breadcrumb"
                width: parent.width
                height: Theme.breadcrumbLine
                verticalAlignment: Text.AlignVCenter
                visible: row.showBreadcrumb && text !== ""
                text: row.command.breadcrumb ?? ""
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
                onToggled: row.list.toggleFavorite(row.row)
            }
        }
        KeycapView {
            objectName: "keycaps"
            modifiers: row.command.modifiers ?? []
            key: row.command.key ?? ""
        }
    }
}
