import QtQuick
import QtQuick.Controls
import Kestrune

// A thin line between groups of menu entries.
MenuSeparator {
    topPadding: 3
    bottomPadding: 3
    contentItem: Rectangle {
        implicitWidth: 20
        implicitHeight: 1
        color: Theme.divider
    }
}
