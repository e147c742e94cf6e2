#pragma once

#include "Tokwatch/Preferences/SettingsGroup.h"
#include "TokwatchCore/Support/Date.h"

#include <QByteArray>

#include <filesystem>
#include <memory>
#include <optional>

namespace tokwatch {

/// Whether the user agreed that a feed is asked for new versions, and what it told. Main thread
/// only.
class UpdatePreferences final : public SettingsGroup {
  public:
    explicit UpdatePreferences(std::unique_ptr<SettingsStorage> settings);

    /// Nobody agreed as long as nobody said so.
    Setting<bool> agreed;

    /// No settings, but kept with them.
    struct Memory {
        std::optional<Date> lastCheck;
        std::optional<Date> lastDateSeen; ///< of the feed's newest manifest
        QByteArray manifest;              ///< that one as it came, with its signature
        QByteArray signature;
    };
    Memory memory() const;
    void setMemory(const Memory& memory);
};

/// Updates.conf beside the file of the Preferences.
std::filesystem::path updateSettingsPath();

} // namespace tokwatch
