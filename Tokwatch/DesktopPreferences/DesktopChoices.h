#pragma once

#include "KivoHotKeys/HotKey.h"
#include "KivoLooks/ToneChoice.h"
#include "KivoPanel/SavedFrame.h"
#include "Tokwatch/Preferences/SettingCoding.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

template<>
inline constexpr std::array<std::string_view, 3> caseNames<kivo::ToneChoice>{"desktop", "light",
                                                                             "dark"};

/// A hot key or none, as a setting: "Ctrl+Alt+T", "".
struct HotKeyChoice {
    std::optional<kivo::HotKey> key;
    friend bool operator==(const HotKeyChoice&, const HotKeyChoice&) = default;
};

void storeSetting(SettingsStorage& settings, const char* key, const HotKeyChoice& value);
std::string textOf(const HotKeyChoice& value);
bool parseText(std::string_view text, HotKeyChoice& value);
SettingDomain domainOf(const HotKeyChoice&);

/// Where a panel was left, as a setting: a line for each screen. Lines that are none are left out.
struct PanelFrames {
    kivo::SavedFrames frames;
    friend bool operator==(const PanelFrames&, const PanelFrames&) = default;
};

bool takeStored(const StoredEntries& entries, PanelFrames& value);
void storeSetting(SettingsStorage& settings, const char* key, const PanelFrames& value);
std::string textOf(const PanelFrames& value);
bool parseText(std::string_view text, PanelFrames& value);
SettingDomain domainOf(const PanelFrames&);

} // namespace tokwatch
