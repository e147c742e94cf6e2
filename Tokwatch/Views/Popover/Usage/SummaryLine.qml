import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// The usage of the last days in a line, which leads to all that is known of it.
T.AbstractButton {
    id: line
    required property var summary

    height: 40
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    Accessible.name: "Details: " + summary.spoken
    Accessible.onPressAction: line.clicked()
    Keys.onReturnPressed: line.clicked()
    Keys.onEnterPressed: line.clicked()
    HoverHandler { cursorShape: Qt.PointingHandCursor }

    contentItem: Item {
        Label {
            anchors { left: parent.left; leftMargin: Theme.space.l; verticalCenter: parent.verticalCenter }
            text: line.summary.period
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        // Figures and what they are are one text, which mirroring does not turn around.
        Row {
            x: line.mirrored ? Theme.space.l : parent.width - width - Theme.space.l
            anchors.verticalCenter: parent.verticalCenter
            LayoutMirroring.enabled: false
            LayoutMirroring.childrenInherit: true
            Label {
                text: line.summary.headline
                font.weight: Font.DemiBold
                color: line.hovered ? Theme.colors.accentText : Theme.colors.text
                Accessible.ignored: true
            }
            Label {
                text: line.summary.headlineNote + " · " + line.summary.other
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
        }
    }
    background: Rectangle {
        radius: Theme.space.cardRadius
        color: line.down ? Theme.colors.pressed : Theme.colors.card
        border.width: 1
        border.color: Theme.colors.hairline
    }
    FocusRing {}
}
