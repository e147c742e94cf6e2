import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A switch. `text` is its name; the row beside it shows it.
T.Switch {
    id: toggle
    implicitWidth: 36
    implicitHeight: 22
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()

    /// As by a click.
    function flip() {
        toggle.toggle()
        toggle.toggled()
    }

    indicator: Rectangle {
        readonly property int inset: 3
        width: toggle.width
        height: toggle.height
        radius: height / 2
        color: toggle.checked ? Theme.colors.accent : Theme.colors.outline
        opacity: toggle.enabled ? 1 : 0.5
        Rectangle {
            readonly property bool atEnd: toggle.checked !== toggle.mirrored
            x: atEnd ? parent.width - width - parent.inset : parent.inset
            y: parent.inset
            width: parent.height - 2 * parent.inset
            height: width
            radius: width / 2
            color: toggle.checked ? Theme.colors.onAccent : Theme.colors.knob
            Behavior on x { NumberAnimation { duration: Theme.motion.quick; easing.type: Easing.OutCubic } }
        }
    }
    background: Item { readonly property real radius: toggle.height / 2 }
    FocusRing {}
}
