import QtQuick

// One top-level menu, or the favourites, with its command rows.
// `commands` is a CommandListModel. The card has the height of all its rows but makes only
// those inside `visibleTop`…`visibleBottom` (its own coordinates; the grid passes the part of
// the card that is scrolled into view), so that a menu of thousands of items opens at once.
Item {
    id: card
    required property string title
    required property bool isFavorites
    required property var commands
    property bool showBreadcrumbs: true
    // Drawn on the solid window colour (OverlayRoot.solid): the card's tint is mixed with it.
    property bool solid: false
    property real visibleTop: 0
    property real visibleBottom: height

    readonly property var kinds: commands ? commands.rowKinds : []
    // offsets[i]: the top of row i below the heading; offsets[n]: the end of the last row.
    readonly property var offsets: {
        const result = [heading.height + 3]
        for (let i = 0; i < kinds.length; ++i)
            result.push(result[i] + Theme.cardRowHeight(kinds[i], showBreadcrumbs) + 3)
        return result
    }
    // The heading, the rows with the stack's spacing of 3, and a spacer of at least 7.
    implicitHeight: offsets[offsets.length - 1] + 7

    // The first row that reaches into the visible part (binary search over the offsets).
    readonly property int firstShown: {
        let low = 0, high = kinds.length
        while (low < high) {
            const middle = (low + high) >> 1
            if (offsets[middle + 1] - 3 <= visibleTop)
                low = middle + 1
            else
                high = middle
        }
        return low
    }
    // Enough row slots for the tallest visible part made of the shortest rows.
    readonly property int slots: Math.min(kinds.length,
                                          Math.ceil(Math.max(0, visibleBottom - visibleTop) / 29) + 2)

    Rectangle {
        anchors.fill: parent
        radius: 12
        color: card.solid ? Qt.tint(Theme.windowBackground, Theme.primaryAt(0.04))
                          : Theme.primaryAt(0.04)
        border.width: 1
        border.color: card.isFavorites ? Theme.colorAt(Theme.accent, 0.4) : Theme.primaryAt(0.08)
    }

    Item {
        id: heading
        objectName: "heading"
        width: parent.width
        height: headingRow.implicitHeight + 9 + 3
        Row {
            id: headingRow
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
                color: headingRow.color
            }
            Text {
                objectName: "headingText"
                text: card.title.toUpperCase()
                font.pointSize: Theme.sectionFont.pointSize
                font.weight: Theme.sectionFont.weight
                font.letterSpacing: 0.8
                color: headingRow.color
                elide: Text.ElideRight
                width: Math.min(implicitWidth, headingRow.width)
            }
        }
    }

    Repeater {
        model: card.slots
        CommandRow {
            required property int index
            readonly property int position: card.firstShown + index
            visible: position < card.kinds.length
            row: visible ? position : -1
            list: card.commands
            width: card.width
            y: visible ? card.offsets[position] : 0
            height: visible ? card.offsets[position + 1] - card.offsets[position] - 3 : 0
            showBreadcrumb: card.showBreadcrumbs
        }
    }
}
