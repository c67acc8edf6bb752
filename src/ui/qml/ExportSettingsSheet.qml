import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// The export options, edited in place on the model, and the button that starts the run.
Popup {
    id: sheet

    required property var viewModel

    objectName: "exportSettingsSheet"
    width: 480
    height: 540
    anchors.centerIn: Overlay.overlay
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    padding: 0
    Overlay.modal: Rectangle { color: Qt.rgba(0.1, 0.12, 0.18, 0.25) }

    background: GlassCard {
        cornerRadius: 16
        padding: 0
        // A sheet reads over the panes, so its glass is nearly opaque.
        Rectangle { anchors.fill: parent; radius: 16; color: Qt.rgba(0.98, 0.985, 1, 0.9) }
    }

    component SectionTitle: Text {
        color: Theme.primaryText
        font.family: Theme.fontFamily
        font.pixelSize: 13
        font.weight: Font.DemiBold
    }

    component OptionToggle: RowLayout {
        id: toggle
        property string title
        property string description
        property bool checked
        signal toggled(bool checked)
        Layout.fillWidth: true
        spacing: 10
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: toggle.title
                wrapMode: Text.WordWrap
                color: Theme.primaryText
                font.family: Theme.fontFamily
                font.pixelSize: 12
                font.weight: Font.Medium
            }
            Text {
                Layout.fillWidth: true
                text: toggle.description
                wrapMode: Text.WordWrap
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: 11
            }
        }
        GlassSwitch {
            Accessible.name: toggle.title
            checked: toggle.checked
            onToggled: toggle.toggled(checked)
            Layout.alignment: Qt.AlignTop
        }
    }

    contentItem: ColumnLayout {
        spacing: 10

        ColumnLayout {
            Layout.fillWidth: true
            Layout.topMargin: 18
            Layout.leftMargin: 22
            Layout.rightMargin: 22
            spacing: 2
            RowLayout {
                spacing: 8
                SymbolIcon { symbol: "slider.horizontal.3"; size: 18; color: Theme.accent }
                Text {
                    text: Texts.texts.exportSettingsTitle
                    color: Theme.primaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: 20
                    font.weight: Font.Bold
                }
            }
            Text {
                text: Texts.texts.exportSettingsSubtitle
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
            }
        }

        ScrollView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            clip: true

            ColumnLayout {
                width: parent.width
                spacing: 12

                ColumnLayout {
                    Layout.fillWidth: true
                    Layout.leftMargin: 22
                    Layout.rightMargin: 22
                    spacing: 6
                    SectionTitle { text: Texts.texts.destinationFolderTitle }
                    RowLayout {
                        Layout.fillWidth: true
                        spacing: 8
                        Rectangle {
                            Layout.fillWidth: true
                            Layout.preferredHeight: 32
                            radius: 8
                            color: Theme.glassFillStrong
                            border.width: 1
                            border.color: Qt.rgba(1, 1, 1, 0.9)
                            RowLayout {
                                anchors.fill: parent
                                anchors.leftMargin: 10
                                anchors.rightMargin: 10
                                spacing: 8
                                SymbolIcon { symbol: "folder.fill"; size: 13; color: Theme.accent }
                                Text {
                                    objectName: "destinationPath"
                                    Layout.fillWidth: true
                                    text: sheet.viewModel.destinationFolderPath.length > 0 ? sheet.viewModel.destinationFolderPath
                                                                                           : Texts.texts.noFolderSelected
                                    elide: Text.ElideMiddle
                                    color: sheet.viewModel.destinationFolderPath.length > 0 ? Theme.primaryText : Theme.secondaryText
                                    font.family: Theme.fontFamily
                                    font.pixelSize: Theme.smallText
                                }
                            }
                        }
                        Button {
                            id: change
                            text: Texts.texts.changeButton
                            font.family: Theme.fontFamily
                            font.pixelSize: Theme.smallText
                            onClicked: sheet.viewModel.pickDestinationFolder()
                            Accessible.name: text
                            FocusRing { outset: 2 }
                            background: Rectangle {
                                implicitHeight: 32
                                radius: 8
                                color: change.pressed ? Qt.rgba(1, 1, 1, 0.95) : Qt.rgba(1, 1, 1, 0.75)
                                border.width: 1
                                border.color: Qt.rgba(0, 0, 0, 0.12)
                            }
                        }
                    }
                }

                ColumnLayout {
                    Layout.fillWidth: true
                    Layout.leftMargin: 22
                    Layout.rightMargin: 22
                    spacing: 7
                    SectionTitle { text: Texts.texts.formattingSectionTitle }
                    OptionToggle {
                        title: Texts.texts.extendedM3UTitle
                        description: Texts.texts.extendedM3UDesc
                        checked: sheet.viewModel.extendedM3U
                        onToggled: on => sheet.viewModel.extendedM3U = on
                    }
                    OptionToggle {
                        title: Texts.texts.m3u8Title
                        description: Texts.texts.m3u8Desc
                        checked: sheet.viewModel.useM3U8Extension
                        onToggled: on => sheet.viewModel.useM3U8Extension = on
                    }
                    OptionToggle {
                        title: Texts.texts.sanitizeTitle
                        description: Texts.texts.sanitizeDesc
                        checked: sheet.viewModel.sanitizeFilenames
                        onToggled: on => sheet.viewModel.sanitizeFilenames = on
                    }
                    OptionToggle {
                        title: Texts.texts.cleanDotFilesTitle
                        description: Texts.texts.cleanDotFilesDesc
                        checked: sheet.viewModel.cleanDotFiles
                        onToggled: on => sheet.viewModel.cleanDotFiles = on
                    }
                    OptionToggle {
                        objectName: "mirrorToggle"
                        title: Texts.texts.mirrorTitle
                        description: Texts.texts.mirrorDesc
                        checked: sheet.viewModel.removeDeletedPlaylists
                        onToggled: on => sheet.viewModel.removeDeletedPlaylists = on
                    }
                    OptionToggle {
                        objectName: "albumArtToggle"
                        title: Texts.texts.albumArtTitle
                        description: Texts.texts.albumArtDesc
                        checked: sheet.viewModel.exportAlbumArt
                        onToggled: on => sheet.viewModel.exportAlbumArt = on
                    }
                }

                ColumnLayout {
                    Layout.fillWidth: true
                    Layout.leftMargin: 22
                    Layout.rightMargin: 22
                    spacing: 6
                    SectionTitle { text: Texts.texts.customPrefixTitle }
                    TextField {
                        objectName: "prefixField"
                        Accessible.name: Texts.texts.customPrefixTitle
                        Layout.fillWidth: true
                        Layout.preferredHeight: 30
                        background: Rectangle {
                            radius: 7
                            color: Qt.rgba(1, 1, 1, 0.8)
                            border.width: 1
                            border.color: parent.activeFocus ? Theme.accent : Qt.rgba(0, 0, 0, 0.12)
                        }
                        placeholderText: Texts.texts.customPrefixPlaceholder
                        text: sheet.viewModel.customPathPrefix
                        onTextEdited: sheet.viewModel.customPathPrefix = text
                        font.family: Theme.fontFamily
                        font.pixelSize: 12
                    }
                    Text {
                        text: Texts.texts.customPrefixDesc
                        color: Theme.secondaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                    }
                    Text {
                        objectName: "prefixProblem"
                        Layout.fillWidth: true
                        visible: sheet.viewModel.prefixControlCharacter !== ""
                        text: Texts.format(Texts.languageCode, "prefixControlCharacter", 0,
                                           sheet.viewModel.prefixControlCharacter)
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text
                        wrapMode: Text.Wrap
                        color: "#d70015"
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                    }
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.leftMargin: 22
            Layout.rightMargin: 22
            Layout.bottomMargin: 16
            spacing: 10
            Item { Layout.fillWidth: true }
            Button {
                id: cancel
                objectName: "sheetCancelButton"
                text: Texts.texts.cancelButton
                font.family: Theme.fontFamily
                font.pixelSize: 12
                onClicked: sheet.close()
                Accessible.name: text
                FocusRing { outset: 2 }
                background: Rectangle {
                    implicitHeight: 30
                    radius: height / 2
                    color: cancel.pressed ? Qt.rgba(1, 1, 1, 0.9) : Qt.rgba(1, 1, 1, 0.6)
                    border.width: 1
                    border.color: Qt.rgba(0, 0, 0, 0.08)
                }
            }
            Button {
                id: exportButton
                objectName: "saveAndExportButton"
                enabled: sheet.viewModel.tickedPlaylistCount > 0 && sheet.viewModel.prefixControlCharacter === ""
                text: Texts.format(Texts.languageCode, "saveAndExport", sheet.viewModel.tickedPlaylistCount)
                font.family: Theme.fontFamily
                font.pixelSize: 12
                font.weight: Font.DemiBold
                Accessible.name: text
                FocusRing { outset: 2 }
                onClicked: {
                    sheet.close()
                    sheet.viewModel.convertSelectedPlaylists()
                }
                contentItem: Text {
                    text: exportButton.text
                    font: exportButton.font
                    color: "white"
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    implicitHeight: 30
                    radius: 8
                    color: exportButton.enabled ? (exportButton.pressed ? "#0062d1" : Theme.accent) : "#c7c7cc"
                }
            }
        }
    }
}
