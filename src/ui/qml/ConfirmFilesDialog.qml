import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// Before a run deletes or replaces files: each file with why, and Cancel as the default. Open exactly while
// the model waits for the answer (`items` not empty).
Dialog {
    id: dialog

    required property var items // each {name, reason}
    required property string bodyText
    required property string confirmText
    signal confirmed()
    signal cancelled()
    property Item returnFocusTo: null

    anchors.centerIn: Overlay.overlay
    width: Math.min(480, parent ? parent.width - 80 : 480)
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    onItemsChanged: {
        if (items.length > 0) {
            returnFocusTo = Window.activeFocusItem
            open()
        } else {
            close()
        }
    }
    onOpened: cancelButton.forceActiveFocus(Qt.PopupFocusReason)
    onClosed: {
        if (items.length > 0)
            dialog.cancelled() // closed by the user, not by the model
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
            text: dialog.bodyText
            wrapMode: Text.WordWrap
            color: Theme.primaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.bodyText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            objectName: "confirmItems"
            Layout.fillWidth: true
            text: dialog.items.map(item => "• " + item.name + (item.reason ? " (" + item.reason + ")" : "")).join("\n")
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
            objectName: "confirmCancelButton"
            text: Texts.texts.cancelButton
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            Accessible.name: text
            Keys.onReturnPressed: dialog.close()
            Keys.onEnterPressed: dialog.close()
            FocusRing { outset: 2 }
        }
        Button {
            objectName: "confirmButton"
            text: dialog.confirmText
            DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
            Accessible.name: text
            onClicked: dialog.confirmed()
            FocusRing { outset: 2 }
        }
    }
}
