import QtQuick
import Kivo.Theme

/// The sections of a settings window, one below the other. Arrow keys, Home and End choose.
FocusScope {
    id: list
    required property string name
    required property var sections
    required property int currentIndex
    signal chosen(int index)

    function choose(index) {
        if (index !== currentIndex && index >= 0 && index < sections.length)
            chosen(index)
    }

    activeFocusOnTab: true
    Accessible.role: Accessible.PageTabList
    Accessible.name: name
    Keys.onPressed: event => {
        event.accepted = true
        switch (event.key) {
        case Qt.Key_Down: choose(currentIndex + 1); break
        case Qt.Key_Up: choose(currentIndex - 1); break
        case Qt.Key_Home: choose(0); break
        case Qt.Key_End: choose(sections.length - 1); break
        default: event.accepted = false
        }
    }

    Column {
        width: parent.width
        spacing: 2

        Repeater {
            model: list.sections.length
            Rectangle {
                id: entry
                required property int index
                readonly property var section: list.sections[index]
                readonly property bool isCurrent: index === list.currentIndex

                width: parent.width
                height: Theme.space.control
                radius: Theme.space.radius
                color: isCurrent ? Theme.colors.track : hover.hovered ? Theme.colors.hover : "transparent"
                Accessible.role: Accessible.PageTab
                Accessible.name: section.title
                Accessible.selected: isCurrent
                Accessible.onPressAction: list.choose(index)

                Symbol {
                    id: sign
                    anchors { left: parent.left; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
                    name: entry.section.symbol
                    color: entry.isCurrent ? Theme.colors.accentText : Theme.colors.secondaryText
                }
                Label {
                    anchors { left: sign.right; leftMargin: Theme.space.s; right: parent.right; verticalCenter: parent.verticalCenter }
                    text: entry.section.title
                    font.weight: entry.isCurrent ? Font.DemiBold : Font.Medium
                    Accessible.ignored: true
                }
                Rectangle {
                    anchors.fill: parent
                    visible: entry.isCurrent && list.activeFocus && list.showsFocus
                    color: "transparent"
                    radius: parent.radius
                    border.width: 2
                    border.color: Theme.colors.focus
                }
                HoverHandler { id: hover }
                TapHandler {
                    onTapped: {
                        list.forceActiveFocus(Qt.MouseFocusReason)
                        list.choose(entry.index)
                    }
                }
            }
        }
    }

    /// Whether the keyboard brought the focus here: a click shows by itself what it did.
    property bool showsFocus: false
    onActiveFocusChanged: showsFocus = false
    Keys.onReleased: showsFocus = true
}
