#pragma once

#include "KivoUpdates/Updater.h"
#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Preferences/UpdatePreferences.h"

#include <filesystem>
#include <memory>

namespace tokwatch {

/// The updater with its settings, which asks by itself once a day while the user agrees. It is
/// there only where a feed was configured. Main thread only.
class SoftwareUpdates {
  public:
    struct Surroundings {
        std::filesystem::path settingsFile;
        kivo::UpdateFetch fetch;
        Clock now;
        Scheduler& scheduler; ///< outlives it
    };

    SoftwareUpdates(const kivo::UpdateFeed& feed, Surroundings surroundings);

    kivo::Updater& updater() { return checks; }
    UpdatePreferences& preferences() { return settings; }

  private:
    void lookSoon();

    Scheduler& scheduler;
    UpdatePreferences settings;
    kivo::Updater checks;
    QPropertyNotifier agreement;
    std::unique_ptr<ScheduledCall> soon;
    std::unique_ptr<ScheduledCall> hourly;
};

} // namespace tokwatch
