import QtQuick
import Kivo.Theme

/// Turns while something is under way; stands still where motion is unwanted.
Symbol {
    id: spinner
    property bool running: false

    name: "refresh"
    color: Theme.colors.secondaryText
    RotationAnimator on rotation {
        running: spinner.running && spinner.visible && Theme.motion.spins
        from: 0
        to: 360
        duration: 1100
        loops: Animation.Infinite
    }
    onRunningChanged: if (!running) rotation = 0
}
