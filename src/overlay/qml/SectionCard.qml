import QtQuick

// Part 5.4's SectionCard: one top-level menu, or the favourites, with its command rows.
// `commands` is a CommandListModel; `overlay` is the view model (Part 5.1), for favourites.
Item {
    id: card
    required property string title
    required property bool isFavorites
    required property var commands
    property bool showBreadcrumbs: true

    // The rows, then a spacer of at least 7 (after the stack's spacing of 3).
    implicitHeight: stack.implicitHeight + 3 + 7

    Rectangle {
        anchors.fill: parent
        radius: 12
        color: Theme.primaryAt(0.04)
        border.width: 1
        border.color: card.isFavorites ? Theme.colorAt(Theme.accent, 0.4) : Theme.primaryAt(0.08)
    }

    Column {
        id: stack
        width: parent.width
        spacing: 3

        Item {
            objectName: "heading"
            width: parent.width
            implicitHeight: heading.implicitHeight + 9 + 3
            Row {
                id: heading
                x: 10
                y: 9
                width: parent.width - 20
                spacing: 4
                readonly property color color: card.isFavorites ? Theme.accentDeep : Theme.secondary
                Symbol {
                    objectName: "headingStar"
                    visible: card.isFavorites
                    anchors.verticalCenter: parent.verticalCenter
                    name: "star.fill"
                    size: 9
                    color: heading.color
                }
                Text {
                    objectName: "headingText"
                    text: card.title.toUpperCase()
                    font.pointSize: Theme.sectionFont.pointSize
                    font.weight: Theme.sectionFont.weight
                    font.letterSpacing: 0.8
                    color: heading.color
                    elide: Text.ElideRight
                    width: Math.min(implicitWidth, heading.width)
                }
            }
        }

        Repeater {
            model: card.commands
            CommandRow {
                width: stack.width
                list: card.commands
                showBreadcrumb: card.showBreadcrumbs
            }
        }
    }
}
