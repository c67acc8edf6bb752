pragma Singleton
import QtQuick
import Kestrune

// Colours, type and metrics shared by every view.
QtObject {
    readonly property color accent: "#0a7cff"
    readonly property color green: "#28a745"
    readonly property color purple: "#9b51e0"
    readonly property color orange: "#f08c00"
    readonly property color blue: "#1f7ae0"
    readonly property color red: "#e5383b"
    readonly property color primaryText: "#1c1c1e"
    readonly property color secondaryText: "#6b6b73"
    readonly property color divider: Qt.rgba(0, 0, 0, 0.10)
    readonly property color glassFill: Qt.rgba(1, 1, 1, 0.52)
    readonly property color glassFillStrong: Qt.rgba(1, 1, 1, 0.72)
    // For what must hide the window beneath it: menus and the alert.
    readonly property color opaqueFill: "#f8f9fc"
    readonly property string fontFamily: Qt.fontFamilies().indexOf("Inter") >= 0 ? "Inter" : Qt.application.font.family
    readonly property int smallText: 11
    readonly property int bodyText: 13
    readonly property int headlineText: 15
}
