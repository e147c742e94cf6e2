import QtQuick
import Kivo.Theme

/// The token statistics: what was processed and what that saved, then its three kinds.
Card {
    id: card
    required property var tiles

    component Tile: Column {
        required property string label
        required property string value
        property int size: Theme.type.title

        width: (card.width - 2 * card.padding) / 3
        spacing: 2
        Label {
            width: parent.width
            text: parent.label
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
        Label {
            width: parent.width
            text: parent.value
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
            label: "Processed tokens"
            value: card.tiles.processed
            size: Theme.type.figure
        }
        Tile {
            anchors.right: parent.right
            label: "Cache savings"
            value: card.tiles.cacheSavings
            size: Theme.type.figure
        }
    }
    Row {
        width: parent.width
        Tile { label: "Cached input"; value: card.tiles.cachedInput }
        Tile { label: "Uncached input"; value: card.tiles.uncachedInput }
        Tile { label: "Output"; value: card.tiles.output }
    }
}
