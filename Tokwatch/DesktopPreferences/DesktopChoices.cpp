#include "Tokwatch/DesktopPreferences/DesktopChoices.h"

namespace tokwatch {

void storeSetting(SettingsStorage& settings, const char* key, const HotKeyChoice& value) {
    storeText(settings, key, textOf(value));
}

std::string textOf(const HotKeyChoice& value) {
    return value.key ? kivo::textOf(*value.key).toStdString() : std::string();
}

bool parseText(std::string_view text, HotKeyChoice& value) {
    const std::string_view keys = trimmed(text);
    value.key = kivo::hotKeyFrom(QString::fromUtf8(keys));
    return value.key || keys.empty();
}

SettingDomain domainOf(const HotKeyChoice&) {
    return {"keys such as Ctrl+Alt+T", {}};
}

bool takeStored(const StoredEntries& entries, PanelFrames& value) {
    const auto own = entries.find("");
    if (own == entries.end() || own->second.size() != 1) return entries.empty();
    return parseText(own->second.front(), value) && entries.size() == 1;
}

void storeSetting(SettingsStorage& settings, const char* key, const PanelFrames& value) {
    storeText(settings, key, textOf(value));
}

std::string textOf(const PanelFrames& value) {
    return kivo::textOf(value.frames).toStdString();
}

bool parseText(std::string_view text, PanelFrames& value) {
    value.frames = kivo::savedFramesFrom(QString::fromUtf8(text));
    return textOf(value) == text;
}

SettingDomain domainOf(const PanelFrames&) {
    return {"lines such as 20 40 232 140 HDMI-1", {}};
}

} // namespace tokwatch
