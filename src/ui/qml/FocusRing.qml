import QtQuick
import Kestrune

// The keyboard focus mark around the item it is put in, shown while `shown` holds (by default while the
// control holding it was reached from the keyboard). Two tones: the accent outline stands out from the
// light surfaces, and the white line inside it from controls filled with the accent colour.
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

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        radius: Math.max(0, parent.radius - 2)
        color: "transparent"
        border.width: 1.5
        border.color: "white"
    }
}
