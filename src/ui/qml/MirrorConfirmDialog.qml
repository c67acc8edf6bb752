import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// Before a mirror run removes anything: the files that will be deleted for good, each with why, and
// Cancel as the default. Open exactly while the model waits for the answer.
Dialog {
    id: dialog

    required property var viewModel
    readonly property var removals: viewModel.mirrorConfirmation
    property Item returnFocusTo: null

    anchors.centerIn: Overlay.overlay
    width: Math.min(480, parent ? parent.width - 80 : 480)
    modal: true
    focus: true
    title: Texts.texts.mirrorConfirmTitle
    closePolicy: Popup.CloseOnEscape
    onRemovalsChanged: {
        if (removals.length > 0) {
            returnFocusTo = Window.activeFocusItem
            open()
        } else {
            close()
        }
    }
    onOpened: cancelButton.forceActiveFocus(Qt.PopupFocusReason)
    onClosed: {
        if (removals.length > 0)
            viewModel.cancelMirrorRemovals() // closed by the user, not by the model
        if (returnFocusTo)
            returnFocusTo.forceActiveFocus(Qt.OtherFocusReason)
    }
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
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    contentItem: ColumnLayout {
        spacing: 10
        Text {
            Layout.fillWidth: true
            text: Texts.texts.mirrorConfirmBody
            wrapMode: Text.WordWrap
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            objectName: "mirrorRemovals"
            Layout.fillWidth: true
            text: dialog.removals.map(removal => "• " + removal.name + " (" + removal.reason + ")").join("\n")
            wrapMode: Text.WordWrap
            elide: Text.ElideRight
            maximumLineCount: 12
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
    footer: DialogButtonBox {
        background: null
        Button {
            id: cancelButton
            objectName: "mirrorCancelButton"
            text: Texts.texts.cancelButton
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            Accessible.name: text
            Keys.onReturnPressed: dialog.close()
            Keys.onEnterPressed: dialog.close()
            FocusRing { outset: 2 }
        }
        Button {
            objectName: "mirrorRemoveButton"
            text: Texts.texts.mirrorRemove
            DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
            Accessible.name: text
            onClicked: dialog.viewModel.confirmMirrorRemovals()
            Keys.onReturnPressed: dialog.viewModel.confirmMirrorRemovals()
            Keys.onEnterPressed: dialog.viewModel.confirmMirrorRemovals()
            FocusRing { outset: 2 }
        }
    }
}
