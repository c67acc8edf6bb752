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
        objectName: "paneContent"
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
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                text: pane.viewModel.selectedDeviceName.length > 0 ? pane.viewModel.selectedDeviceName
                                                                    : Texts.texts.deviceSelectorPrompt
                Accessible.role: Accessible.ButtonMenu
                Accessible.name: text
                onClicked: deviceMenu.open()
                background: GlassCapsule { hovered: deviceButton.hovered; pressed: deviceButton.pressed || deviceMenu.visible; radius: 9 }
                FocusRing {}
                contentItem: RowLayout {
                    spacing: 8
                    SymbolIcon { symbol: "ipod"; size: 15; color: Theme.accent; Layout.leftMargin: 10 }
                    Text {
                        Layout.fillWidth: true
                        text: deviceButton.text
                        elide: Text.ElideRight
                        color: Theme.primaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.bodyText
                        font.weight: Font.Medium
                    }
                    SymbolIcon { symbol: "chevron.down"; size: 11; color: Theme.secondaryText; Layout.rightMargin: 10 }
                }
                GlassMenu {
                    id: deviceMenu
                    objectName: "deviceMenu"
                    y: deviceButton.height + 4
                    GlassMenuItem {
                        visible: pane.viewModel.detectedDeviceNames.length === 0
                        height: visible ? implicitHeight : 0
                        enabled: false
                        text: Texts.texts.deviceSelectorNoIpod
                    }
                    Instantiator {
                        model: pane.viewModel.detectedDeviceNames
                        delegate: GlassMenuItem {
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
                    // What the selected device's Rockbox keeps of a playlist.
                    GlassMenuItem {
                        objectName: "deviceRockboxItem"
                        visible: pane.viewModel.selectedDeviceIndex >= 0
                        height: visible ? implicitHeight : 0
                        enabled: false
                        text: Texts.format(Texts.languageCode,
                                           pane.viewModel.rockboxTarget.length > 0 ? "deviceRockbox" : "deviceRockboxUnknown",
                                           pane.viewModel.playlistLimit, pane.viewModel.rockboxTarget)
                    }
                    GlassMenuItem {
                        objectName: "copyStatisticsItem"
                        visible: pane.viewModel.selectedDeviceIndex >= 0
                        height: visible ? implicitHeight : 0
                        text: Texts.texts.statisticsMenuItem
                        symbol: "heart.fill"
                        onTriggered: pane.viewModel.prepareStatisticsCopy()
                    }
                    GlassMenuSeparator {}
                    GlassMenuItem {
                        text: Texts.texts.deviceSelectorOpenFolder
                        symbol: "folder.badge.plus"
                        onTriggered: pane.viewModel.pickCustomFolder()
                    }
                    GlassMenuItem {
                        text: Texts.texts.deviceSelectorRescan
                        symbol: "arrow.clockwise"
                        onTriggered: pane.viewModel.rescanDevices()
                    }
                }
            }
            AbstractButton {
                id: optionsButton
                objectName: "exportOptionsButton"
                implicitWidth: 34
                implicitHeight: 34
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                Accessible.role: Accessible.Button
                Accessible.name: Texts.texts.exportOptionsTooltip
                onClicked: pane.viewModel.showExportSettings = true
                background: GlassCapsule { hovered: optionsButton.hovered; pressed: optionsButton.pressed; radius: 9 }
                FocusRing {}
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
                focusPolicy: Qt.StrongFocus
                text: pane.viewModel.allFilesSelected ? Texts.texts.deselectAll
                                                      : Texts.format(Texts.languageCode, "selectAll", pane.viewModel.fileCount)
                Accessible.role: Accessible.CheckBox
                Accessible.checkable: true
                Accessible.checked: pane.viewModel.allFilesSelected
                Accessible.name: text
                onClicked: pane.viewModel.toggleAllPlaylistFilesSelection()
                FocusRing { outset: 2; radius: 5 }
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
                        text: selectAllFiles.text
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
                focusPolicy: Qt.StrongFocus
                text: Texts.texts.deleteButton
                Accessible.name: text
                onClicked: pane.viewModel.stageSelectedFiles()
                FocusRing { outset: 2; radius: 5 }
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
            Layout.preferredHeight: Math.max(44, bannerRow.implicitHeight + 12)
            visible: pane.viewModel.pendingActionCount > 0
            radius: 10
            color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.12)
            border.width: 1
            border.color: Qt.rgba(Theme.orange.r, Theme.orange.g, Theme.orange.b, 0.35)
            RowLayout {
                id: bannerRow
                anchors.fill: parent
                anchors.leftMargin: 10
                anchors.rightMargin: 6
                spacing: 8
                SymbolIcon { symbol: "exclamationmark.circle.fill"; size: 15; color: Theme.orange }
                Text {
                    objectName: "pendingBannerText"
                    Layout.fillWidth: true
                    text: Texts.format(Texts.languageCode, "pendingDeleteBanner", pane.viewModel.pendingActionCount)
                    wrapMode: Text.WordWrap
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
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
                    Accessible.name: text
                    onClicked: pane.viewModel.discardPendingActions()
                    FocusRing { outset: 1 }
                }
                Button {
                    id: applyButton
                    objectName: "applyChangesButton"
                    text: Texts.format(Texts.languageCode, "applyChangesButton", pane.viewModel.pendingActionCount)
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                    font.weight: Font.DemiBold
                    Accessible.name: text
                    onClicked: pane.viewModel.requestApplyPendingChanges()
                    FocusRing { outset: 2 }
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
        RockboxFileList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            viewModel: pane.viewModel
        }

        // Footer: the product and the language menu, then the credit line, which moves under them when the
        // pane is too narrow for one line.
        Rectangle { Layout.fillWidth: true; Layout.preferredHeight: 1; color: Theme.divider }
        GridLayout {
            id: footer
            objectName: "footer"
            Layout.fillWidth: true
            // Measured on the pane, not on itself: a two-column grid is never narrower than its line.
            columns: parent.width >= brand.implicitWidth + credits.implicitWidth + columnSpacing ? 2 : 1
            columnSpacing: 10
            rowSpacing: 4
            RowLayout {
                id: brand
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
                    id: languageButton
                    objectName: "languageMenuButton"
                    implicitWidth: implicitContentWidth + leftPadding + rightPadding
                    implicitHeight: Math.max(22, implicitContentHeight + topPadding + bottomPadding)
                    focusPolicy: Qt.StrongFocus
                    hoverEnabled: true
                    Accessible.role: Accessible.ButtonMenu
                    Accessible.name: Texts.texts.languageSectionTitle
                    onClicked: languageMenu.open()
                    // Never over the open menu, which comes up where the tip would.
                    ToolTip.visible: hovered && !languageMenu.visible
                    ToolTip.delay: 500
                    ToolTip.text: Texts.texts.languageSectionTitle
                    FocusRing { outset: 2; radius: 5 }
                    contentItem: Row {
                        spacing: 4
                        SymbolIcon { symbol: "globe"; size: 12; color: Theme.secondaryText; anchors.verticalCenter: parent.verticalCenter }
                        Text {
                            text: Texts.languageCode.toUpperCase()
                            color: languageButton.hovered ? Theme.primaryText : Theme.secondaryText
                            font.family: Theme.fontFamily
                            font.pixelSize: Theme.smallText
                            font.weight: Font.DemiBold
                            anchors.verticalCenter: parent.verticalCenter
                        }
                    }
                    GlassMenu {
                        id: languageMenu
                        objectName: "languageMenu"
                        y: -height - 4
                        Repeater {
                            model: Texts.languages
                            GlassMenuItem {
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
            }
            Row {
                id: credits
                Layout.alignment: footer.columns === 2 ? Qt.AlignRight | Qt.AlignVCenter : Qt.AlignLeft | Qt.AlignVCenter
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
                LinkButton {
                    objectName: "creditLink"
                    text: "the Kestrune contributors"
                    underline: true
                    target: AppInfo.homePage
                    anchors.verticalCenter: parent.verticalCenter
                }
                Item { width: 6; height: 1 }
                LinkButton {
                    objectName: "coffeeLink"
                    text: Texts.texts.footerCoffee
                    symbol: "cup.and.saucer.fill"
                    symbolColor: Theme.orange
                    target: AppInfo.homePage
                    anchors.verticalCenter: parent.verticalCenter
                }
            }
        }
    }
}
