import QtQuick
import Kestrune

// The background of a selectable row or button: accent-tinted when selected, frosted otherwise.
Rectangle {
    property bool isSelected: false
    property bool hovered: false

    radius: 10
    color: isSelected ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.16)
                      : (hovered ? Qt.rgba(1, 1, 1, 0.62) : Qt.rgba(1, 1, 1, 0.34))
    border.width: 1
    border.color: isSelected ? Qt.rgba(1, 1, 1, 0.9) : Qt.rgba(1, 1, 1, 0.45)

    Behavior on color { ColorAnimation { duration: 120 } }
}
