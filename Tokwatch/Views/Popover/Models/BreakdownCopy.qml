import QtQuick
import Kivo.Theme

/// Offers the table for the clipboard, and for where the keyboard was.
CopyMenu {
    id: button
    signal textWanted
    signal csvWanted
    signal pasteWanted

    name: "Copy table"
    choices: [
        { text: "Copy as Text", run: () => button.textWanted() },
        { text: "Copy as CSV", run: () => button.csvWanted() },
        { text: "Paste as Text", run: () => button.pasteWanted() }
    ]
}
