import QtQuick
import Kivo.Theme

/// A surface that holds one subject, as high as its content.
Rectangle {
    id: card
    default property alias content: column.data
    property int padding: Theme.space.l
    property int verticalPadding: padding
    property alias spacing: column.spacing

    implicitHeight: column.implicitHeight + 2 * verticalPadding
    color: Theme.colors.card
    radius: Theme.space.cardRadius
    border.width: 1
    border.color: Theme.colors.hairline

    Column {
        id: column
        x: card.padding
        y: card.verticalPadding
        width: card.width - 2 * card.padding
        spacing: Theme.space.m
    }
}
