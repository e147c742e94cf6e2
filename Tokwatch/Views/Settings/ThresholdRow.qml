import QtQuick
import Kivo.Theme
import Kivo.Settings

/// A level at which limits change their colour.
SettingsRow {
    id: row
    required property real amount
    required property string amountText
    required property color fill
    required property real from
    required property real to
    required property real lowest
    required property real highest
    required property real stepSize
    signal chosen(real amount)

    ValueSlider {
        name: row.label
        spoken: row.amountText
        width: 208
        from: row.from
        to: row.to
        lowest: row.lowest
        highest: row.highest
        stepSize: row.stepSize
        amount: row.amount
        fill: row.fill
        onChosen: amount => row.chosen(amount)
    }
    Label {
        width: 32
        height: 24
        text: row.amountText
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
