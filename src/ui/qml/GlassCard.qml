import QtQuick
import Kestrune

// The translucent card: a frosted fill, a light outline fading downwards, and a soft shadow beneath.
Item {
    id: card

    property real cornerRadius: 14
    property real padding: 12
    property color fill: Theme.glassFill
    default property alias content: inner.data

    // The soft shadow, drawn as a few widening translucent layers.
    Repeater {
        model: 3
        Rectangle {
            required property int index
            anchors.fill: parent
            anchors.margins: -index * 1.5
            anchors.topMargin: -index * 1.5 + 2 + index
            radius: card.cornerRadius + index * 1.5
            color: Qt.rgba(0, 0, 0, 0.035 - index * 0.008)
        }
    }
    Rectangle {
        id: outline
        anchors.fill: parent
        radius: card.cornerRadius
        gradient: Gradient {
            GradientStop { position: 0.0; color: Qt.rgba(1, 1, 1, 0.85) }
            GradientStop { position: 1.0; color: Qt.rgba(1, 1, 1, 0.30) }
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: 1
            radius: card.cornerRadius - 1
            color: card.fill
            border.width: 1
            border.color: Qt.rgba(0, 0, 0, 0.04)
        }
    }
    Item {
        id: inner
        objectName: "cardContent"
        anchors.fill: parent
        anchors.margins: card.padding
    }
}
