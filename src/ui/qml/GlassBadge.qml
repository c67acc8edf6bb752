import QtQuick
import Kestrune

// A small coloured capsule with an optional icon before its text.
Item {
    id: badge

    property string text
    property string icon
    property color color: Theme.accent

    implicitWidth: row.implicitWidth + 14
    implicitHeight: row.implicitHeight + 5

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Qt.rgba(badge.color.r, badge.color.g, badge.color.b, 0.15)
        border.width: 1
        border.color: Qt.rgba(badge.color.r, badge.color.g, badge.color.b, 0.35)
    }
    Row {
        id: row
        anchors.centerIn: parent
        spacing: 3

        SymbolIcon {
            visible: badge.icon.length > 0
            symbol: badge.icon
            size: 9
            color: badge.color
            anchors.verticalCenter: parent.verticalCenter
        }
        Text {
            text: badge.text
            color: badge.color
            font.family: Theme.fontFamily
            font.pixelSize: 10
            font.weight: Font.Medium
            anchors.verticalCenter: parent.verticalCenter
        }
    }
}
