import QtQuick

/// One entry of the settings' list, and the page that it leads to.
QtObject {
    required property string title
    /// A name of the theme's symbols.
    required property string symbol
    /// Makes a SettingsPage, when it is first looked at.
    required property Component page
}
