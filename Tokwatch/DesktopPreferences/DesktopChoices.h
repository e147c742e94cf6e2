#pragma once

#include "KivoHotKeys/HotKey.h"
#include "KivoTheme/ToneChoice.h"
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

void loadSetting(const QSettings& settings, const char* key, HotKeyChoice& value);
void storeSetting(QSettings& settings, const char* key, const HotKeyChoice& value);
std::string textOf(const HotKeyChoice& value);
bool parseText(std::string_view text, HotKeyChoice& value);
SettingDomain domainOf(const HotKeyChoice&);

} // namespace tokwatch
