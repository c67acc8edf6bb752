import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// One playlist file: check box, icon tile, name with size and date, and a context menu.
Item {
    id: row

    required property int index
    required property string fileId
    required property string name
    required property string sizeText
    required property string dateText
    required property bool isSelected
    required property var viewModel

    implicitHeight: 48
    objectName: "fileRow_" + name

    GlassCapsule {
        anchors.fill: parent
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        isSelected: row.isSelected
        hovered: rowArea.containsMouse
    }
    MouseArea {
        id: rowArea
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: mouse => {
            if (mouse.button === Qt.RightButton)
                contextMenu.popup()
            else
                row.viewModel.clickFileRow(row.index, mouse.modifiers)
        }
    }
    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        spacing: 10

        SymbolIcon {
            objectName: "checkBox"
            symbol: row.isSelected ? "checkmark.square.fill" : "square"
            size: 15
            color: row.isSelected ? Theme.accent : Theme.secondaryText
            MouseArea {
                anchors.fill: parent
                anchors.margins: -6
                onClicked: row.viewModel.toggleFileItemSelection(row.fileId)
            }
        }
        Rectangle {
            Layout.preferredWidth: 28
            Layout.preferredHeight: 28
            radius: 7
            color: Qt.rgba(Theme.purple.r, Theme.purple.g, Theme.purple.b, 0.16)
            SymbolIcon {
                anchors.centerIn: parent
                symbol: "music.note"
                size: 14
                color: Theme.purple
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            Text {
                Layout.fillWidth: true
                text: row.name
                elide: Text.ElideMiddle
                color: Theme.primaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.bodyText
                font.weight: Font.Medium
            }
            Text {
                Layout.fillWidth: true
                visible: text.length > 0
                text: [row.sizeText, row.dateText].filter(part => part.length > 0).join("  •  ")
                elide: Text.ElideRight
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
            }
        }
    }
    Menu {
        id: contextMenu
        MenuItem {
            text: Texts.texts.showInFinder
            onTriggered: row.viewModel.showFileRowInFileManager(row.index)
        }
        MenuSeparator {}
        MenuItem {
            text: Texts.texts.deleteFromRockbox
            icon.source: "icons/trash.svg"
            icon.color: Theme.red
            onTriggered: row.viewModel.stageFileRow(row.index)
        }
    }
}
