import QtQuick
import Kivo.Theme
import Tokwatch.Menu

/// A menu of plain entries. Arrows move, Return chooses, Escape closes.
FocusScope {
    id: menu
    required property MenuView view
    property bool isRounded: false
    signal closeRequested

    implicitWidth: 220
    implicitHeight: lines.height + 2 * lines.y
    focus: true
    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Tokwatch"
    Keys.onUpPressed: view.move(-1)
    Keys.onDownPressed: view.move(1)
    Keys.onReturnPressed: view.choose(view.current)
    Keys.onEnterPressed: view.choose(view.current)
    Keys.onSpacePressed: view.choose(view.current)
    Keys.onEscapePressed: closeRequested()
    Connections {
        target: menu.view
        function onCloseRequested() { menu.closeRequested() }
    }

    Rectangle {
        anchors.fill: parent
        radius: menu.isRounded ? Theme.space.radius : 0
        color: Theme.colors.card
        border.width: 1
        border.color: Theme.colors.outline
    }
    Column {
        id: lines
        x: Theme.space.xs
        y: Theme.space.xs
        width: menu.width - 2 * x
        Repeater {
            model: menu.view.rows
            MenuLine {
                required property var modelData
                required property int index
                width: lines.width
                row: modelData
                isCurrent: index === menu.view.current
                onPointed: menu.view.current = index
                onChosen: menu.view.choose(index)
            }
        }
    }
}
