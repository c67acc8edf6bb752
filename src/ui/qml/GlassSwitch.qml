import QtQuick
import QtQuick.Controls
import Kestrune

// A small switch: accent track when on, frosted when off.
Switch {
    id: control

    padding: 0
    implicitWidth: 34 // no text: the track is the whole control
    implicitHeight: 20
    indicator: Rectangle {
        implicitWidth: 34
        implicitHeight: 20
        radius: height / 2
        color: control.checked ? Theme.accent : Qt.rgba(0, 0, 0, 0.12)
        Behavior on color { ColorAnimation { duration: 120 } }
        Rectangle {
            width: 16
            height: 16
            radius: 8
            y: 2
            x: control.checked ? parent.width - width - 2 : 2
            color: "white"
            border.width: 1
            border.color: Qt.rgba(0, 0, 0, 0.08)
            Behavior on x { NumberAnimation { duration: 120 } }
        }
    }
    contentItem: null
    FocusRing { outset: 2; radius: 12 }
}
