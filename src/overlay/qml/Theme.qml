pragma Singleton
import QtQuick

// The accent colours and type styles shared by the overlay and the windows, and the label colours:
// the palette's window text at opacity 1.0, 0.6 and 0.4, so that they follow a light or dark
// desktop. Sizes are one point per logical pixel; font sizes are given in points at 96 dpi (×
// 0.75), so that they follow the desktop's font resolution.
QtObject {
    readonly property color accent: Qt.rgba(1.0, 0.69, 0.29, 1.0)
    readonly property color accentDeep: Qt.rgba(0.82, 0.51, 0.1, 1.0)

    readonly property SystemPalette palette: SystemPalette { colorGroup: SystemPalette.Active }
    readonly property color primary: palette.windowText
    readonly property color secondary: primaryAt(0.6)
    readonly property color tertiary: primaryAt(0.4)
    readonly property color windowBackground: palette.window

    readonly property font keycapFont: font(11, Font.DemiBold)
    readonly property font sectionFont: font(11, Font.Bold)
    readonly property font rowFont: font(13, Font.Medium)
    readonly property font breadcrumbFont: font(10.5, Font.Normal)

    // Line heights of the row texts, so that a card can lay out rows it has not made yet.
    readonly property FontMetrics rowMetrics: FontMetrics { font: rowFont }
    readonly property FontMetrics breadcrumbMetrics: FontMetrics { font: breadcrumbFont }
    readonly property real rowLine: Math.ceil(rowMetrics.height)
    readonly property real breadcrumbLine: Math.ceil(breadcrumbMetrics.height)

    // A card row's height: its text lines or its key caps (20) or star (16), padded 4 above and
    // below, at least 26. `kind`: 1 = has a breadcrumb, 2 = has a key.
    function cardRowHeight(kind, showBreadcrumb) {
        const text = rowLine + ((kind & 1) && showBreadcrumb ? breadcrumbLine : 0)
        return Math.max(26, Math.max(text, (kind & 2) ? 20 : 16) + 8)
    }

    function primaryAt(opacity) {
        return Qt.rgba(primary.r, primary.g, primary.b, opacity)
    }
    function colorAt(color, opacity) {
        return Qt.rgba(color.r, color.g, color.b, opacity)
    }
    function font(size, weight) {
        return Qt.font({ pointSize: size * 0.75, weight: weight })
    }
}
