import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// Copying the iPod's play counts and ratings to Rockbox: what would be copied, then the copy once the user
// confirms, then what to do on the player. Open exactly while the model has something to show.
Dialog {
    id: dialog

    required property var viewModel
    readonly property var copy: viewModel.statisticsCopy
    readonly property string phase: copy.state === undefined ? "" : copy.state
    readonly property bool canCopy: phase === "ready"

    anchors.centerIn: Overlay.overlay
    width: Math.min(460, parent ? parent.width - 80 : 460)
    modal: true
    focus: true
    title: Texts.texts.statisticsTitle
    closePolicy: Popup.CloseOnEscape
    // Cancel is the default: Return never writes to the device by itself.
    onOpened: closeButton.forceActiveFocus(Qt.PopupFocusReason)
    onClosed: if (phase.length > 0) viewModel.closeStatisticsCopy() // closed by the user, not by the model
    onPhaseChanged: phase.length > 0 ? open() : close()
    Overlay.modal: Rectangle { color: Qt.rgba(0.1, 0.12, 0.18, 0.25) }
    background: GlassCard { cornerRadius: 14; padding: 0; fill: Theme.opaqueFill }
    header: Text {
        text: dialog.title
        padding: 18
        bottomPadding: 4
        color: Theme.primaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.headlineText
        font.weight: Font.DemiBold
    }

    // The paragraphs for the state, in the interface language.
    function paragraphs() {
        const lang = Texts.languageCode
        const copy = dialog.copy
        switch (dialog.phase) {
        case "reading": return [Texts.texts.statisticsReading]
        case "noRockbox": return [Texts.texts.statisticsNoRockbox]
        case "unreadable": return [Texts.texts.statisticsUnreadable]
        case "nothing": return [Texts.texts.statisticsNothing]
        case "failed": return [Texts.format(lang, "statisticsFailed", 0, copy.reason)]
        case "done": return [Texts.format(lang, "statisticsDone", copy.written), Texts.texts.statisticsNextStep]
        }
        const found = [Texts.format(lang, "statisticsSummary", copy.tracks, String(copy.plays))]
        if (copy.rated > 0)
            found.push(Texts.format(lang, "statisticsRated", copy.rated))
        found.push(copy.leftOut > 0 ? Texts.format(lang, "statisticsWillWrite", copy.written, String(copy.leftOut))
                                    : Texts.format(lang, "statisticsWillWriteAll", copy.written))
        if (copy.replaces)
            found.push(Texts.texts.statisticsReplaces)
        found.push(Texts.texts.statisticsNextStep)
        return found
    }

    contentItem: Text {
        objectName: "statisticsMessage"
        text: dialog.paragraphs().join("\n\n")
        wrapMode: Text.WordWrap
        color: Theme.primaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.bodyText
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    footer: DialogButtonBox {
        background: null
        Button {
            id: closeButton
            objectName: "statisticsCloseButton"
            text: dialog.phase === "ready" ? Texts.texts.statisticsCancel : Texts.texts.alertOk
            enabled: dialog.phase !== "writing"
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            Accessible.name: text
            Keys.onReturnPressed: dialog.close()
            Keys.onEnterPressed: dialog.close()
            FocusRing { outset: 2 }
        }
        Button {
            id: copyButton
            objectName: "statisticsCopyButton"
            visible: dialog.phase === "ready" || dialog.phase === "writing"
            enabled: dialog.canCopy
            text: Texts.texts.statisticsCopy
            DialogButtonBox.buttonRole: DialogButtonBox.ActionRole
            Accessible.name: text
            onClicked: dialog.viewModel.confirmStatisticsCopy()
            Keys.onReturnPressed: dialog.viewModel.confirmStatisticsCopy()
            Keys.onEnterPressed: dialog.viewModel.confirmStatisticsCopy()
            FocusRing { outset: 2 }
        }
    }
}
