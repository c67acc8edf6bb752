import QtQuick
import Kestrune
import QtQuick.Layouts

// The window's content: the Rockbox pane on the left, a thin divider, the iTunes pane on the right.
Item {
    id: content

    required property var viewModel

    function focusSearch() { itunesView.focusSearch() }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        GlassCard {
            objectName: "rockboxCard"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumWidth: 440
            Layout.preferredWidth: 1
            Layout.margins: 12
            Layout.rightMargin: 6
            padding: 0
            RockboxFileManagerView {
                anchors.fill: parent
                viewModel: content.viewModel
            }
        }
        Rectangle {
            Layout.fillHeight: true
            Layout.topMargin: 24
            Layout.bottomMargin: 24
            Layout.preferredWidth: 1
            color: Theme.divider
        }
        GlassCard {
            objectName: "itunesCard"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumWidth: 400
            Layout.preferredWidth: 1
            Layout.margins: 12
            Layout.leftMargin: 6
            padding: 0
            ITunesPlaylistsView {
                id: itunesView
                anchors.fill: parent
                viewModel: content.viewModel
            }
        }
    }
}
