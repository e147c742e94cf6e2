#include "Tokwatch/Display/StatusTitle.h"

#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using enum ProviderID;

const Date now = dateFromUnixSeconds(1'773'147'600);

/// A window with so much left, which resets so many seconds from now.
LimitWindow window(const std::string& id, double left, std::optional<double> resetsIn = {}) {
    LimitWindow made;
    made.id = id;
    made.label = "The " + id;
    made.usedFraction = 1 - left;
    if (resetsIn) made.resetsAt = now + Seconds{*resetsIn};
    made.source = LimitSource::live();
    return made;
}

class StatusTitleTest : public ::testing::Test {
    testing::TemporaryDirectory directory;

  protected:
    Preferences preferences{settingsFile(directory / "settings.conf")};
    /// Of now, as far as they are known.
    LimitsByProvider limits{{claude, fetched(now)}, {codex, fetched(now)}, {grok, fetched(now)}};

    static ProviderLimits fetched(Date when) {
        ProviderLimits made;
        made.fetchedAt = when;
        return made;
    }
    StatusTitle title() const { return statusTitle(preferences.plain(), limits, now); }
    std::vector<LimitStep> steps() const {
        return statusContent(preferences.plain(), limits, now).steps;
    }
};

TEST_F(StatusTitleTest, ShowsThePinnedProvidersTightestWindow) {
    limits[claude].windows = {window("week", 0.75, 200'000), window("session", 0.5, 11'100)};
    limits[codex].windows = {window("week", 0.3)};
    EXPECT_EQ(title(), (StatusTitle{"50% · 3h 5m", claude, Severity::normal,
                                    "Claude · The session 50% left · resets in 3h 5m\n"
                                    "Codex · The week 30% left",
                                    false, 50}));
    preferences.showResetTime = false;
    EXPECT_EQ(title().text, "50%");
    preferences.pinnedProvider = codex;
    preferences.showResetTime = true;
    EXPECT_EQ(title().text, "30%"); // no reset time to show
}

TEST_F(StatusTitleTest, TellsWhatRunsOutBeforeItsReset) {
    limits[claude].windows = {window("session", 0.5, 10'800), window("week", 0.25, 200'000)};
    limits[claude].windows[0].duration = 18'000;
    preferences.menuBarWindows = WindowChoices{{"claude", "session"}};
    const std::optional<Date> reset = limits[claude].windows[0].resetsAt;
    const std::vector<LimitSample> samples{{now - Seconds{3600}, 0.25, reset},
                                           {now - Seconds{1800}, 0.25, reset}};
    const SamplesByProvider known{{claude, {{"session", samples}}}};
    const RunOuts runOuts(limits, known, now, Calendar::utc());
    const StatusContent content = statusContent(preferences.plain(), limits, now, runOuts);
    EXPECT_EQ(content.title.runsOutAt, now + Seconds{7200});
    EXPECT_EQ(content.steps[0].title.tooltip,
              "Claude · The session 50% left · resets in 3h 0m · runs out about 15:00");
    EXPECT_EQ(content.steps[1].title.runsOutAt, std::nullopt);
    EXPECT_EQ(content.title.tooltip, "Claude · The week 25% left · resets in 2d 7h");
    EXPECT_FALSE(runOuts.lasts(claude, "session"));
    limits[claude].windows[0].usedFraction = 0.25;
    EXPECT_TRUE(RunOuts(limits, known, now, Calendar::utc()).lasts(claude, "session"));
    EXPECT_FALSE(RunOuts(limits, {}, now, Calendar::utc()).lasts(claude, "session"));
}

TEST_F(StatusTitleTest, IsOldWithWhatItShows) {
    for (const double age : {900.0, 901.0}) {
        limits[claude] = fetched(now - Seconds{age});
        limits[claude].windows = {window("session", 0.5)};
        EXPECT_EQ(title().isOld, age > 900);
        limits[claude].windows[0].source = LimitSource::stale(now - Seconds{age});
        limits[claude].fetchedAt = now;
        EXPECT_EQ(steps().front().title.isOld, age > 900);
    }
}

TEST_F(StatusTitleTest, HasNothingToShow) {
    EXPECT_EQ(title(), (StatusTitle{std::nullopt, claude, Severity::normal, "Tokwatch"}));
    limits[claude].windows = {window("session", 0)};
    preferences.menuBarStyle = MenuBarStyle::icon;
    EXPECT_EQ(title(), (StatusTitle{std::nullopt, std::nullopt, Severity::critical,
                                    "Claude · The session 0% left"}));
    preferences.menuBarStyle = MenuBarStyle::provider;
    preferences.disabledProviders = ProviderSet{claude, codex, grok, cursor};
    EXPECT_EQ(title(), (StatusTitle{std::nullopt, std::nullopt, Severity::normal, "Tokwatch"}));

    limits[codex].windows = {window("week", 0.25)};
    preferences.providerOrder = ProviderList{claude, codex};
    preferences.disabledProviders = ProviderSet{claude};
    EXPECT_EQ(title(), (StatusTitle{"25%", codex, Severity::warning, "Codex · The week 25% left",
                                    false, 25}))
        << "the first one that is enabled";
}

TEST_F(StatusTitleTest, HasTheFirstNumberUntilSomebodyChooses) {
    limits[codex].windows = {window("week", 0.5)};
    EXPECT_EQ(title().provider, codex);
    EXPECT_TRUE(steps().front().isUsual);
    limits[claude].windows = {window("session", 0.75)};
    EXPECT_EQ(title().provider, claude);
    limits[claude].windows.clear();
    preferences.pinnedProvider = claude;
    EXPECT_EQ(title().text, std::nullopt);
}

TEST_F(StatusTitleTest, ChoosesTheWindow) {
    limits[claude].windows = {window("a", 0.5, 60), window("b", 0.25, 60), window("c", 0.25, 60),
                              window("old", 0.1, 0)};
    EXPECT_EQ(menuBarWindow(preferences.plain(), claude, limits[claude], now)->id, "b");
    preferences.menuBarWindows = WindowChoices{{"claude", "a"}, {"codex", "b"}};
    EXPECT_EQ(title().text, "50% · 1m");
    EXPECT_EQ(title().tooltip,
              "Claude · The b 25% left · resets in 1m"); // the tightest all the same
    preferences.menuBarWindows = WindowChoices{{"claude", "gone"}};
    EXPECT_EQ(title().text, "25% · 1m");

    limits[claude].windows = {window("old", 0.1, 0), window("older", 0, -60)};
    EXPECT_EQ(title(), (StatusTitle{"100% · now", claude, Severity::normal,
                                    "Claude · The old 100% left", false, 100}));
}

TEST_F(StatusTitleTest, TintsByTheLeastOfAllEnabledProviders) {
    limits[grok].windows = {window("week", 0)};
    preferences.disabledProviders = ProviderSet{grok};
    for (const auto& [claudeLeft, expected] : {std::pair{0.5, Severity::normal},
                                               {0.25, Severity::warning},
                                               {0.125, Severity::warning},
                                               {0.0625, Severity::critical},
                                               {0.0, Severity::critical}}) {
        limits[claude].windows = {window("session", claudeLeft)};
        limits[codex].windows = {window("week", 0.75)};
        EXPECT_EQ(title().severity, expected) << claudeLeft;
    }
    preferences.warningThreshold = 0.6;
    preferences.criticalThreshold = 0.5;
    limits[claude].windows = {window("session", 0.5)};
    limits[codex].windows = {window("week", 0.1), window("month", 0.9)};
    preferences.menuBarWindows = WindowChoices{{"codex", "month"}};
    EXPECT_EQ(title().severity, Severity::critical); // at the level; only menu-bar windows count
    preferences.criticalThreshold = 0.4;
    EXPECT_EQ(title().severity, Severity::warning);
    preferences.tintEnabled = false;
    EXPECT_EQ(title().severity, Severity::normal);
}

TEST_F(StatusTitleTest, StepsThroughTheWindowsOfEnabledProviders) {
    limits[claude].windows = {window("session", 0.5), window("week", 0.75)};
    limits[codex].windows = {window("session", 0.25)};
    limits[grok].windows = {window("week", 0.5)};
    preferences.providerOrder = ProviderList{codex, claude};
    preferences.disabledProviders = ProviderSet{grok};
    preferences.menuBarStyle = MenuBarStyle::icon;
    const auto step = [](ProviderID provider, const char* id, bool isUsual, const char* shown,
                         int percent, Severity severity) {
        const std::string line = std::string(displayName(provider)) + " · " + shown + " left";
        return LimitStep{provider, id, isUsual, {shown, provider, severity, line, false, percent}};
    };
    using enum Severity;
    EXPECT_THAT(steps(), ElementsAre(step(codex, "session", false, "The session 25%", 25, warning),
                                     step(claude, "session", true, "The session 50%", 50, normal),
                                     step(claude, "week", false, "The week 75%", 75, normal)));
}

} // namespace
} // namespace tokwatch
