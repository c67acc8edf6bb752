import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// What each exported playlist became. A finished view that the window does not present yet; its texts
// are fixed Italian in both interface languages.
Popup {
    id: sheet

    required property var viewModel
    signal revealDestination()

    readonly property var results: viewModel.exportResultSummaries
    readonly property int succeeded: results.filter(result => result.isSuccess).length
    readonly property int updated: results.filter(result => result.isSuccess && result.isUpdate).length
    readonly property bool allSucceeded: succeeded === results.length

    width: 460
    anchors.centerIn: Overlay.overlay
    modal: true
    padding: 22
    background: GlassCard { cornerRadius: 16; padding: 0 }
    onClosed: viewModel.showExportSummary = false

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
            text: sheet.succeeded + " playlist salvate (" + sheet.updated + " aggiornate)."
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
                            GlassBadge { visible: modelData.isUpdate; text: "Aggiornata"; color: Theme.green }
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
            Button { text: "Mostra in Finder"; onClicked: sheet.revealDestination() }
            Button { text: "Chiudi"; highlighted: true; onClicked: sheet.close() }
        }
    }
}
