#pragma once

#include "Tokwatch/Preferences/SettingsGroup.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// How large the desktop widget is, and with it what it shows: the tightest limit; the limits of
/// each provider; these and the costs of 30 days.
enum class WidgetSize { small, medium, large };
template<>
inline constexpr std::array<std::string_view, 3> caseNames<WidgetSize>{"small", "medium", "large"};

/// Whether there is a desktop widget, how large and where. The widget is another process: it and
/// the settings window follow each other through this file. Main thread only.
class WidgetPreferences final : public SettingsGroup {
  public:
    explicit WidgetPreferences(std::unique_ptr<SettingsStorage> settings);

    Setting<bool> shown;
    Setting<WidgetSize> size;

    /// Where the widget was left, as it writes that; not a setting, but kept with them.
    std::string frames() const;
    void setFrames(std::string_view text);
    /// Whether it stays where it is dragged, below all windows, or is a window that the compositor
    /// places: as it writes that when it comes up, so none before. Kept likewise, not observable.
    std::optional<bool> staysWhereDragged() const;
    void setStaysWhereDragged(bool stays);
};

/// Widget.conf beside the file of the Preferences.
std::filesystem::path widgetSettingsPath();

} // namespace tokwatch
