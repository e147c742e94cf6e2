#include "Tests/CommandLine/CommandFixture.h"
#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/StatusLine.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <array>

namespace tokwatch::testing {

const Date now = dateFromUnixSeconds(1'800'000'000);

LimitWindow window(std::string id, std::string label, double used,
                   std::optional<Date> resetsAt = {}) {
    return {std::move(id), std::move(label), used, 18'000, resetsAt, LimitSource::live()};
}

ProviderLimits limits(std::vector<LimitWindow> windows, Date fetchedAt = now) {
    return {"Max", std::move(windows), {}, ProviderStatus::ok, fetchedAt};
}

TEST(StatusLine, WritesTheTitleInEachFormat) {
    const std::string tooltip = "Claude · A & <b> 19% left\nCodex · Weekly 50% left";
    const StatusTitle shown{
        "19% · 3h 5m", ProviderID::claude, Severity::warning, tooltip, false, 19};
    EXPECT_EQ(statusLine(shown, StatusFormat::text), "19% · 3h 5m");
    EXPECT_EQ(statusLine(shown, StatusFormat::json),
              R"({"version":1,"text":"19% · 3h 5m","provider":"claude","severity":"warning",)"
              R"("tooltip":"Claude · A & <b> 19% left\nCodex · Weekly 50% left"})");
    EXPECT_EQ(statusLine(shown, StatusFormat::waybar),
              R"({"text":"19% · 3h 5m","alt":"claude","tooltip":)"
              R"("Claude · A &amp; &lt;b&gt; 19% left\nCodex · Weekly 50% left",)"
              R"("class":"warning","percentage":19})");
}

TEST(StatusLine, LetsNoTextCommandABar) {
    const StatusTitle title{"%{F-}#(id)#[dim]<i>&", ProviderID::claude, Severity::critical, "-"};
    EXPECT_EQ(statusLine(title, StatusFormat::pango),
              R"(<span foreground="#e5484d">%{F-}#(id)#[dim]&lt;i&gt;&amp;</span>)");
    EXPECT_EQ(statusLine(title, StatusFormat::polybar), "%{F#e5484d}% {F-}#(id)#[dim]<i>&%{F-}");
    EXPECT_EQ(statusLine(title, StatusFormat::tmux),
              "#[fg=white,bg=red]%{F-}##(id)##[dim]<i>&#[default]");
}

TEST(StatusLine, HasSomethingToShowWithoutAText) {
    const StatusTitle icon{{}, {}, Severity::critical, "Claude · S\033[31m 5% left\nCodex"};
    EXPECT_EQ(statusLine(icon, StatusFormat::text), "Claude · S?[31m 5% left");
    EXPECT_EQ(
        statusLine(icon, StatusFormat::json),
        R"({"version":1,"severity":"critical","tooltip":"Claude · S\u001b[31m 5% left\nCodex"})");
    EXPECT_EQ(statusLine(icon, StatusFormat::waybar),
              R"({"text":"Tokwatch","alt":"none","tooltip":"Claude · S\u001b[31m 5% left\nCodex",)"
              R"("class":"critical"})");
}

TEST(LimitsPrinter, LeavesOutWhatATerminalHasNoRoomFor) {
    const Date reset = now + Seconds{10'800};
    LimitWindow weekly = window("weekly", "Weekly · claude-opus-4-5", 0.1, reset);
    weekly.source = LimitSource::stale(now - Seconds{3600});
    LimitsByProvider known{
        {ProviderID::claude, limits({window("session", "Session", 0.5, reset), weekly})}};
    known[ProviderID::claude].status = ProviderStatus::unreachable;
    const std::vector<LimitSample> samples{{now - Seconds{3600}, 0.25, reset},
                                           {now - Seconds{1800}, 0.25, reset}};
    const RunOuts runOuts(known, {{ProviderID::claude, {{"session", samples}}}}, now,
                          Calendar::utc());
    const auto page = [&](std::size_t columns) {
        return Terminal(stdout, stderr, false, false).page(columns, [&](Terminal& terminal) {
            printLimits({{}, Calendar::utc, [] { return now; }, terminal}, PlainSettings(), known,
                        {ProviderID::claude}, runOuts);
        });
    };
    const struct {
        std::size_t columns;
        std::array<std::string, 2> lines;
    } cases[] = {
        {160,
         {"  Session                   50% left  ██████████··········  resets in 3h 0m · 11:00"
          "  Using faster than the time elapsed · runs out about 10:00",
          "  Weekly · claude-opus-4-5  90% left  ██████████████████··  resets in 3h 0m · 11:00"
          "  Using less than the time elapsed                           as of 7:00"}},
        {115,
         {"  Session                   50% left  █████·····  resets in 3h 0m · 11:00"
          "  runs out about 10:00",
          "  Weekly · claude-opus-4-5  90% left  █████████·  resets in 3h 0m · 11:00"
          "                        as of 7:00"}},
        {80,
         {"  Session                   50% left  resets in 3h 0m  runs out about 10:00",
          "  Weekly · claude-opus-4-5  90% left  resets in 3h 0m"}},
        {60,
         {"  Session   50% left  resets in 3h 0m  runs out about 10:00",
          "  Weekly …  90% left  resets in 3h 0m"}},
        {40, {"  Session   50% left  resets in 3h 0m", "  Weekly …  90% left  resets in 3h 0m"}},
    };
    for (const auto& [columns, lines] : cases)
        EXPECT_THAT(page(columns), ElementsAre("Claude · Max", lines[0], lines[1],
                                               "  Claude could not be reached."));
    EXPECT_THAT(page(28), IsSupersetOf({"  in 3h 0m", "  reached."}));
}

/// With limits in the store, as an application has left them.
struct LimitsCommandTest : CommandTest {
    void store(ProviderID provider, const ProviderLimits& stored) const {
        UsageStore(database()).setLimits(stored, provider);
    }
    void storeTwo() const {
        const LimitWindow session =
            window("session", "Session", 0.58, systemNow() + Seconds{9'930});
        ProviderLimits claude = limits({session, window("weekly", "Weekly", 0.1)}, systemNow());
        claude.credits = Credits{"Extra usage", std::nullopt, 12.34, 50, false};
        store(ProviderID::claude, claude);
        ProviderLimits codex = limits({window("session", "Session", 1)}).markedStale();
        codex.status = ProviderStatus::unreachable;
        store(ProviderID::codex, codex);
    }
};

TEST_F(LimitsCommandTest, PrintsWhatIsStored) {
    std::filesystem::create_directories(world / "home");
    EXPECT_THAT(here({"limits"}).out, HasSubstr("No limits are known yet"));
    EXPECT_EQ(here({"status"}).out, "Tokwatch\n");
    EXPECT_EQ(json({"limits"}).dump(), R"({"version":1})");
    storeTwo();
    const std::string text = here({"limits"}).out;
    EXPECT_THAT(text, StartsWith("Claude · Max\n  Session  42% left  ████████▍···········"
                                 "  resets in 2h 45m · "));
    for (const char* part : {"Using faster than the time elapsed\n  Weekly   90% left",
                             "Extra usage: $12.34 of $50.00 used", "Codex · Max", "0% left",
                             "as of Jan 15, 8:00", "Codex could not be reached."})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_EQ(here({"limits", "--provider", "codex"}).out.find("Claude"), std::string::npos);
    EXPECT_EQ(here({"status"}).out, "42% · 2h 45m\n");

    const Json all = json({"limits"});
    EXPECT_EQ(std::next(all.begin()).key(), "claude");
    EXPECT_EQ(decode<ProviderLimits>(all["codex"], DateCoding::iso8601).status,
              ProviderStatus::unreachable);
    EXPECT_EQ(all["codex"]["fetchedAt"], "2027-01-15T08:00:00Z");
    EXPECT_FALSE(json({"limits", "--provider", "codex"}).contains("claude"));
    EXPECT_EQ(json({"status"})["severity"], "critical");
    EXPECT_EQ(parseJson(here({"status", "--format", "waybar"}).out)["percentage"], 42);

    here({"preferences", "set", "pinnedProvider", "codex"});
    EXPECT_EQ(here({"status"}).out, "0%\n");
    here({"preferences", "set", "disabledProviders", "claude"});
    EXPECT_FALSE(json({"limits"}).contains("claude"));
    EXPECT_TRUE(json({"limits", "--provider", "claude"}).contains("claude"));
}

TEST_F(LimitsCommandTest, TellsWhenALimitRunsOut) {
    std::filesystem::create_directories(world / "home");
    const Date present = systemNow();
    const Date reset = present + Seconds{10'800};
    const std::filesystem::path file = database().parent_path() / "history.sqlite";
    for (const auto& [ago, used] : {std::pair{3600, 0.2}, {1800, 0.3}, {0, 0.5}}) {
        const ProviderLimits known =
            limits({window("session", "Session", used, reset)}, present - Seconds{ago});
        LimitHistory(file).record(known, ProviderID::claude);
        if (ago == 0) store(ProviderID::claude, known);
    }
    const std::string moment = json({"limits"})["claude"]["windows"][0]["runsOutAt"];
    EXPECT_NEAR(unixSeconds(*parseISO8601(moment)), unixSeconds(present) + 7200, 2);
    EXPECT_EQ(json({"status"})["runsOutAt"], moment);
    EXPECT_THAT(std::string(json({"status"})["tooltip"]), HasSubstr(" · runs out about "));
}

TEST_F(LimitsCommandTest, RefreshesWithoutALoginOrANeed) {
    std::filesystem::create_directories(world / "home");
    const ProgramResult nothing = here({"limits", "--refresh"});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_TRUE(isOneLine(nothing.err)) << nothing.err;
    world.write("home/.claude/projects/p/a.jsonl", "");
    const ProgramResult noLogin = here({"limits", "--refresh", "--json"});
    EXPECT_EQ(noLogin.status, 1);
    EXPECT_EQ(parseJson(noLogin.out)["claude"]["status"].dump(), R"({"unavailable":{}})");
    EXPECT_EQ(json({"limits"}), parseJson(noLogin.out));

    std::filesystem::remove(world / "data/Tokwatch/attempts.json");
    // The login has expired, so that nobody is asked; what was known stays to be seen.
    ProviderLimits old = limits({window("session", "Session", 0.5)});
    store(ProviderID::claude, old);
    world.write(
        "home/.claude/.credentials.json",
        R"({"claudeAiOauth":{"accessToken":"t","expiresAt":1000,"subscriptionType":"pro"}})");
    const Json merged = json({"limits", "--refresh"})["claude"];
    old = old.markedStale();
    old.status = ProviderStatus::signInNeeded;
    EXPECT_EQ(decode<ProviderLimits>(merged, DateCoding::iso8601), old);

    const ProviderLimits fresh = limits({window("session", "Session", 0.5)}, systemNow());
    store(ProviderID::claude, fresh);
    EXPECT_EQ(json({"limits", "--refresh"})["claude"]["status"].dump(), R"({"ok":{}})")
        << "a result of this minute is not asked for again";
}

TEST_F(CommandTest, GetsAndSetsPreferences) {
    EXPECT_EQ(here({"preferences", "set", "warningThreshold", "0.4"}).status, 0);
    EXPECT_EQ(here({"preferences", "get", "warningThreshold"}).out, "0.4\n");
    EXPECT_EQ(json({"preferences", "list"})["warningThreshold"], 0.4);
    EXPECT_THAT(here({"preferences"}).out, HasSubstr("warningThreshold          0.4 "));
    EXPECT_EQ(here({"preferences", "set", "notifications.quietFrom", "21:30"}).status, 0);
    EXPECT_EQ(json({"preferences"})["notifications.quietFrom"], "21:30");
    std::filesystem::remove_all(world / "config");
    world.write("config", "");
    expectFailure(here({"preferences", "set", "tintEnabled", "no"}), 1);
}

} // namespace tokwatch::testing
