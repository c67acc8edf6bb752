import QtQuick
import Kestrune
import QtQuick.Controls
import QtQuick.Layouts

// One playlist: tick mark, icon tile, name with track count and duration, and its badges.
Item {
    id: row

    required property int index
    required property string playlistId
    required property string name
    required property int trackCount
    required property string formattedDuration
    required property bool isMaster
    required property bool isSmart
    required property bool isOnRockbox
    required property bool isTicked
    required property var warnings // what the player will not play of it: [{kind, count, limit}]
    required property var viewModel

    // One sentence per warning, in the interface language.
    readonly property string warningText: warnings.map(warning => Texts.format(Texts.languageCode,
        warning.kind === "overLimit" ? "warningOverLimit"
                                     : (warning.kind === "missingFiles" ? "warningMissingFiles" : "warningLongPaths"),
        warning.count, String(warning.limit))).join("\n")

    readonly property color tileColor: isSmart ? Theme.purple : (isMaster ? Theme.orange : Theme.blue)

    implicitHeight: 50
    objectName: "playlistRow_" + name
    Accessible.role: Accessible.CheckBox
    Accessible.name: name
    Accessible.description: Texts.texts.accessibleTick
    Accessible.checkable: true
    Accessible.checked: isTicked

    GlassCapsule {
        anchors.fill: parent
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        isSelected: row.isTicked
        hovered: rowArea.containsMouse
        pressed: rowArea.pressed
    }
    FocusRing {
        shown: row.ListView.isCurrentItem && row.ListView.view.activeFocus
        outset: -1
        radius: 10
    }
    MouseArea {
        id: rowArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: mouse => row.viewModel.clickPlaylistRow(row.index, mouse.modifiers)
    }
    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        spacing: 10

        // Both faces stay loaded and only swap, so the tick changes in the frame of the click.
        Item {
            objectName: "tick"
            implicitWidth: 15
            implicitHeight: 15
            SymbolIcon { visible: row.isTicked; symbol: "checkmark.circle.fill"; size: 15; color: Theme.accent }
            SymbolIcon { visible: !row.isTicked; symbol: "circle"; size: 15; color: Theme.secondaryText; opacity: 0.7 }
            MouseArea {
                anchors.fill: parent
                anchors.margins: -6
                onClicked: row.viewModel.togglePlaylistSelection(row.playlistId)
            }
        }
        Rectangle {
            Layout.preferredWidth: 28
            Layout.preferredHeight: 28
            radius: 7
            color: Qt.rgba(row.tileColor.r, row.tileColor.g, row.tileColor.b, 0.16)
            SymbolIcon {
                anchors.centerIn: parent
                symbol: row.isSmart ? "gearshape.2.fill" : (row.isMaster ? "square.stack.fill" : "music.note.list")
                size: 14
                color: row.tileColor
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            Text {
                Layout.fillWidth: true
                text: row.name
                elide: Text.ElideRight
                color: Theme.primaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.bodyText
                font.weight: Font.Medium
            }
            Text {
                Layout.fillWidth: true
                text: Texts.format(Texts.languageCode, "tracksAndDuration", row.trackCount, row.formattedDuration)
                elide: Text.ElideRight
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallText
            }
        }
        GlassBadge {
            visible: row.isSmart
            text: Texts.texts.badgeSmart
            color: Theme.purple
        }
        GlassBadge {
            visible: row.isMaster
            text: Texts.texts.badgeLibrary
            color: Theme.orange
        }
        GlassBadge {
            objectName: "onRockboxBadge"
            visible: row.isOnRockbox
            text: Texts.texts.badgeOnRockbox
            icon: "checkmark"
            color: Theme.green
        }
        GlassBadge {
            objectName: "warningBadge"
            visible: row.warnings.length > 0
            icon: "exclamationmark.triangle.fill"
            color: Theme.orange
            Accessible.role: Accessible.StaticText
            Accessible.name: row.warningText
            ToolTip.visible: warningHover.hovered
            ToolTip.delay: 300
            ToolTip.text: row.warningText
            HoverHandler { id: warningHover }
        }
    }
}
