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

    function openContextMenu() { contextMenu.popup(row, 40, row.height / 2) }

    implicitHeight: 48
    objectName: "fileRow_" + name
    Accessible.role: Accessible.CheckBox
    Accessible.name: name
    Accessible.checkable: true
    Accessible.checked: isSelected

    GlassCapsule {
        anchors.fill: parent
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        isSelected: row.isSelected
        hovered: rowArea.containsMouse
        pressed: rowArea.pressed
    }
    FocusRing {
        shown: row.ListView.isCurrentItem && row.ListView.view.activeFocus
        outset: -1
        radius: 10
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

        // Both faces stay loaded and only swap, so the box changes in the frame of the click.
        Item {
            objectName: "checkBox"
            implicitWidth: 15
            implicitHeight: 15
            SymbolIcon { visible: row.isSelected; symbol: "checkmark.square.fill"; size: 15; color: Theme.accent }
            SymbolIcon { visible: !row.isSelected; symbol: "square"; size: 15; color: Theme.secondaryText }
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
                objectName: "fileDetails"
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
    GlassMenu {
        id: contextMenu
        objectName: "fileContextMenu"
        GlassMenuItem {
            objectName: "showInFinderItem"
            text: Texts.texts.showInFinder
            onTriggered: row.viewModel.showFileRowInFileManager(row.index)
        }
        GlassMenuSeparator {}
        GlassMenuItem {
            objectName: "deleteFromRockboxItem"
            text: Texts.texts.deleteFromRockbox
            symbol: "trash"
            destructive: true
            onTriggered: row.viewModel.stageFileRow(row.index)
        }
    }
}
