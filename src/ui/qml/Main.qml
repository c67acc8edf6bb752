import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Shapes

// The one window: both panes over a soft layered background, the export options sheet and the error alert.
ApplicationWindow {
    id: window

    required property var viewModel

    width: 1100
    height: 700
    minimumWidth: 920
    minimumHeight: 580
    visible: true
    title: "Kestrune"
    font.family: Theme.fontFamily

    background: Rectangle {
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0.0; color: "#e9eef7" }
            GradientStop { position: 1.0; color: "#f1eaf4" }
        }
        // Large soft colour fields give the translucent cards something to sit on.
        Shape {
            anchors.fill: parent
            opacity: 0.55
            ShapePath {
                strokeWidth: 0
                fillGradient: RadialGradient {
                    centerX: window.width * 0.18; centerY: window.height * 0.85
                    centerRadius: window.width * 0.45; focalX: centerX; focalY: centerY
                    GradientStop { position: 0.0; color: "#b8d4ff" }
                    GradientStop { position: 1.0; color: "transparent" }
                }
                startX: 0; startY: 0
                PathLine { x: window.width; y: 0 }
                PathLine { x: window.width; y: window.height }
                PathLine { x: 0; y: window.height }
                PathLine { x: 0; y: 0 }
            }
            ShapePath {
                strokeWidth: 0
                fillGradient: RadialGradient {
                    centerX: window.width * 0.85; centerY: window.height * 0.12
                    centerRadius: window.width * 0.4; focalX: centerX; focalY: centerY
                    GradientStop { position: 0.0; color: "#f3c9e8" }
                    GradientStop { position: 1.0; color: "transparent" }
                }
                startX: 0; startY: 0
                PathLine { x: window.width; y: 0 }
                PathLine { x: window.width; y: window.height }
                PathLine { x: 0; y: window.height }
                PathLine { x: 0; y: 0 }
            }
        }
    }

    ContentView {
        id: content
        anchors.fill: parent
        anchors.margins: 6
        viewModel: window.viewModel
    }

    ExportSettingsSheet {
        id: settingsSheet
        viewModel: window.viewModel
        onClosed: window.viewModel.showExportSettings = false
    }

    StatisticsCopyDialog {
        objectName: "statisticsDialog"
        viewModel: window.viewModel
    }

    ConfirmFilesDialog {
        objectName: "mirrorDialog"
        items: window.viewModel.mirrorConfirmation
        title: Texts.texts.mirrorConfirmTitle
        bodyText: Texts.texts.mirrorConfirmBody
        confirmText: Texts.texts.mirrorRemove
        onConfirmed: window.viewModel.confirmMirrorRemovals()
        onCancelled: window.viewModel.cancelMirrorRemovals()
    }

    ConfirmFilesDialog {
        objectName: "deleteDialog"
        items: window.viewModel.deleteConfirmation
        title: Texts.texts.deleteConfirmTitle
        bodyText: Texts.texts.deleteConfirmBody
        confirmText: Texts.texts.deleteButton
        onConfirmed: window.viewModel.confirmDeletions()
        onCancelled: window.viewModel.cancelDeletions()
    }

    ConfirmFilesDialog {
        objectName: "replaceDialog"
        items: window.viewModel.replaceConfirmation
        title: Texts.texts.replaceConfirmTitle
        bodyText: Texts.texts.replaceConfirmBody
        confirmText: Texts.texts.replaceConfirm
        onConfirmed: window.viewModel.confirmReplacements()
        onCancelled: window.viewModel.cancelReplacements()
    }

    ExportSummarySheet {
        id: summarySheet
        objectName: "exportSummary"
        viewModel: window.viewModel
        onRevealDestination: window.viewModel.showPlaylistsFolderInFileManager()
    }

    Dialog {
        id: alert
        objectName: "alertDialog"
        anchors.centerIn: Overlay.overlay
        width: Math.min(420, window.width - 80)
        modal: true
        focus: true
        title: Texts.texts.alertTitle
        closePolicy: Popup.CloseOnEscape
        onOpened: okButton.forceActiveFocus(Qt.PopupFocusReason) // Space and Return answer at once
        onClosed: window.viewModel.errorMessage = ""
        Overlay.modal: Rectangle { color: Qt.rgba(0.1, 0.12, 0.18, 0.25) }
        // Opaque: the message must read clearly over whatever the panes show.
        background: GlassCard { objectName: "alertBackground"; cornerRadius: 14; padding: 0; fill: Theme.opaqueFill }
        header: Text {
            text: alert.title
            padding: 18
            bottomPadding: 4
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.headlineText
            font.weight: Font.DemiBold
        }
        contentItem: Text {
            objectName: "alertMessage"
            text: window.viewModel.errorMessage
            wrapMode: Text.WordWrap
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        footer: DialogButtonBox {
            background: null
            Button {
                id: okButton
                objectName: "alertOkButton"
                focus: true
                text: Texts.texts.alertOk
                DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
                Accessible.name: text
                Keys.onReturnPressed: alert.close()
                Keys.onEnterPressed: alert.close()
                FocusRing { outset: 2 }
            }
        }
    }

    // The window's keys; a modal sheet or the alert blocks them while it is open.
    Shortcut { sequence: "Ctrl+F"; onActivated: content.focusSearch() }
    Shortcut { sequence: "Ctrl+O"; onActivated: window.viewModel.pickCustomFolder() }
    Shortcut { sequence: "F5"; onActivated: window.viewModel.rescanDevices() }
    Shortcut { sequence: "Ctrl+Q"; onActivated: Qt.quit() }
    Shortcut {
        sequence: "Ctrl+R"
        enabled: !window.viewModel.isConverting && window.viewModel.exportResultSummaries.length > 0
        onActivated: window.viewModel.showExportSummary = true
    }
    Shortcut {
        sequence: "Escape"
        enabled: window.viewModel.isConverting
        onActivated: window.viewModel.cancelConversion()
    }
    Shortcut {
        // Text fields keep Delete for themselves.
        sequence: "Delete"
        enabled: window.viewModel.selectedFileCount > 0
        onActivated: window.viewModel.stageSelectedFiles()
    }

    Connections {
        target: window.viewModel
        function onShowExportSettingsChanged() {
            if (window.viewModel.showExportSettings)
                settingsSheet.open()
            else
                settingsSheet.close()
        }
        function onShowExportSummaryChanged() {
            if (window.viewModel.showExportSummary)
                summarySheet.open()
            else
                summarySheet.close()
        }
        // The alert shows exactly while there is a message: a message cleared elsewhere closes it.
        function onErrorMessageChanged() {
            if (window.viewModel.errorMessage.length > 0)
                alert.open()
            else
                alert.close()
        }
    }
}
