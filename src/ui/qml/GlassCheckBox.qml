import QtQuick
import QtQuick.Controls
import Kestrune

// A compact check box in the window's style.
CheckBox {
    id: box

    font.family: Theme.fontFamily
    font.pixelSize: Theme.smallText
    padding: 0
    spacing: 6

    indicator: Rectangle {
        implicitWidth: 14
        implicitHeight: 14
        x: box.leftPadding
        anchors.verticalCenter: parent.verticalCenter
        radius: 4
        color: box.checked ? Theme.accent : Qt.rgba(1, 1, 1, 0.8)
        border.width: 1
        border.color: box.checked ? Theme.accent : Qt.rgba(0, 0, 0, 0.25)
        SymbolIcon {
            anchors.centerIn: parent
            visible: box.checked
            symbol: "checkmark"
            size: 10
            color: "white"
        }
    }
    contentItem: Text {
        text: box.text
        font: box.font
        color: Theme.primaryText
        leftPadding: box.indicator.width + box.spacing
        verticalAlignment: Text.AlignVCenter
    }
    FocusRing { outset: 2; radius: 5 }
}
