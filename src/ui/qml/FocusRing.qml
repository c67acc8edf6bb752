import QtQuick
import Kestrune

// The keyboard focus mark: an accent outline around the item it is put in, shown while `shown` holds
// (by default while the control holding it was reached from the keyboard).
Rectangle {
    property bool shown: parent ? parent.visualFocus === true : false
    property real outset: 3

    objectName: "focusRing"
    anchors.fill: parent
    anchors.margins: -outset
    radius: 9
    color: "transparent"
    border.width: 2
    border.color: Theme.accent
    visible: shown
}
