import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// The right pane: the library's playlists, searched, filtered, ticked and converted.
Item {
    id: pane

    required property var viewModel

    function focusSearch() {
        searchField.forceActiveFocus(Qt.ShortcutFocusReason)
        searchField.selectAll()
    }

    ColumnLayout {
        objectName: "paneContent"
        anchors.fill: parent
        anchors.margins: 16
        spacing: 10

        // Header: title and count.
        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            SymbolIcon { symbol: "music.note.list"; size: 16; color: Theme.accent }
            Text {
                objectName: "itunesHeaderLabel"
                text: Texts.texts.itunesHeader
                color: Theme.primaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.headlineText
                font.weight: Font.DemiBold
                Layout.fillWidth: true
                elide: Text.ElideRight
            }
            Text {
                text: Texts.format(Texts.languageCode, "totalCount", pane.viewModel.filteredPlaylistCount)
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
            }
        }

        // Search field with its clear button.
        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 32
            radius: 9
            color: Theme.glassFillStrong
            border.width: 1
            border.color: searchField.activeFocus ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.6)
                                                  : Qt.rgba(0, 0, 0, 0.08)
            FocusRing { shown: searchField.activeFocus; outset: 2; radius: 11 }
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 10
                anchors.rightMargin: 8
                spacing: 6
                SymbolIcon { symbol: "magnifyingglass"; size: 12; color: Theme.secondaryText }
                TextField {
                    id: searchField
                    objectName: "searchField"
                    Layout.fillWidth: true
                    placeholderText: Texts.texts.searchPlaceholder
                    placeholderTextColor: Theme.secondaryText
                    text: pane.viewModel.searchText
                    onTextEdited: pane.viewModel.searchText = text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.bodyText
                    color: Theme.primaryText
                    background: null
                    leftPadding: 0
                    rightPadding: 0
                    Accessible.name: Texts.texts.searchPlaceholder
                    // Escape empties the search first; with nothing typed it goes on to the window.
                    Keys.onEscapePressed: event => {
                        event.accepted = text.length > 0
                        pane.viewModel.searchText = ""
                    }
                }
                AbstractButton {
                    id: clearSearch
                    objectName: "clearSearchButton"
                    visible: pane.viewModel.searchText.length > 0
                    implicitWidth: 17
                    implicitHeight: 17
                    focusPolicy: Qt.StrongFocus
                    // The search field's clear button is its "cancel" button, as the platform calls it.
                    Accessible.name: Texts.texts.cancelButton
                    onClicked: pane.viewModel.searchText = ""
                    contentItem: Item {
                        SymbolIcon { anchors.centerIn: parent; symbol: "xmark.circle.fill"; size: 13; color: Theme.secondaryText }
                    }
                    FocusRing { outset: 1; radius: 9 }
                }
            }
        }

        // Filters and select-all.
        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            GlassCheckBox {
                objectName: "smartOnlyToggle"
                Accessible.name: text
                text: Texts.texts.filterSmartOnly
                checked: pane.viewModel.onlySmartPlaylists
                onToggled: pane.viewModel.onlySmartPlaylists = checked
            }
            Item { Layout.fillWidth: true }
            AbstractButton {
                implicitWidth: implicitContentWidth + leftPadding + rightPadding
                implicitHeight: Math.max(22, implicitContentHeight + topPadding + bottomPadding)
                id: selectAll
                objectName: "selectAllPlaylistsButton"
                readonly property int tickState: pane.viewModel.filteredTickState
                visible: pane.viewModel.filteredPlaylistCount > 0
                focusPolicy: Qt.StrongFocus
                text: tickState === 2 ? Texts.texts.deselectAll
                                      : Texts.format(Texts.languageCode, "selectAll", pane.viewModel.filteredPlaylistCount)
                Accessible.role: Accessible.CheckBox
                Accessible.checkable: true
                Accessible.checked: tickState === 2
                Accessible.name: text
                FocusRing { outset: 2; radius: 5 }
                onClicked: tickState === 2 ? pane.viewModel.deselectAllPlaylists() : pane.viewModel.selectAllPlaylists()
                contentItem: Row {
                    spacing: 5
                    SymbolIcon {
                        symbol: selectAll.tickState === 2 ? "checkmark.square.fill"
                                                      : (selectAll.tickState === 1 ? "minus.square.fill" : "square")
                        size: 13
                        color: selectAll.tickState > 0 ? Theme.accent : Theme.secondaryText
                        anchors.verticalCenter: parent.verticalCenter
                    }
                    Text {
                        text: selectAll.text
                        color: Theme.primaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.smallText
                        font.weight: Font.Medium
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
        }

        // Body: loading, empty, or the list.
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                anchors.centerIn: parent
                visible: pane.viewModel.isLoading
                spacing: 10
                BusyIndicator { Layout.alignment: Qt.AlignHCenter; running: parent.visible; scale: 1.2 }
                Text {
                    text: Texts.texts.readingDatabase
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.bodyText
                }
                Text {
                    objectName: "loadingPercentLabel"
                    Layout.alignment: Qt.AlignHCenter
                    text: Texts.format(Texts.languageCode, "loadingPercent", pane.viewModel.loadingPercent)
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                }
            }
            ColumnLayout {
                objectName: "itunesEmptyState"
                anchors.centerIn: parent
                width: parent.width - 40
                visible: !pane.viewModel.isLoading && pane.viewModel.filteredPlaylistCount === 0
                spacing: 6
                SymbolIcon {
                    Layout.alignment: Qt.AlignHCenter
                    symbol: "opticaldisc"
                    size: 42
                    color: Theme.secondaryText
                    opacity: 0.7
                }
                Text {
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    text: Texts.texts.itunesEmptyTitle
                    color: Theme.primaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.bodyText
                    font.weight: Font.DemiBold
                }
                Text {
                    objectName: "itunesEmptySubtitle"
                    Layout.fillWidth: true
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: pane.viewModel.libraryUnreadable ? Texts.texts.libraryUnreadable
                          : pane.viewModel.hasPlaylists ? Texts.texts.itunesEmptyNoResults : Texts.texts.itunesEmptySelectIpod
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.smallText
                }
            }
            ListView {
                id: list
                objectName: "playlistList"
                anchors.fill: parent
                visible: !pane.viewModel.isLoading && pane.viewModel.filteredPlaylistCount > 0
                clip: true
                spacing: 2
                model: pane.viewModel.filteredPlaylistsModel
                boundsBehavior: Flickable.StopAtBounds
                // Delegates are made as they come into view: one made ahead of time outlives a list that
                // shrinks meanwhile (a search, another device), and Qt then warns while cancelling it.
                cacheBuffer: 0
                ScrollBar.vertical: ScrollBar {}
                // One stop in the Tab chain: the arrows, Home, End and the page keys move between playlists.
                activeFocusOnTab: true
                keyNavigationEnabled: true
                Accessible.role: Accessible.List
                Accessible.name: Texts.texts.itunesHeader
                onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0
                // Space and Return tick or untick the current playlist alone; a click with the mouse still
                // selects as a click does.
                Keys.onSpacePressed: if (currentItem) pane.viewModel.togglePlaylistSelection(currentItem.playlistId)
                Keys.onReturnPressed: if (currentItem) pane.viewModel.togglePlaylistSelection(currentItem.playlistId)
                Keys.onEnterPressed: if (currentItem) pane.viewModel.togglePlaylistSelection(currentItem.playlistId)
                Keys.onPressed: event => {
                    const row = ListKeys.destination(list, event.key)
                    if (row >= 0) {
                        ListKeys.moveTo(list, row)
                        event.accepted = true
                    }
                }
                delegate: ITunesPlaylistRow {
                    width: list.width
                    viewModel: pane.viewModel
                }
            }
        }

        NoticeBanner {
            objectName: "incompleteLibraryNotice"
            readonly property var sizes: pane.viewModel.libraryIncompleteness
            Layout.fillWidth: true
            visible: sizes.claimed !== undefined
            text: !visible ? ""
                  : sizes.claimed > sizes.present
                    ? Texts.format(Texts.languageCode, "libraryCutShort", sizes.claimed, String(sizes.present))
                    : Texts.format(Texts.languageCode, "libraryDamaged", 0)
        }

        NoticeBanner {
            objectName: "utf8Notice"
            Layout.fillWidth: true
            visible: pane.viewModel.destinationLacksUtf8Names
            text: Texts.texts.volumeWithoutUtf8
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            ConvertButton {
                Layout.fillWidth: true
                viewModel: pane.viewModel
            }
            // The last run's results, on request (they open by themselves when something failed).
            Button {
                objectName: "resultsButton"
                visible: !pane.viewModel.isConverting && pane.viewModel.exportResultSummaries.length > 0
                text: Texts.texts.resultsButton
                Accessible.name: text
                onClicked: pane.viewModel.showExportSummary = true
                FocusRing { outset: 2 }
            }
            // A long run can be abandoned: what is not yet in place stays as it was on the device.
            Button {
                objectName: "cancelRunButton"
                visible: pane.viewModel.isConverting
                text: Texts.texts.cancelRun
                Accessible.name: text
                onClicked: pane.viewModel.cancelConversion()
                FocusRing { outset: 2 }
            }
        }
    }
}
