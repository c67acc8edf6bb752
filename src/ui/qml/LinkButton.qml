import QtQuick
import QtQuick.Controls
import Kestrune

// A text link in the footer, optionally after an icon; reachable from the keyboard like any button.
AbstractButton {
    id: link

    property url target
    property string symbol
    property color symbolColor: Theme.accent
    property bool underline: false

    implicitWidth: implicitContentWidth
    implicitHeight: Math.max(18, implicitContentHeight)
    padding: 0
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Link
    Accessible.name: text
    onClicked: Qt.openUrlExternally(target)

    contentItem: Row {
        spacing: 4
        SymbolIcon {
            visible: link.symbol.length > 0
            symbol: link.symbol
            size: 11
            color: link.symbolColor
            anchors.verticalCenter: parent.verticalCenter
        }
        Text {
            text: link.text
            color: link.pressed ? Qt.darker(Theme.accent, 1.3) : Theme.accent
            font.family: Theme.fontFamily
            font.pixelSize: Theme.smallText
            font.underline: link.underline || link.hovered
            anchors.verticalCenter: parent.verticalCenter
        }
    }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
    FocusRing { outset: 2; radius: 4 }
}
