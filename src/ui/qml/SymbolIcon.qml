import QtQuick
import Kestrune
import QtQuick.Controls.impl

// A bundled icon named by its SF Symbol name, tinted in `color`.
IconImage {
    id: icon

    property string symbol
    property int size: 14

    // SF Symbol name -> Bootstrap Icons file in the module's icons folder.
    readonly property var table: ({
        "music.note.list": "music-note-list",
        "music.note": "music-note",
        "magnifyingglass": "search",
        "xmark.circle.fill": "x-circle-fill",
        "checkmark.square.fill": "check-square-fill",
        "minus.square.fill": "dash-square-fill",
        "square": "square",
        "opticaldisc": "disc",
        "arrow.left.circle.fill": "arrow-left-circle-fill",
        "checkmark.circle.fill": "check-circle-fill",
        "circle": "circle",
        "gearshape.2.fill": "gear-wide-connected",
        "square.stack.fill": "stack",
        "checkmark": "check-lg",
        "ipod": "music-player-fill",
        "chevron.down": "chevron-down",
        "folder.badge.plus": "folder-plus",
        "arrow.clockwise": "arrow-clockwise",
        "slider.horizontal.3": "sliders",
        "exclamationmark.circle.fill": "exclamation-circle-fill",
        "exclamationmark.triangle.fill": "exclamation-triangle-fill",
        "trash": "trash",
        "globe": "globe",
        "heart.fill": "heart-fill",
        "cup.and.saucer.fill": "cup-hot-fill",
        "folder.fill": "folder-fill"
    })

    source: symbol.length > 0 ? "icons/" + table[symbol] + ".svg" : ""
    sourceSize: Qt.size(size, size)
    width: size
    height: size
    color: Theme.primaryText
}
