import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// Says what its parent is while the pointer rests on it. Made when it is first wanted.
Loader {
    id: tip
    required property string text
    /// The pointer, or the keyboard, is on it.
    required property bool wanted
    property real widest: 320

    active: false
    onWantedChanged: if (wanted && text !== "") active = true

    sourceComponent: T.ToolTip {
        parent: tip.parent
        x: parent ? Math.round((parent.width - width) / 2) : 0
        y: parent ? parent.height + Theme.space.xs : 0
        margins: Theme.space.xs
        implicitWidth: Math.min(tip.widest, Math.ceil(words.implicitWidth) + leftPadding + rightPadding)
        implicitHeight: words.implicitHeight + topPadding + bottomPadding
        padding: Theme.space.xs
        leftPadding: Theme.space.s
        rightPadding: Theme.space.s
        delay: 500
        // Escape is for the window.
        closePolicy: T.Popup.NoAutoClose
        visible: tip.wanted && tip.visible && tip.text !== ""
        contentItem: Label {
            id: words
            text: tip.text
            size: Theme.type.caption
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
        background: Rectangle {
            radius: Theme.space.radius
            color: Theme.colors.card
            border.width: 1
            border.color: Theme.colors.outline
        }
    }
}
