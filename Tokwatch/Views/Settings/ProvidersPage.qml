import QtQuick
import Kivo.Theme
import Kivo.Settings

SettingsPage {
    id: page
    required property var view

    title: "Providers"

    Label {
        width: parent.width
        text: "Everything follows this order. Drag a handle, or press Alt with the arrow keys."
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
    ReorderList {
        id: order
        width: parent.width
        spacing: Theme.space.m
        model: page.view.rows
        onMoved: (from, to) => page.view.move(from, to)

        delegate: ProviderItem {
            list: order
            view: page.view
        }
    }
}
