import QtQuick
import QtQuick.Templates as T
import Kivo.Theme
import Tokwatch.Common

/// The usage of the last days in one look.
Card {
    id: card
    required property var summary
    signal toggled

    spacing: Theme.space.m

    T.AbstractButton {
        id: headline
        width: parent.width
        height: figures.implicitHeight
        hoverEnabled: true
        focusPolicy: Qt.TabFocus
        Accessible.name: card.summary.spoken
        Accessible.description: card.summary.showsCost ? "Shows tokens when pressed" : "Shows costs when pressed"
        onClicked: card.toggled()
        Accessible.onPressAction: headline.clicked()
        HoverHandler { cursorShape: Qt.PointingHandCursor }

        contentItem: Column {
            id: figures
            spacing: 2
            Label {
                width: parent.width
                text: card.summary.period
                size: Theme.type.caption
                font.weight: Font.Medium
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
            Item {
                width: parent.width
                height: figure.implicitHeight
                // A figure and what it is are one text, which mirroring does not turn around.
                Item {
                    x: headline.mirrored ? parent.width - width : 0
                    width: figure.width + note.width
                    height: parent.height
                    LayoutMirroring.enabled: false
                    LayoutMirroring.childrenInherit: true
                    Label {
                        id: figure
                        text: card.summary.headline
                        size: Theme.type.headline
                        font.weight: Font.Bold
                        font.letterSpacing: -0.5
                        color: headline.hovered ? Theme.colors.accentText : Theme.colors.text
                        Accessible.ignored: true
                    }
                    Label {
                        id: note
                        anchors { left: figure.right; baseline: figure.baseline }
                        text: card.summary.headlineNote
                        color: Theme.colors.secondaryText
                        Accessible.ignored: true
                    }
                }
                Label {
                    anchors.right: parent.right
                    y: figure.baselineOffset - baselineOffset
                    text: card.summary.other
                    color: Theme.colors.secondaryText
                    Accessible.ignored: true
                }
            }
        }
        background: Item { readonly property real radius: Theme.space.radius }
        FocusRing { distance: 4 }
    }

    SegmentBar {
        width: parent.width
        segments: card.summary.segments
    }

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.colors.hairline
    }

    Column {
        width: parent.width
        spacing: Theme.space.m
        Repeater {
            model: card.summary.tools
            ToolLine {
                required property var modelData
                width: card.width - 2 * card.padding
                tool: modelData
            }
        }
    }

    Column {
        width: parent.width
        spacing: Theme.space.xs
        Label {
            width: parent.width
            visible: text !== ""
            text: card.summary.exclusion
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
        LinkButton {
            id: about
            anchors.left: parent.left
            text: "About the API estimate"
            size: Theme.type.caption
            checkable: true
        }
        Label {
            width: parent.width
            visible: about.checked
            text: "What these tokens would cost on each provider's pay-as-you-go API. Not what your subscription costs."
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
}
