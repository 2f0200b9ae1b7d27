import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The overlay's root view: the rounded card with the header, the content (loading, section grid or
// search results) and the footer. `model` is the OverlayViewModel, `lists` its derived lists as
// list models. The root is made once; reset() starts each presentation afresh.
Item {
    id: root
    objectName: "overlayRoot"
    required property var model
    required property var lists
    // Whether a compositor draws the panel's transparency: the glass is then translucent.
    property bool translucent: false
    property bool searchFocused: false
    // Whether the card is drawn in the solid window colour (no glass): what lies on it can then
    // be drawn in solid colours too, mixed with that colour (the software renderer fills solid
    // colours far faster than it blends translucent ones).
    readonly property bool solid: background.color.a === 1

    // Without a compositor the panel is an opaque window (PeekPanel) cleared to the card's
    // colour: a frame drawn at alpha 0, the fade's first, shows the empty card, not black.
    Binding {
        target: root.Window.window
        when: !root.translucent && root.Window.window !== null
        property: "color"
        value: Theme.windowBackground
        restoreMode: Binding.RestoreNone
    }

    onSearchFocusedChanged: {
        if (searchFocused)
            field.forceActiveFocus()
        else
            field.focus = false
    }
    Connections {
        target: root.model
        function onPinnedChanged() { root.searchFocused = root.model.pinned }
        // A new query shows its results from the top (the rows change in place: the list
        // keeps its position unless told).
        function onQueryChanged() {
            root.model.selection = 0
            root.scrollToTop(results)
        }
        function onSelectionChanged() { results.reveal() }
    }
    // A new presentation: the view's own state (search focus, scroll positions) starts afresh, as
    // in a new view.
    function reset() {
        searchFocused = false
        scrollToTop(grid)
        scrollToTop(results)
        if (root.model.pinned)
            Qt.callLater(() => root.searchFocused = true)
    }
    // The top of a list, its top margin shown (positionViewAtBeginning() would hide it).
    function scrollToTop(view) {
        view.contentY = view.originY - view.topMargin
    }

    // Back to front: the accent tint, the glass or the window colour, the content, the outline.
    // The content never reaches the corners, so rounding the layers is the card's clip.
    Rectangle {
        anchors.fill: parent
        radius: 22
        color: Theme.colorAt(Theme.accent, 0.045)
        visible: !root.solid // under the solid window colour it would not show
    }
    Rectangle {
        id: background
        objectName: "background"
        anchors.fill: parent
        radius: 22
        color: Theme.colorAt(Theme.windowBackground,
                             root.model.glassy && root.translucent ? 0.82 : 1.0)
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        // header: the application on the left, the search field and the badge on the right.
        // Positioners rather than a layout: items that appear before the first layout pass
        // (a pin right after presenting) are then placed like any other.
        Item {
            objectName: "header"
            Layout.fillWidth: true
            Layout.leftMargin: 16
            Layout.rightMargin: 16
            Layout.topMargin: 11
            Layout.bottomMargin: 11
            implicitHeight: Math.max(identity.implicitHeight, tools.implicitHeight)

            Row {
                id: identity
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                spacing: 10

                Image {
                    objectName: "appIcon"
                    anchors.verticalCenter: parent.verticalCenter
                    visible: root.model.appIcon !== "" && status === Image.Ready
                    width: 30
                    height: 30
                    sourceSize: Qt.size(60, 60)
                    source: root.model.appIcon === "" ? "" : "image://appicon/" + root.model.appIcon
                    fillMode: Image.PreserveAspectFit
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 1
                    Text {
                        objectName: "appName"
                        text: root.model.appName
                        font: Theme.font(15, Font.Bold)
                        color: Theme.primary
                        elide: Text.ElideRight
                        width: Math.min(implicitWidth, Math.max(0, tools.x - 10 - 40))
                    }
                    Text {
                        objectName: "countLine"
                        text: qsTr("%n command(s)", "", root.lists.commandCount)
                        font: Theme.font(10.5, Font.Normal)
                        color: Theme.secondary
                    }
                }
            }

            Row {
                id: tools
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                spacing: 10

                // searchField
                Rectangle {
                    objectName: "searchField"
                    anchors.verticalCenter: parent.verticalCenter
                    width: 230
                    height: 28
                    radius: height / 2
                    color: Theme.primaryAt(0.06)
                    border.width: 1
                    border.color: root.model.pinned ? Theme.colorAt(Theme.accent, 0.7)
                                                    : Theme.primaryAt(0.15)
                    RowLayout {
                        anchors.fill: parent
                        anchors.leftMargin: 10
                        anchors.rightMargin: 10
                        spacing: 6
                        Symbol {
                            name: "magnifyingglass"
                            size: 11
                            color: Theme.secondary
                        }
                        TextField {
                            id: field
                            objectName: "searchText"
                            Layout.fillWidth: true
                            enabled: root.model.pinned
                            placeholderText: qsTr("Search commands")
                            placeholderTextColor: Theme.tertiary
                            text: root.model.query
                            onTextEdited: root.model.query = text
                            font: Theme.font(12.5, Font.Normal)
                            color: Theme.primary
                            selectionColor: Theme.colorAt(Theme.accent, 0.5)
                            selectedTextColor: Theme.primary
                            background: null
                            padding: 0
                            verticalAlignment: TextInput.AlignVCenter
                        }
                    }
                    // A click on the field of a peeking overlay asks for the pin; the disabled
                    // text field lets it through. Pinned, the text field takes the click itself.
                    TapHandler {
                        enabled: !root.model.pinned
                        onTapped: root.model.requestPin()
                    }
                }

                // statePill
                Rectangle {
                    objectName: "statePill"
                    anchors.verticalCenter: parent.verticalCenter
                    visible: root.model.pinned
                    width: pill.implicitWidth + 18
                    height: pill.implicitHeight + 10
                    radius: height / 2
                    color: Theme.colorAt(Theme.accent, 0.18)
                    Row {
                        id: pill
                        anchors.centerIn: parent
                        spacing: 4
                        Symbol {
                            anchors.verticalCenter: parent.verticalCenter
                            name: "pin.fill"
                            size: 10.5
                            color: Theme.accentDeep
                        }
                        Text {
                            text: qsTr("Pinned")
                            font: Theme.font(10.5, Font.DemiBold)
                            color: Theme.accentDeep
                        }
                    }
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 1
            color: Theme.primaryAt(0.08)
        }

        // content: exactly one of loading, search results, section grid
        Item {
            id: content
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            readonly property bool loading: !root.lists.hasSections

            Column {
                objectName: "loading"
                visible: content.loading
                anchors.centerIn: parent
                spacing: 10
                readonly property string unreadable: root.model.unreadableText
                BusyIndicator {
                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: parent.unreadable === ""
                    running: parent.visible && visible
                }
                Text {
                    objectName: "loadingText"
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: Math.min(implicitWidth, 460, content.width - 48)
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                    text: parent.unreadable || qsTr("Reading menus…")
                    font: Theme.font(12, Font.Normal)
                    color: Theme.secondary
                }
            }

            ListView {
                id: results
                objectName: "searchList"
                visible: !content.loading && root.lists.searchActive
                width: Math.min(640, parent.width)
                height: parent.height
                anchors.horizontalCenter: parent.horizontalCenter
                topMargin: 12
                bottomMargin: 12
                leftMargin: 12
                rightMargin: 12
                spacing: 2
                boundsBehavior: Flickable.StopAtBounds
                model: root.lists.results
                reuseItems: true // a keystroke resets the results: their rows are reused
                ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }
                delegate: SearchRow {
                    width: results.width - 24
                    list: root.lists.results
                    selected: index === root.model.selection
                }
                // The least scrolling that shows the selected row; out-of-range values are ignored.
                // Also once the list has its height: a selection made before the first layout.
                function reveal() {
                    const selection = root.model.selection
                    if (visible && height > 0 && selection >= 0 && selection < count)
                        positionViewAtIndex(selection, ListView.Contain)
                }
                onHeightChanged: reveal()
            }

            ListView {
                id: grid
                objectName: "sectionGrid"
                // While a search is shown the grid is moved aside, not hidden: showing a hidden
                // grid again visits every item of its cards (visibility is inherited), which took
                // the keystroke that clears the query 13-15 ms instead of 6. Aside, beyond the
                // clipped content, it is neither drawn nor under the pointer.
                visible: !content.loading
                transform: Translate { x: root.lists.searchActive ? -20000 : 0 }
                anchors.fill: parent
                topMargin: 14
                bottomMargin: 14
                leftMargin: 14
                rightMargin: 14
                spacing: 12
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

                // Adaptive columns: as many of at least 290 as fit, 12 apart, each at most 460.
                readonly property real area: width - 28
                readonly property int columns: Math.max(1, Math.floor((area + 12) / (290 + 12)))
                readonly property real columnWidth:
                    Math.min(460, (area - 12 * (columns - 1)) / columns)
                // Kept while a search is shown, so that clearing the query shows it at once.
                readonly property var sections: root.lists.sections
                // A header that grows (the Recent card shows once pinned) would push the top out
                // of view: a list that was at its top stays there.
                property bool atTop: true
                onContentYChanged: atTop = contentY <= originY + 1
                onOriginYChanged: if (atTop) contentY = originY

                // Laid out by bindings, not a Column: the list places its header by the height
                // it has when made, and a Column's comes a frame later.
                header: Item {
                    id: cards
                    width: grid.area
                    height: (favorites.visible ? favorites.height + 12 : 0)
                            + (recent.visible ? recent.height + 12 : 0)
                    SectionCard {
                        id: favorites
                        objectName: "favoritesCard"
                        visible: root.lists.favorites.count > 0
                        width: parent.width
                        height: implicitHeight
                        title: qsTr("Favorites")
                        isFavorites: true
                        solid: root.solid
                        commands: root.lists.favorites
                        visibleTop: grid.contentY - cards.y
                        visibleBottom: visibleTop + grid.height
                    }
                    // What was run often and lately, once the panel is pinned.
                    SectionCard {
                        id: recent
                        objectName: "recentCard"
                        visible: root.model.pinned && root.lists.recent.count > 0
                        y: favorites.visible ? favorites.height + 12 : 0
                        width: parent.width
                        height: implicitHeight
                        title: qsTr("Recent")
                        isFavorites: false
                        solid: root.solid
                        commands: root.lists.recent
                        visibleTop: grid.contentY - cards.y - y
                        visibleBottom: visibleTop + grid.height
                    }
                }
                model: Math.ceil(sections.length / columns)
                delegate: Row {
                    id: gridRow
                    required property int index
                    spacing: 12
                    Repeater {
                        model: Math.min(grid.columns, grid.sections.length - gridRow.index * grid.columns)
                        SectionCard {
                            required property int index
                            readonly property var section:
                                grid.sections[gridRow.index * grid.columns + index]
                            objectName: "sectionCard"
                            width: grid.columnWidth
                            height: implicitHeight // cells are aligned to the top
                            title: section.title
                            isFavorites: false
                            solid: root.solid
                            commands: section
                            visibleTop: grid.contentY - gridRow.y
                            visibleBottom: visibleTop + grid.height
                        }
                    }
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 1
            color: Theme.primaryAt(0.08)
        }

        // footer
        Item {
            objectName: "footer"
            Layout.fillWidth: true
            Layout.leftMargin: 16
            Layout.rightMargin: 16
            Layout.topMargin: 8
            Layout.bottomMargin: 8
            implicitHeight: Math.max(hints.implicitHeight, note.implicitHeight)

            Row {
                id: hints
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                spacing: 14
                Hint { visible: root.model.pinned; key: "↑↓"; label: qsTr("Navigate") }
                Hint { visible: root.model.pinned; key: "↩"; label: qsTr("Run") }
                Hint { visible: root.model.pinned; key: "⎋"; label: qsTr("Close") }
                Text {
                    objectName: "clickHint"
                    visible: !root.model.pinned
                    text: qsTr("Click a command to run it")
                    font: Theme.font(10.5, Font.Normal)
                    color: Theme.secondary
                }
            }
            Text {
                id: note
                objectName: "footerNote"
                anchors.right: exportButton.visible ? exportButton.left : parent.right
                anchors.rightMargin: exportButton.visible ? 12 : 0
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width - hints.width - 14
                                - (exportButton.visible ? exportButton.width + 12 : 0))
                elide: Text.ElideMiddle
                text: root.model.notice !== "" ? root.model.notice
                      : root.model.pinned
                        ? qsTr("Hover a command and click ★ to favorite it")
                        : qsTr("Release %1 over this panel to keep it open").arg(root.model.triggerSymbol)
                font: Theme.font(10.5, Font.Normal)
                color: root.model.notice !== "" ? Theme.secondary : Theme.tertiary
            }
            // The shortcut sheet (also Ctrl+E), once pinned.
            Text {
                id: exportButton
                objectName: "exportButton"
                visible: root.model.pinned && root.lists.hasSections
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Export…")
                font: Theme.font(10.5, Font.DemiBold)
                color: exportArea.containsMouse ? Theme.accentDeep : Theme.accent
                MouseArea {
                    id: exportArea
                    anchors.fill: parent
                    anchors.margins: -4
                    hoverEnabled: true
                    cursorShape: Qt.PointingHandCursor
                    onClicked: root.model.requestExport()
                }
            }
        }
    }

    // The outline, over everything.
    Rectangle {
        anchors.fill: parent
        radius: 22
        color: "transparent"
        border.width: 1
        border.color: Theme.primaryAt(0.14)
    }
}
