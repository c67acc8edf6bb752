import QtQuick
import Kestrune

// The background of a selectable row or button: accent-tinted when selected, frosted otherwise, lighter
// under the pointer and darker while pressed. Changes show at once, so a click is answered in its frame.
Rectangle {
    property bool isSelected: false
    property bool hovered: false
    property bool pressed: false

    radius: 10
    color: pressed ? (isSelected ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.28)
                                 : Qt.rgba(0.86, 0.88, 0.93, 0.9))
                   : isSelected ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, hovered ? 0.22 : 0.16)
                                : (hovered ? Qt.rgba(1, 1, 1, 0.7) : Qt.rgba(1, 1, 1, 0.34))
    border.width: 1
    border.color: isSelected ? Qt.rgba(1, 1, 1, 0.9) : Qt.rgba(1, 1, 1, 0.45)
}
