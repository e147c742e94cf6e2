import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// There is nothing to show, and where was looked.
Column {
    id: empty
    required property string sentence
    property list<string> places: []
    property string invitation
    /// What its user can do.
    property list<string> advice: []

    topPadding: Theme.space.xl
    bottomPadding: Theme.space.xl
    spacing: Theme.space.m

    ProviderMark {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 40
        height: 40
        color: Theme.colors.outline
    }
    Label {
        anchors.horizontalCenter: parent.horizontalCenter
        text: empty.sentence
        size: Theme.type.title
        font.weight: Font.DemiBold
    }
    Column {
        visible: empty.places.length > 0
        width: parent.width
        spacing: Theme.space.xs
        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: empty.invitation
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
            bottomPadding: Theme.space.m
        }
        Repeater {
            model: empty.advice
            Label {
                required property string modelData
                width: empty.width
                horizontalAlignment: Text.AlignHCenter
                text: modelData
                wrapMode: Text.Wrap
                bottomPadding: Theme.space.m
            }
        }
        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "Looked in"
            size: Theme.type.caption
            font.weight: Font.Medium
            color: Theme.colors.secondaryText
        }
        Repeater {
            model: empty.places
            Label {
                required property string modelData
                width: empty.width
                horizontalAlignment: Text.AlignHCenter
                text: modelData
                size: Theme.type.caption
                elide: Text.ElideMiddle
                color: Theme.colors.secondaryText
            }
        }
    }
}
