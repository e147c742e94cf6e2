import QtQuick
import Kivo.Theme

/// One line above a chart: which days, and how much. As high for a day as for all of them.
Item {
    id: header
    required property var readout

    implicitHeight: value.implicitHeight

    Label {
        id: title
        anchors.left: parent.left
        anchors.baseline: value.baseline
        text: header.readout.title
        font.weight: Font.DemiBold
    }
    Label {
        anchors.left: title.right
        anchors.right: value.left
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        anchors.baseline: value.baseline
        horizontalAlignment: Text.AlignRight
        text: header.readout.note
        size: Theme.type.caption
        color: Theme.colors.secondaryText
    }
    Label {
        id: value
        anchors.right: parent.right
        text: header.readout.value
        size: Theme.type.title
        font.weight: Font.DemiBold
    }
}
