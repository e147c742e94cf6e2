import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

T.ScrollBar {
    id: bar
    implicitWidth: 8
    padding: 2
    minimumSize: 0.08
    visible: size < 1
    Accessible.ignored: true
    contentItem: Rectangle {
        implicitWidth: 4
        radius: 2
        color: Theme.colors.outline
        opacity: bar.pressed || bar.hovered ? 1 : bar.active ? 0.7 : 0.35
    }
}
