import QtQuick
import Kivo.Theme

/// How to get a status area, on desktops that have none.
Item {
    id: banner
    required property string advice

    visible: advice !== ""
    height: visible ? card.height + Theme.space.m : 0

    Card {
        id: card
        width: parent.width
        padding: Theme.space.m
        spacing: Theme.space.xs
        Label {
            width: parent.width
            text: "No status area was found"
            font.weight: Font.DemiBold
        }
        Label {
            width: parent.width
            text: banner.advice
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
}
