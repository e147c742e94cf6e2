#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Preferences/Thresholds.h"

#include <filesystem>

namespace tokwatch {

/// Of the user's settings those that a line needs which is printed at every keystroke: read without
/// the toolkit, whose start takes longer than all else. Nothing is observed, made or written. What
/// `Preferences` read from the same file is the same.
struct PlainSettings {
    Thresholds thresholds;
    SummaryUnit summaryUnit = SummaryUnit::cost;

    /// The defaults where the file cannot be read.
    static PlainSettings read(const std::filesystem::path& file);
};

/// The settings file of the user, $XDG_CONFIG_HOME/Tokwatch/Tokwatch.conf.
std::filesystem::path settingsPath();

} // namespace tokwatch
