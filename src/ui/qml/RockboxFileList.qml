import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// The playlist files on the iPod, or the empty state when there are none. One stop in the Tab chain.
Item {
    id: pane

    required property var viewModel

    ListView {
        id: list
        objectName: "fileList"
        anchors.fill: parent
        visible: pane.viewModel.fileCount > 0
        clip: true
        spacing: 2
        model: pane.viewModel.currentDirectoryItemsModel
        boundsBehavior: Flickable.StopAtBounds
        // Delegates are made as they come into view: one made ahead of time outlives a list that
        // shrinks meanwhile, and Qt then warns while cancelling it.
        cacheBuffer: 0
        ScrollBar.vertical: ScrollBar {}
        // One stop in the Tab chain: the arrows move between files, Space ticks one, Return clicks
        // it, and the menu key opens its context menu.
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: Texts.texts.rockboxHeader
        onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0
        Keys.onSpacePressed: if (currentItem) pane.viewModel.toggleFileItemSelection(currentItem.fileId)
        Keys.onReturnPressed: event => pane.viewModel.clickFileRow(currentIndex, event.modifiers)
        Keys.onEnterPressed: event => pane.viewModel.clickFileRow(currentIndex, event.modifiers)
        Keys.onPressed: event => {
            const menuKey = event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier))
            if (menuKey && currentItem) {
                currentItem.openContextMenu()
                event.accepted = true
            } else if (event.key === Qt.Key_A && (event.modifiers & Qt.ControlModifier)) {
                pane.viewModel.selectAllPlaylistFiles()
                event.accepted = true
            } else if ((event.key === Qt.Key_Up || event.key === Qt.Key_Down) && (event.modifiers & Qt.ShiftModifier)) {
                // Shift+arrows extend the selection from the current file, as Shift-click does.
                const row = Math.max(0, Math.min(count - 1, currentIndex + (event.key === Qt.Key_Down ? 1 : -1)))
                if (currentItem && !currentItem.isSelected)
                    pane.viewModel.clickFileRow(currentIndex, Qt.NoModifier)
                ListKeys.moveTo(list, row)
                pane.viewModel.clickFileRow(row, Qt.ShiftModifier)
                event.accepted = true
            } else {
                const row = ListKeys.destination(list, event.key)
                if (row >= 0) {
                    ListKeys.moveTo(list, row)
                    event.accepted = true
                }
            }
        }
        delegate: RockboxFileItemRow {
            width: list.width
            viewModel: pane.viewModel
        }
    }
    ColumnLayout {
        anchors.centerIn: parent
        width: parent.width - 40
        visible: pane.viewModel.fileCount === 0
        spacing: 6
        SymbolIcon {
            Layout.alignment: Qt.AlignHCenter
            symbol: "music.note.list"
            size: 42
            color: Theme.secondaryText
            opacity: 0.7
        }
        Text {
            horizontalAlignment: Text.AlignHCenter
            text: Texts.texts.rockboxEmptyTitle
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
            font.weight: Font.DemiBold
        }
        Text {
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: Texts.texts.rockboxEmptySubtitle
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.smallText
        }
    }
}
