import QtQuick
import QtQuick.Controls
import Kestrune

// A drop-down or context menu on an opaque rounded card, as wide as its widest entry so that no text is
// ever cut short.
Menu {
    id: menu

    padding: 4
    width: {
        let widest = 120
        for (let i = 0; i < count; ++i) {
            const entry = itemAt(i)
            if (entry && entry.visible)
                widest = Math.max(widest, entry.implicitWidth)
        }
        return widest + leftPadding + rightPadding
    }
    delegate: GlassMenuItem {}
    background: Rectangle {
        radius: 9
        color: Theme.opaqueFill
        border.width: 1
        border.color: Qt.rgba(0, 0, 0, 0.14)
    }
}
