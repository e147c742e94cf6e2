#pragma once

#include <QString>
#include <QUrl>

#include <filesystem>
#include <functional>
#include <optional>

namespace kivo {
class LoginItem;
}

namespace tokwatch {

class AlertPreferences;
class ChosenHotKey;
class DesktopPreferences;
class SoftwareUpdates;
class WidgetPreferences;

/// What the settings touch besides the preferences and the model. References outlive the view.
struct SettingsPlaces {
    std::optional<std::filesystem::path> database; ///< none while it is a temporary one
    std::filesystem::path settingsFile;
    AlertPreferences& alerts;
    DesktopPreferences& desktop;
    WidgetPreferences& widget;
    ChosenHotKey& hotKey;
    QString openCommand; ///< opens the popover of the application that runs
    kivo::LoginItem& loginItem;
    /// Shows a web page in the browser, a directory in the file manager.
    std::function<void(const QUrl&)> open;
    SoftwareUpdates* updates = nullptr; ///< none where no feed was configured
};

} // namespace tokwatch
