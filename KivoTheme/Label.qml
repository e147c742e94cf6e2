import QtQuick
import Kivo.Theme

/// Text in the theme's type. Every text of the interface is one.
Text {
    property int size: Theme.type.body
    /// The distance of lines where there are several, as a factor; one alone has nothing to be apart from.
    property real leading: 1

    color: Theme.colors.text
    font.family: Theme.type.family
    font.pixelSize: size
    renderType: Text.QtRendering
    textFormat: Text.PlainText
    elide: Text.ElideRight
    // Not bound: how many lines there are follows from it, too.
    onLineCountChanged: lineHeight = lineCount > 1 ? leading : 1
    // Said, it is mirrored with the layout; unsaid, English stays at the left.
    horizontalAlignment: Text.AlignLeft
    Accessible.role: Accessible.StaticText
    Accessible.ignored: text === ""
    Accessible.name: text
}
