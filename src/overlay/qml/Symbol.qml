import QtQuick

// One of PLATFORM.md's symbols ("star.fill", "pin.fill", "magnifyingglass", …): the project's
// monochrome SVG, drawn in `color` at the height of a glyph of the font size `size`.
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
