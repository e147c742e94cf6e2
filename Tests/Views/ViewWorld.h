#pragma once

#include "KivoLaunch/LoginItem.h"
#include "Tests/App/ModelWorld.h"
#include "Tests/Views/FakeHotKey.h"
#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "Tokwatch/Views/Common/RowModel.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Settings/SettingsPlaces.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace tokwatch::testing {

template<typename Row>
std::vector<Row> rowsOf(const RowModel& model) {
    std::vector<Row> rows;
    for (int at = 0; at < model.count(); ++at)
        rows.push_back(model.data(model.index(at), Qt::UserRole).value<Row>());
    return rows;
}

/// A model at noon of Tuesday, 24 November 2026, with what windows need besides; these files are in
/// the home.
class ViewWorld : public ModelWorld {
  public:
    explicit ViewWorld(std::initializer_list<const char*> files = {})
        : ModelWorld(*parseISO8601("2026-11-24T12:00:00Z")) {
        for (const char* file : files)
            home.write(file, "");
        makeModel();
    }

    /// A thousand tokens, priced by their tool.
    static UsageEvent event(const std::string& moment, double costUSD,
                            const std::string& modelName = "opus",
                            ProviderID provider = ProviderID::claude) {
        const std::string key = moment + modelName + std::string(rawValue(provider));
        return {provider, modelName, key, key, *parseISO8601(moment), {.output = 1000}, costUSD};
    }
    void use(const std::vector<UsageEvent>& events) {
        store->ingest(events, Calendar::utc());
        model->publish();
        settle();
    }
    /// Limits of two windows, of which so much is left.
    void knowLimits(ProviderID provider, double sessionLeft, double weeklyLeft) {
        ProviderLimits limits = someLimits(time.now(), 1 - sessionLeft);
        limits.windows.push_back(
            {"weekly", "Weekly", 1 - weeklyLeft, 604'800.0, std::nullopt, LimitSource::live()});
        model->apply(limits, provider);
        settle();
    }
    /// What shows changes with the clock.
    void pass(Seconds duration) {
        time.jump(duration);
        clock.advance();
        settle();
    }

    ViewClock clock{time.clock()};
    kivo::LoginItem loginItem{home / ".config/autostart",
                              {"app.tokwatch", "Tokwatch", "", {"/usr/bin/tokwatch"}, ""}};
    AlertPreferences alertPreferences{settingsFile(data / "Notifications.conf")};
    WidgetPreferences widgetPreferences{settingsFile(data / "Widget.conf")};
    DesktopPreferences desktopPreferences{settingsFile(data / "Desktop.conf")};
    ChosenHotKey hotKey{desktopPreferences, FakeHotKey::make};
    SettingsPlaces places{home / ".local/share/Tokwatch/usage.sqlite",
                          home / ".config/Tokwatch/Tokwatch.conf",
                          alertPreferences,
                          desktopPreferences,
                          widgetPreferences,
                          hotKey,
                          QStringLiteral("tokwatch"),
                          loginItem,
                          [](const QUrl&) {}};
};

} // namespace tokwatch::testing
