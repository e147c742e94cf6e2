#pragma once

#include "KivoLaunch/LoginItem.h"
#include "Tests/App/ModelWorld.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Settings/SettingsPlaces.h"

#include <string>
#include <vector>

namespace tokwatch::testing {

/// A model with what the settings touch besides.
class SettingsWorld : public ModelWorld {
  public:
    SettingsWorld() { makeModel(); }

    /// Limits of two windows, of which so much is left.
    void knowLimits(ProviderID provider, double sessionLeft, double weeklyLeft) {
        ProviderLimits limits = someLimits(time.now(), 1 - sessionLeft);
        limits.windows.push_back(
            {"weekly", "Weekly", 1 - weeklyLeft, 604'800.0, std::nullopt, LimitSource::live()});
        model->apply(limits, provider);
        settle();
    }
    /// As another process does it.
    template<typename Change>
    void changeElsewhere(Change change) {
        preferences->save();
        const auto file = settingsFile(data / "settings.conf");
        Preferences others(*file);
        change(others);
        others.save();
        preferences->reload();
        settle();
    }

    ViewClock clock{time.clock()};
    kivo::LoginItem loginItem{home / ".config/autostart",
                              {"app.tokwatch", "Tokwatch", "", {"/usr/bin/tokwatch"}, ""}};
    std::vector<std::string> opened; ///< addresses, in order
    SettingsPlaces places{
        home / ".local/share/Tokwatch/usage.sqlite", home / ".config/Tokwatch/Tokwatch.conf",
        loginItem, [this](const QUrl& url) { opened.push_back(url.toString().toStdString()); }};
};

} // namespace tokwatch::testing
