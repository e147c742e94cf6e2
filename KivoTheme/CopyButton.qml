import QtQuick
import Kivo.Theme

/// Puts something into the clipboard, and says for a moment that it is there.
IconButton {
    id: button
    required property string name
    property bool isDone: false

    function confirm() {
        isDone = true
        calm.restart()
    }

    symbol: isDone ? "check" : "copy"
    text: isDone ? "Copied" : name

    Timer {
        id: calm
        interval: 1600
        onTriggered: button.isDone = false
    }
}
