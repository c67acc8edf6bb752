import QtQuick
import Kestrune
import QtQuick.Layouts

// An orange note about something that will go wrong unless the user acts, such as a volume's settings.
Rectangle {
    id: banner

    property string text

    implicitHeight: label.implicitHeight + 16
    radius: 10
    color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.12)
    border.width: 1
    border.color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.35)
    Accessible.role: Accessible.StaticText
    Accessible.name: banner.text

    RowLayout {
        anchors.fill: parent
        anchors.margins: 8
        anchors.leftMargin: 10
        spacing: 8
        SymbolIcon { symbol: "exclamationmark.circle.fill"; size: 15; color: Theme.orange; Layout.alignment: Qt.AlignTop }
        Text {
            id: label
            Layout.fillWidth: true
            text: banner.text
            wrapMode: Text.WordWrap
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.smallText
        }
    }
}
