import QtQuick
import QtQuick.Controls
import Kestrune

// A menu entry. Every entry keeps a column for its icon or check mark, so the texts of a menu line up;
// a destructive entry is drawn in red.
MenuItem {
    id: entry

    property string symbol
    property bool destructive: false
    readonly property color tint: !enabled ? Theme.secondaryText : (destructive ? Theme.red : Theme.primaryText)

    implicitWidth: leftPadding + contentItem.implicitWidth + rightPadding
    implicitHeight: 30
    leftPadding: 10
    rightPadding: 16
    spacing: 8
    leftInset: 0
    rightInset: 0
    font.family: Theme.fontFamily
    font.pixelSize: Theme.bodyText
    Accessible.name: text

    indicator: null
    arrow: null
    contentItem: Item {
        implicitWidth: 14 + entry.spacing + label.implicitWidth
        implicitHeight: label.implicitHeight
        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            symbol: entry.checkable ? (entry.checked ? "checkmark" : "") : entry.symbol
            size: 14
            color: entry.tint
        }
        Text {
            id: label
            objectName: "menuItemLabel"
            x: 14 + entry.spacing
            anchors.verticalCenter: parent.verticalCenter
            text: entry.text
            font: entry.font
            color: entry.tint
        }
    }
    background: Rectangle {
        radius: 6
        color: !entry.highlighted || !entry.enabled ? "transparent"
             : (entry.destructive ? Qt.rgba(Theme.red.r, Theme.red.g, Theme.red.b, 0.12)
                                  : Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.14))
    }
}
