import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// What each exported playlist became, opened by itself when something failed. Its texts are fixed Italian
// in both interface languages.
Popup {
    id: sheet

    required property var viewModel
    signal revealDestination()

    readonly property var results: viewModel.exportResultSummaries
    readonly property int succeeded: results.filter(result => result.isSuccess).length
    readonly property int updated: results.filter(result => result.status === "updated").length
    readonly property int unchanged: results.filter(result => result.status === "unchanged").length
    readonly property bool allSucceeded: succeeded === results.length

    width: 460
    anchors.centerIn: Overlay.overlay
    modal: true
    padding: 22
    background: GlassCard { cornerRadius: 16; padding: 0 }
    // Focus goes back where it was when the sheet closes.
    property Item returnFocusTo: null
    onAboutToShow: returnFocusTo = Window.activeFocusItem
    onClosed: {
        viewModel.showExportSummary = false
        if (returnFocusTo)
            returnFocusTo.forceActiveFocus(Qt.OtherFocusReason)
    }
    onOpened: closeButton.forceActiveFocus(Qt.PopupFocusReason)
    focus: true

    contentItem: ColumnLayout {
        spacing: 10
        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            width: 58
            height: 58
            radius: 29
            color: Qt.rgba(1, 1, 1, 0.6)
            SymbolIcon {
                anchors.centerIn: parent
                symbol: sheet.allSucceeded ? "checkmark.circle.fill" : "exclamationmark.triangle.fill"
                size: 30
                color: sheet.allSucceeded ? Theme.green : Theme.orange
            }
        }
        Text {
            objectName: "summaryTitle"
            Layout.alignment: Qt.AlignHCenter
            text: sheet.allSucceeded ? "Esportazione Completata!" : "Esportazione Completata con Avvisi"
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: 18
            font.weight: Font.Bold
        }
        Text {
            objectName: "summarySubtitle"
            Layout.alignment: Qt.AlignHCenter
            text: sheet.succeeded + " playlist salvate (" + sheet.updated + " aggiornate)"
                  + (sheet.unchanged > 0 ? ", " + sheet.unchanged + " invariate" : "") + "."
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
        }
        GlassCard {
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(180, resultList.contentHeight + 2 * padding)
            padding: 8
            ListView {
                id: resultList
                anchors.fill: parent
                clip: true
                model: sheet.results
                delegate: RowLayout {
                    required property var modelData
                    width: resultList.width
                    spacing: 8
                    SymbolIcon {
                        Layout.alignment: Qt.AlignTop
                        symbol: modelData.isSuccess ? "checkmark.circle.fill" : "xmark.circle.fill"
                        size: 13
                        color: modelData.isSuccess ? Theme.green : Theme.red
                    }
                    ColumnLayout {
                        Layout.fillWidth: true
                        spacing: 1
                        RowLayout {
                            Text {
                                text: modelData.playlistName
                                color: Theme.primaryText
                                font.family: Theme.fontFamily
                                font.pixelSize: 12
                                font.weight: Font.Medium
                            }
                            GlassBadge { visible: modelData.status === "updated"; text: "Aggiornata"; color: Theme.green }
                            GlassBadge { visible: modelData.status === "unchanged"; text: "Invariata"; color: Theme.secondaryText }
                            GlassBadge { visible: modelData.status === "removed"; text: "Rimossa"; color: Theme.orange }
                            GlassBadge { visible: modelData.status === "kept"; text: "Mantenuta"; color: Theme.secondaryText }
                        }
                        Text {
                            Layout.fillWidth: true
                            text: modelData.trackCount + " brani • " + modelData.path
                            elide: Text.ElideMiddle
                            color: Theme.secondaryText
                            font.family: Theme.fontFamily
                            font.pixelSize: 11
                        }
                        Text {
                            Layout.fillWidth: true
                            visible: !modelData.isSuccess
                            text: modelData.errorMessage || ""
                            wrapMode: Text.WordWrap
                            color: Theme.red
                            font.family: Theme.fontFamily
                            font.pixelSize: 11
                        }
                    }
                }
            }
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            Button {
                // The sheet's texts are Italian in both languages; the file manager is the desktop's own.
                text: Texts.format("it", "showInFinder", 0)
                Accessible.name: text
                onClicked: sheet.revealDestination()
                FocusRing { outset: 2 }
            }
            Button {
                id: closeButton
                objectName: "summaryCloseButton"
                text: "Chiudi"
                highlighted: true
                Accessible.name: text
                onClicked: sheet.close()
                FocusRing { outset: 2 }
            }
        }
    }
}
