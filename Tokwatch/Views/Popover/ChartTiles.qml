import QtQuick
import Kivo.Theme

/// The token statistics: what was processed and what that saved, then its three kinds.
Card {
    id: card
    required property var tiles

    component Tile: Column {
        required property var tile
        property int size: Theme.type.title

        width: (card.width - 2 * card.padding) / 3
        spacing: 2
        Label {
            width: parent.width
            text: parent.tile?.label ?? ""
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
        Label {
            width: parent.width
            text: parent.tile?.value ?? ""
            size: parent.size
            font.weight: Font.DemiBold
        }
    }

    Item {
        width: parent.width
        height: processed.height
        Tile {
            id: processed
            anchors.left: parent.left
            tile: card.tiles[0]
            size: Theme.type.figure
        }
        Tile {
            anchors.right: parent.right
            tile: card.tiles[4]
            size: Theme.type.figure
        }
    }
    Row {
        width: parent.width
        Tile { tile: card.tiles[1] }
        Tile { tile: card.tiles[2] }
        Tile { tile: card.tiles[3] }
    }
}
