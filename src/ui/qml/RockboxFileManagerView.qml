import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// The left pane: device menu and tools, the playlist files on the iPod with their staged deletions, and
// the footer with the language menu.
Item {
    id: pane

    required property var viewModel

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 16
        spacing: 10

        // Device menu and the export options button.
        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            AbstractButton {
                id: deviceButton
                objectName: "deviceMenuButton"
                Layout.fillWidth: true
                implicitHeight: 34
                onClicked: deviceMenu.open()
                background: GlassCapsule { hovered: deviceButton.hovered; radius: 9 }
                contentItem: RowLayout {
                    spacing: 8
                    SymbolIcon { symbol: "ipod"; size: 15; color: Theme.accent; Layout.leftMargin: 10 }
                    Text {
                        Layout.fillWidth: true
                        text: pane.viewModel.selectedDeviceName.length > 0 ? pane.viewModel.selectedDeviceName
                                                                            : Texts.texts.deviceSelectorPrompt
                        elide: Text.ElideRight
                        color: Theme.primaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.bodyText
                        font.weight: Font.Medium
                    }
                    SymbolIcon { symbol: "chevron.down"; size: 11; color: Theme.secondaryText; Layout.rightMargin: 10 }
                }
                Menu {
                    id: deviceMenu
                    objectName: "deviceMenu"
                    y: deviceButton.height + 4
                    MenuItem {
                        visible: pane.viewModel.detectedDeviceNames.length === 0
                        height: visible ? implicitHeight : 0
                        enabled: false
                        text: Texts.texts.deviceSelectorNoIpod
                    }
                    Instantiator {
                        model: pane.viewModel.detectedDeviceNames
                        delegate: MenuItem {
                            required property int index
                            required property string modelData
                            text: modelData
                            checkable: true
                            checked: index === pane.viewModel.selectedDeviceIndex
                            onTriggered: pane.viewModel.selectDevice(index)
                        }
                        onObjectAdded: (index, object) => deviceMenu.insertItem(index + 1, object)
                        onObjectRemoved: (index, object) => deviceMenu.removeItem(object)
                    }
                    MenuSeparator {}
                    MenuItem {
                        text: Texts.texts.deviceSelectorOpenFolder
                        icon.source: "icons/folder-plus.svg"
                        onTriggered: pane.viewModel.pickCustomFolder()
                    }
                    MenuItem {
                        text: Texts.texts.deviceSelectorRescan
                        icon.source: "icons/arrow-clockwise.svg"
                        onTriggered: pane.viewModel.rescanDevices()
                    }
                }
            }
            AbstractButton {
                id: optionsButton
                objectName: "exportOptionsButton"
                implicitWidth: 34
                implicitHeight: 34
                onClicked: pane.viewModel.showExportSettings = true
                background: GlassCapsule { hovered: optionsButton.hovered; radius: 9 }
                contentItem: Item {
                    SymbolIcon { anchors.centerIn: parent; symbol: "slider.horizontal.3"; size: 15; color: Theme.secondaryText }
                }
                ToolTip.visible: hovered
                ToolTip.delay: 500
                ToolTip.text: Texts.texts.exportOptionsTooltip
            }
        }

        // Header.
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            RowLayout {
                spacing: 8
                SymbolIcon { symbol: "music.note.list"; size: 16; color: Theme.purple }
                Text {
                    objectName: "rockboxHeaderLabel"
                    text: Texts.texts.rockboxHeader
                    color: Theme.primaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.headlineText
                    font.weight: Font.DemiBold
                }
            }
            Text {
                text: Texts.format(Texts.languageCode, "totalCount", pane.viewModel.fileCount)
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
            }
        }

        // Selection bar.
        RowLayout {
            Layout.fillWidth: true
            visible: pane.viewModel.fileCount > 0
            spacing: 8
            AbstractButton {
                implicitWidth: implicitContentWidth + leftPadding + rightPadding
                implicitHeight: Math.max(22, implicitContentHeight + topPadding + bottomPadding)
                id: selectAllFiles
                objectName: "selectAllFilesButton"
                onClicked: pane.viewModel.toggleAllPlaylistFilesSelection()
                contentItem: Row {
                    spacing: 5
                    SymbolIcon {
                        objectName: "selectAllFilesIcon"
                        symbol: pane.viewModel.allFilesSelected ? "checkmark.square.fill"
                                                               : (pane.viewModel.someFilesSelected ? "minus.square.fill" : "square")
                        size: 13
                        color: pane.viewModel.selectedFileCount > 0 ? Theme.accent : Theme.secondaryText
                        anchors.verticalCenter: parent.verticalCenter
                    }
                    Text {
                        text: pane.viewModel.allFilesSelected ? Texts.texts.deselectAll
                                                              : Texts.format(Texts.languageCode, "selectAll", pane.viewModel.fileCount)
                        color: Theme.primaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                        font.weight: Font.Medium
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
            Item { Layout.fillWidth: true }
            AbstractButton {
                implicitWidth: implicitContentWidth + leftPadding + rightPadding
                implicitHeight: Math.max(22, implicitContentHeight + topPadding + bottomPadding)
                objectName: "deleteSelectedButton"
                visible: pane.viewModel.selectedFileCount > 0
                onClicked: pane.viewModel.stageSelectedFiles()
                contentItem: Row {
                    spacing: 5
                    SymbolIcon { symbol: "trash"; size: 12; color: Theme.red; anchors.verticalCenter: parent.verticalCenter }
                    Text {
                        text: Texts.texts.deleteButton
                        color: Theme.red
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                        font.weight: Font.DemiBold
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
        }

        // Staged deletions.
        Rectangle {
            objectName: "pendingBanner"
            Layout.fillWidth: true
            Layout.preferredHeight: 44
            visible: pane.viewModel.pendingActionCount > 0
            radius: 10
            color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.12)
            border.width: 1
            border.color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.35)
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 10
                anchors.rightMargin: 6
                spacing: 8
                SymbolIcon { symbol: "exclamationmark.circle.fill"; size: 15; color: Theme.orange }
                Text {
                    objectName: "pendingBannerText"
                    Layout.fillWidth: true
                    text: Texts.format(Texts.languageCode, "pendingDeleteBanner", pane.viewModel.pendingActionCount)
                    elide: Text.ElideRight
                    color: Theme.primaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    font.weight: Font.Medium
                }
                Button {
                    objectName: "cancelPendingButton"
                    flat: true
                    text: Texts.texts.cancelButton
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    onClicked: pane.viewModel.discardPendingActions()
                }
                Button {
                    id: applyButton
                    objectName: "applyChangesButton"
                    text: Texts.format(Texts.languageCode, "applyChangesButton", pane.viewModel.pendingActionCount)
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    font.weight: Font.DemiBold
                    onClicked: pane.viewModel.applyPendingChanges()
                    contentItem: Text {
                        text: applyButton.text
                        font: applyButton.font
                        color: "white"
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                    }
                    background: Rectangle { radius: 7; color: applyButton.pressed ? "#1e8a3a" : Theme.green; implicitHeight: 28 }
                }
            }
        }

        // The files, or the empty state.
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true
            ListView {
                id: list
                objectName: "fileList"
                anchors.fill: parent
                visible: pane.viewModel.fileCount > 0
                clip: true
                spacing: 2
                model: pane.viewModel.currentDirectoryItemsModel
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar {}
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
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    text: Texts.texts.rockboxEmptyTitle
                    color: Theme.primaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.bodyText
                    font.weight: Font.DemiBold
                }
                Text {
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: Texts.texts.rockboxEmptySubtitle
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                }
            }
        }

        // Footer.
        Rectangle { Layout.fillWidth: true; Layout.preferredHeight: 1; color: Theme.divider }
        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            Text {
                text: "Kestrune"
                color: Theme.secondaryText
                opacity: 0.85
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
                font.weight: Font.DemiBold
            }
            AbstractButton {
                implicitWidth: implicitContentWidth + leftPadding + rightPadding
                implicitHeight: Math.max(22, implicitContentHeight + topPadding + bottomPadding)
                id: languageButton
                objectName: "languageMenuButton"
                onClicked: languageMenu.open()
                ToolTip.visible: hovered
                ToolTip.delay: 500
                ToolTip.text: Texts.texts.languageSectionTitle
                contentItem: Row {
                    spacing: 4
                    SymbolIcon { symbol: "globe"; size: 12; color: Theme.secondaryText; anchors.verticalCenter: parent.verticalCenter }
                    Text {
                        text: Texts.languageCode.toUpperCase()
                        color: Theme.secondaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                        font.weight: Font.DemiBold
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
                Menu {
                    id: languageMenu
                    objectName: "languageMenu"
                    y: -implicitHeight - 4
                    Repeater {
                        model: Texts.languages
                        MenuItem {
                            required property var modelData
                            objectName: "languageItem_" + modelData.code
                            text: modelData.flag + " " + modelData.displayName
                            checkable: true
                            checked: Texts.languageCode === modelData.code
                            onTriggered: Texts.setLanguage(modelData.code)
                        }
                    }
                }
            }
            Item { Layout.fillWidth: true }
            Row {
                spacing: 4
                Text {
                    text: Texts.texts.footerMadeWith
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    anchors.verticalCenter: parent.verticalCenter
                }
                SymbolIcon { symbol: "heart.fill"; size: 10; color: Theme.red; anchors.verticalCenter: parent.verticalCenter }
                Text {
                    text: Texts.texts.footerBy
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    text: "the Kestrune contributors"
                    color: Theme.accent
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    font.underline: true
                    anchors.verticalCenter: parent.verticalCenter
                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.PointingHandCursor
                        onClicked: Qt.openUrlExternally(AppInfo.homePage)
                    }
                }
            }
            Row {
                spacing: 4
                SymbolIcon { symbol: "cup.and.saucer.fill"; size: 11; color: Theme.orange; anchors.verticalCenter: parent.verticalCenter }
                Text {
                    text: Texts.texts.footerCoffee
                    color: Theme.accent
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    anchors.verticalCenter: parent.verticalCenter
                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.PointingHandCursor
                        onClicked: Qt.openUrlExternally(AppInfo.homePage)
                    }
                }
            }
        }
    }
}
