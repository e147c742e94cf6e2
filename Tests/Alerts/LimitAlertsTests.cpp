#include "Tokwatch/Alerts/LimitAlerts.h"

#include "Tests/App/ModelWorld.h"
#include "Tests/Support/CapturedLog.h"
#include "Tokwatch/Preferences/AlertPreferences.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Keeps what it was asked to show.
struct FakeAlertDisplay final : AlertDisplay {
    bool isThere() const override { return there; }
    void show(const Alert& alert) override {
        static constexpr std::array urgencies{"low", "normal", "critical"};
        lines.push_back(alert.title + " | " + alert.text + " | " +
                        urgencies[static_cast<std::size_t>(alert.urgency)]);
        if (onShown) onShown(alert.subject, "of " + alert.title);
    }
    void takeOver(const std::string& subject, const std::string& handle) override {
        lines.push_back(subject + " is " + handle);
    }
    void withdraw(const std::string& subject) override { lines.push_back("no " + subject); }
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    bool there = true;
    std::vector<std::string> lines;
};

/// One process over a data directory, whose clock says 23:06:40.
struct LimitAlertsTest : ::testing::Test, testing::ModelWorld {
    LimitAlertsTest() {
        makeModel();
        model->start();
        settle();
        for (const AlertKind kind : allCases<AlertKind>)
            alertPreferences.of(kind) = true;
        startAlerts();
    }
    ~LimitAlertsTest() override { alerts.reset(); }

    void startAlerts() {
        alerts.reset();
        alerts.emplace(LimitAlerts::Services{
            *model, alertPreferences, display, alertFile(), time,
            [this](std::function<void()> work) { background.push_back(std::move(work)); }});
        settle();
    }
    std::shared_ptr<AlertFile> alertFile() { return std::make_shared<AlertFile>(data.path()); }
    void know(double left, double minutesToReset = 60, const std::string& label = "Session",
              ProviderStatus status = ProviderStatus::ok) {
        ProviderLimits limits;
        limits.status = status;
        limits.fetchedAt = time.now();
        limits.windows = {{"session", label, 1 - left, 18'000.0,
                           time.now() + Seconds{60 * minutesToReset}, LimitSource::live()}};
        model->apply(limits, ProviderID::claude);
        settle();
    }

    AlertPreferences alertPreferences{settingsFile(data / "Notifications.conf")};
    FakeAlertDisplay display;
    std::optional<LimitAlerts> alerts;
};

TEST_F(LimitAlertsTest, SaysWhatHowMuchAndWhenItResets) {
    know(0.25, 72.1);
    EXPECT_THAT(display.take(), ElementsAre("Claude · Session 25% left | "
                                            "Resets in 1h 12m · Sat 0:19 | normal"));
    know(0.08, 72.1, "Sess\x1B[1m");
    EXPECT_THAT(display.take(), ElementsAre("Claude · Sess?[1m 8% left | "
                                            "Resets in 1h 12m · Sat 0:19 | critical"));
    know(0, 72.1);
    EXPECT_THAT(
        display.take(),
        ElementsAre("Claude · Session is used up | Resets in 1h 12m · Sat 0:19 | critical"));
    know(0, 72.1, "Session", ProviderStatus::signInNeeded);
    EXPECT_THAT(display.take(), ElementsAre("Claude · Sign-in needed | The login has expired. "
                                            "Using Claude Code renews it. | normal"));
    time.jump(Seconds{73 * 60});
    know(1, 300.1);
    EXPECT_THAT(display.take(),
                ElementsAre("no claude/", "Claude · Session has reset | 100% left · "
                                          "resets in 5h 0m · 5:20 | low"));
}

TEST_F(LimitAlertsTest, TellsOnceAcrossProcesses) {
    model->setRole(Role::showing);
    know(0.1);
    EXPECT_THAT(display.take(), IsEmpty()) << "another process works";
    model->setRole(Role::working);
    display.there = false;
    advance(30);
    EXPECT_THAT(display.take(), IsEmpty());
    display.there = true;
    display.onArrival();
    settle();
    EXPECT_THAT(display.take(), ElementsAre(HasSubstr("10% left")));
    // Another process over the same data tells of what is new meanwhile.
    holdBackground = true;
    know(0);
    alertFile()->edit([this](ToldAlerts& told) {
        told.push_back({{ProviderID::claude, "session"},
                        AlertKind::usedUp,
                        time.now(),
                        time.now() + Seconds{3600}});
    });
    holdBackground = false;
    settle();
    EXPECT_THAT(display.take(), IsEmpty());
}

TEST_F(LimitAlertsTest, GoesOnWithWhatAnEarlierProcessShowed) {
    know(0.1);
    know(0);
    know(0, 60, "Session", ProviderStatus::signInNeeded);
    display.take();
    startAlerts();
    EXPECT_THAT(display.take(), ElementsAre("claude/ is of Claude · Sign-in needed",
                                            "claude/session is of Claude · Session is used up"))
        << "both still hold, and stay";
    alerts.reset();
    time.jump(Seconds{3600});
    know(1, 300.1);
    startAlerts();
    EXPECT_THAT(display.take(), ElementsAre("claude/ is of Claude · Sign-in needed",
                                            "claude/session is of Claude · Session is used up",
                                            HasSubstr("has reset"), "no claude/"));
}

TEST_F(LimitAlertsTest, TakesAwayWhatHoldsNoMoreAndFollowsTheSettings) {
    alertPreferences.reset = false;
    preferences->disabledProviders = {ProviderID::claude};
    know(0.1);
    EXPECT_THAT(display.take(), IsEmpty());
    preferences->disabledProviders = {};
    alertPreferences.quietFrom = TimeOfDay{23 * 60};
    alertPreferences.quietUntil = TimeOfDay{23 * 60 + 10};
    alertPreferences.quietHours = true; // it is 23:06
    settle();
    EXPECT_THAT(display.take(), IsEmpty());
    advance(240);
    EXPECT_THAT(display.take(), ElementsAre(HasSubstr("10% left")));
    time.jump(Seconds{3600});
    know(1, 300);
    EXPECT_THAT(display.take(), ElementsAre("no claude/session"));
}

TEST(AlertFile, GoesOnWithWhateverStandsInItsPlace) {
    const testing::TemporaryDirectory directory;
    const ToldAlert told{{ProviderID::codex, "weekly"},
                         AlertKind::reset,
                         dateFromUnixSeconds(1'768'000'000.5),
                         dateFromUnixSeconds(1'768'003'600),
                         true,
                         "a handle"};
    const auto read = [](auto&& file) {
        ToldAlerts all;
        file.edit([&](ToldAlerts& kept) { all = kept; });
        return all;
    };
    for (const char* nonsense :
         {"[{", "{}", R"([{"provider": "codex", "window": "", "kind": "x", "toldAt": 1}])"}) {
        directory.write("alerts.json", nonsense);
        AlertFile(directory.path()).edit([&](ToldAlerts& all) { all.push_back(told); });
        EXPECT_THAT(read(AlertFile(directory.path())), ElementsAre(told)) << nonsense;
    }
    const std::string others = directory.read("alerts.json");
    directory.write("alerts.json", R"([{"provider":"codex","kind":"later"},)" + others.substr(1));
    EXPECT_THAT(read(AlertFile(directory.path())), ElementsAre(told)) << "the others count";
    std::filesystem::remove(directory / "alerts.json");
    directory.write("alerts.json/below", "");
    const testing::CapturedLog log;
    AlertFile file(directory.path(), std::chrono::milliseconds(0));
    file.edit([&](ToldAlerts& all) { all.push_back(told); });
    EXPECT_THAT(read(file), ElementsAre(told)) << "kept in memory";
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("cannot note what was told")));
    std::filesystem::remove_all(directory / "alerts.json");
    read(file);
    EXPECT_THAT(read(AlertFile(directory.path())), ElementsAre(told)) << "as soon as that goes";
}

} // namespace
} // namespace tokwatch
