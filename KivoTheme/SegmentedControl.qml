import QtQuick
import Kivo.Theme

/// A choice of few, side by side. Arrow keys, Home and End move the choice; a click takes it.
FocusScope {
    id: control
    /// What there is to choose: each a { value, text }.
    required property var segments
    property int value: 0
    property bool small: false
    property string name
    signal chosen(int value)

    readonly property int currentIndex: segments.findIndex(segment => segment.value === value)
    readonly property real segmentWidth: (width - 2 * inset) / segments.length
    readonly property int inset: 2

    function choose(index) {
        if (index !== currentIndex && index >= 0 && index < segments.length)
            chosen(segments[index].value)
    }
    /// To the next one, or with −1 the one before, around the ends.
    function step(distance) {
        choose((currentIndex + distance + segments.length) % segments.length)
    }

    implicitWidth: 2 * inset + segments.length * (widest.implicitWidth + 2 * Theme.space.m)
    implicitHeight: small ? 24 : 32
    activeFocusOnTab: true
    Accessible.role: Accessible.PageTabList
    Accessible.name: name
    Keys.onPressed: event => {
        const forward = LayoutMirroring.enabled ? Qt.Key_Left : Qt.Key_Right
        const back = LayoutMirroring.enabled ? Qt.Key_Right : Qt.Key_Left
        event.accepted = true
        switch (event.key) {
        case forward: choose(currentIndex + 1); break
        case back: choose(currentIndex - 1); break
        case Qt.Key_Home: choose(0); break
        case Qt.Key_End: choose(segments.length - 1); break
        default: event.accepted = false
        }
    }

    // The longest text decides the width of all.
    Label {
        id: widest
        visible: false
        size: control.small ? Theme.type.caption : Theme.type.body
        font.weight: Font.DemiBold
        text: control.segments.reduce((longest, segment) => segment.text.length > longest.length ? segment.text : longest, "")
    }

    Rectangle {
        id: bed
        anchors.fill: parent
        radius: Theme.space.radius + control.inset
        color: Theme.colors.track
    }
    Rectangle {
        readonly property int place: control.LayoutMirroring.enabled
            ? control.segments.length - 1 - control.currentIndex : control.currentIndex
        x: control.inset + place * control.segmentWidth
        y: control.inset
        width: control.segmentWidth
        height: parent.height - 2 * control.inset
        radius: Theme.space.radius
        color: Theme.colors.raised
        border.width: 1
        border.color: Theme.dark && !Theme.highContrast ? Theme.colors.raised : Theme.colors.hairline
        Behavior on x { NumberAnimation { duration: Theme.motion.quick; easing.type: Easing.OutCubic } }
    }
    Row {
        x: control.inset
        height: parent.height
        Repeater {
            model: control.segments
            Item {
                id: segment
                required property int index
                required property var modelData
                readonly property bool isCurrent: index === control.currentIndex

                width: control.segmentWidth
                height: control.height
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.text
                Accessible.selected: isCurrent
                Accessible.onPressAction: control.choose(index)

                Label {
                    anchors.fill: parent
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    text: segment.modelData.text
                    size: widest.size
                    font.weight: segment.isCurrent ? Font.DemiBold : Font.Medium
                    color: segment.isCurrent || hover.hovered ? Theme.colors.text : Theme.colors.secondaryText
                    Accessible.ignored: true
                }
                HoverHandler { id: hover }
                TapHandler { onTapped: control.choose(segment.index) }
            }
        }
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: -1
        visible: control.activeFocus
        color: "transparent"
        radius: bed.radius + 1
        border.width: 2
        border.color: Theme.colors.focus
    }
}
