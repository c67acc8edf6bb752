import QtQuick
import Kestrune
import QtQuick.Controls

// The convert button's three faces: idle, converting with its progress, and the short success flash.
AbstractButton {
    id: button

    required property var viewModel
    readonly property bool converting: viewModel.isConverting
    readonly property bool succeeded: viewModel.conversionSuccessFeedback
    readonly property bool nothingTicked: viewModel.tickedPlaylistCount === 0

    objectName: "convertButton"
    implicitHeight: 40
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: label.text
    Accessible.name: text
    enabled: !nothingTicked && !converting && viewModel.prefixControlCharacter === ""
    onClicked: viewModel.convertSelectedPlaylists()

    background: Rectangle {
        radius: 8
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop {
                position: 0.0
                color: button.succeeded ? Theme.green : (!button.enabled && !button.converting ? "#c7c7cc" : Theme.accent)
            }
            GradientStop {
                position: 1.0
                color: button.succeeded ? "#34c759" : (!button.enabled && !button.converting ? "#d1d1d6" : "#3d9bff")
            }
        }
        // Lighter under the pointer, darker while pressed.
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            visible: button.enabled && (button.hovered || button.pressed)
            color: button.pressed ? Qt.rgba(0, 0, 0, 0.16) : Qt.rgba(1, 1, 1, 0.16)
        }
    }
    FocusRing {}
    contentItem: Item {
        Row {
            anchors.centerIn: parent
            spacing: 8
            SymbolIcon {
                objectName: "convertProgressIndicator"
                visible: button.converting
                symbol: "arrow.clockwise"
                size: 14
                color: "white"
                anchors.verticalCenter: parent.verticalCenter
                RotationAnimation on rotation {
                    running: button.converting
                    loops: Animation.Infinite
                    from: 0
                    to: 360
                    duration: 900
                }
            }
            SymbolIcon {
                visible: !button.converting
                symbol: button.succeeded ? "checkmark.circle.fill" : "arrow.left.circle.fill"
                size: 15
                color: label.color
                anchors.verticalCenter: parent.verticalCenter
            }
            Text {
                id: label
                objectName: "convertButtonLabel"
                text: button.succeeded ? Texts.texts.conversionSuccess
                                       : (button.converting ? Texts.format(Texts.languageCode, "convertingProgress", button.viewModel.conversionPercent)
                                                            : Texts.texts.convertButton)
                color: button.nothingTicked && !button.converting && !button.succeeded ? Theme.secondaryText : "white"
                font.family: Theme.fontFamily
                font.pixelSize: Theme.bodyText
                font.weight: Font.DemiBold
                anchors.verticalCenter: parent.verticalCenter
            }
        }
    }
}
