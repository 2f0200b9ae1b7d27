import QtQuick

// One of the project's symbols ("star.fill", "pin.fill", "magnifyingglass", …): its monochrome SVG,
// drawn in `color` at the height of a glyph of the font size `size`.
Image {
    id: symbol
    required property string name
    property color color: Theme.primary
    property real size: 11

    width: size
    height: size
    sourceSize: Qt.size(Math.ceil(size * 2), Math.ceil(size * 2)) // sharp on scaled screens
    fillMode: Image.PreserveAspectFit
    smooth: true
    source: "image://symbol/" + name + "?" + color
}
