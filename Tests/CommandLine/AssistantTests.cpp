#include "Tests/CommandLine/CommandFixture.h"
#include "Tokwatch/CommandLine/Assistant/AssistantLine.h"
#include "Tokwatch/CommandLine/Assistant/LocalReading.h"
#include "TokwatchCore/Records/ClaudeWindows.h"
#include "TokwatchCore/Store/UsageStore.h"

namespace tokwatch {
namespace {

using testing::CommandTest;
using ::testing::HasSubstr;

const Date now = dateFromUnixSeconds(1'800'000'000);

Date at(double seconds) {
    return now + Seconds{seconds};
}

LimitWindow session(double percent, LimitSource source, std::optional<Date> reset = at(5'000)) {
    return ClaudeWindows::session(percent, reset, std::move(source));
}

LimitWindow week(double percent, LimitSource source, std::optional<Date> reset = at(90'000)) {
    return ClaudeWindows::weekly(percent, reset, std::move(source));
}

LimitWindow opus(LimitSource source) {
    return {"weekly.opus", "Weekly · Opus", 0.7, 604'800, at(90'000), std::move(source)};
}

LimitSource told(double seconds) {
    return LimitSource::local(at(seconds));
}

TEST(LocalReading, ReplacesWhatIsOlderAndLosesNothingElse) {
    const LimitSource live = LimitSource::live();
    const LimitSource wasLive = LimitSource::stale(at(-100));
    struct Case {
        const char* what;
        std::vector<LimitWindow> stored; ///< in a record of 100 s ago
        std::vector<LimitWindow> told;
        std::vector<LimitWindow> expected; ///< none where nothing is to be stored
    };
    const std::vector<Case> cases{
        {"an older live one",
         {session(1, live), week(2, live), opus(live)},
         {session(3, told(-5)), week(2, told(-5))},
         {session(3, told(-5)), week(2, told(-5)), opus(live)}},
        {"a newer live one",
         {session(9, live), week(9, live)},
         {session(3, told(-101)), week(3, told(-101))},
         {}},
        {"one window alone",
         {session(1, live), week(2, live)},
         {week(3, told(0))},
         {session(1, wasLive), week(3, told(0))}},
        {"a window that is new to us",
         {week(2, live), opus(live)},
         {session(3, told(0))},
         {session(3, told(0)), week(2, wasLive), opus(wasLive)}},
        {"the same again", {session(1, told(-30))}, {session(1, told(0))}, {}},
        {"the same a minute later",
         {session(1, told(-60))},
         {session(1, told(0))},
         {session(1, told(0))}},
        {"the same of a failed fetch's",
         {session(1, wasLive)},
         {session(1, told(-90))},
         {session(1, told(-90))}},
        {"less of the same window, by a session that idles",
         {session(5, told(-10)), week(5, told(-10))},
         {session(1, told(-5)), week(1, told(-5), std::nullopt)},
         {}},
        {"the same, rounded",
         {session(5.5, wasLive)},
         {session(5, told(-5))},
         {session(5, told(-5))}},
        {"an earlier window", {session(5, told(-10))}, {session(9, told(-5), at(1'000))}, {}},
        {"less of the next window",
         {session(5, told(-10))},
         {session(1, told(-5), at(20'000))},
         {session(1, told(-5), at(20'000))}},
        {"of a window that is over", {session(5, told(-10))}, {session(99, told(0), at(-1))}, {}},
        {"without its reset",
         {session(5, told(-10))},
         {session(6, told(0), std::nullopt)},
         {session(6, told(0))}},
        {"one dated ahead", {session(5, told(10))}, {session(6, told(0))}, {session(6, told(0))}},
        {"none", {session(5, told(-10))}, {}, {}},
    };
    for (const Case& each : cases) {
        const ProviderLimits stored{"Max", each.stored, Credits{"Extra usage", {}, 1, 2, false},
                                    ProviderStatus::rateLimited, at(-100)};
        const std::optional<ProviderLimits> changed = withLocalReading(stored, each.told, now);
        ASSERT_EQ(changed.has_value(), !each.expected.empty()) << each.what;
        if (!changed) continue;
        std::vector<LimitWindow> expected = each.expected;
        // What was live is so no longer in a record of another date.
        for (LimitWindow& window : expected)
            if (window.source == live) window.source = wasLive;
        EXPECT_EQ(changed->windows, expected) << each.what;
        EXPECT_EQ(changed->plan, "Max");
        EXPECT_EQ(changed->credits, stored.credits);
        EXPECT_EQ(changed->status, ProviderStatus::ok);
        EXPECT_GT(changed->fetchedAt, stored.fetchedAt) << each.what;
    }
    using enum ProviderStatus;
    for (const auto& [found, expected] :
         {std::pair{signInNeeded, signInNeeded}, {accessDenied, accessDenied}, {unavailable, ok}}) {
        const ProviderLimits stored{{}, {session(5, wasLive)}, {}, found, at(-100)};
        EXPECT_EQ(withLocalReading(stored, std::array{session(6, told(0))}, now)->status, expected)
            << "what is wrong with the login only a fetch finds to be so no longer";
    }
}

TEST(AssistantLine, TellsWhatIsKnown) {
    SessionStatus status{"Op\033us", 0.425, 1.234, {}, now};
    const ProviderLimits limits{
        {}, {session(42, told(0)), week(81, told(0))}, {}, ProviderStatus::ok, now};
    const auto line = [](const AssistantFacts& facts, const std::vector<LinePart>& parts,
                         bool colour) {
        const Terminal terminal(stdout, stderr, false, colour);
        return assistantLine(facts, parts, {}, terminal, now);
    };
    const std::vector<LinePart> all(allCases<LinePart>.begin(), allCases<LinePart>.end());
    EXPECT_EQ(line({status, limits, UsageAmount{12.4, 5}}, all, false),
              "Op?us · context 42% · $1.23 · Session 58% left (1h 23m) · "
              "Weekly 19% left (1d 1h) · today $12.40");
    EXPECT_EQ(line({status, limits, {}}, {LinePart::week, LinePart::cost}, true),
              "\033[33mWeekly 19% left (1d 1h)\033[0m · $1.23");
    EXPECT_EQ(line({SessionStatus{}, {}, {}}, all, true), "Tokwatch");
    EXPECT_EQ(line({{}, {}, UsageAmount{0, 0}}, all, true), "Tokwatch · today $0.00");
    ProviderLimits old = limits;
    old.windows = {session(42, told(-901))};
    EXPECT_EQ(line({status, old, {}}, {LinePart::session}, true),
              "\033[2mSession 58% left (1h 23m)\033[0m");
}

/// As the assistant runs it.
struct StatuslineTest : CommandTest {
    testing::ProgramResult line(const std::string& input,
                                std::vector<std::string> options = {}) const {
        options.insert(options.begin(), "statusline");
        return here(options, input);
    }
    std::optional<ProviderLimits> stored() const {
        return UsageStore(database()).limits(ProviderID::claude);
    }
};

TEST_F(StatuslineTest, PrintsALineWhateverItIsTold) {
    const std::string megabyte(1 << 20, '[');
    const std::string megabyteOfKeys = [] {
        std::string text = "{";
        for (int i = 0; text.size() < (1 << 20); ++i)
            text += "\"key" + std::to_string(i) + "\":{\"a\":[1]},";
        return text + R"("model":{"display_name":"Opus"}})";
    }();
    for (const auto& [input, expected] : std::vector<std::pair<std::string, std::string>>{
             {" ", "Tokwatch"},
             {"[]", "Tokwatch"},
             {"{", "Tokwatch"},
             {megabyte, "Tokwatch"},
             {R"({"model":)" + megabyte, "Tokwatch"},
             {std::string(5 << 20, ' '), "Tokwatch"},
             {"{}", "Tokwatch"},
             {R"({"model":null,"cost":{"total_cost_usd":"1"},"rate_limits":{"five_hour":7}})",
              "Tokwatch"},
             {"{\"model\":{\"display_name\":\"O\xff\"},\"x\":\"\\\\\\ud83d\\ude00\\ud83d\"}",
              "\033[1mO?\033[0m"},
             {R"({"model":"Opus","cost":3,"context_window":{"used_percentage":1e300}})",
              "context 100%"},
             {R"({"model":{"id":"claude-opus"},"cost":{"total_cost_usd":0}})",
              "\033[1mclaude-opus\033[0m · $0.00"},
             {megabyteOfKeys, "\033[1mOpus\033[0m"},
         }) {
        const testing::ProgramResult result = line(input);
        EXPECT_EQ(result.status, 0) << input.substr(0, 80);
        EXPECT_EQ(result.out, expected + '\n') << input.substr(0, 80);
        EXPECT_EQ(result.err, "");
    }
    EXPECT_FALSE(std::filesystem::exists(database())) << "nothing was told that is to be stored";
    EXPECT_EQ(line(R"({"cost":{"total_cost_usd":1}})", {"--format", "modle,cost"}).out,
              "$1.00 · no part is called \"modle\", only model, context, cost, session, week, "
              "today\n");
    EXPECT_EQ(line("{}", {"--colour"}).status, 2);
}

TEST_F(StatuslineTest, StoresWhatItIsToldOfLimits) {
    const std::string reset = std::to_string(std::lround(unixSeconds(systemNow())) + 7'230);
    const std::string status = R"({"rate_limits":{"five_hour":{"used_percentage":92,"resets_at":)" +
                               reset + R"(},"seven_day":null}})";
    EXPECT_EQ(line(status).out, "\033[31mSession 8% left (2h 0m)\033[0m\n");
    ASSERT_TRUE(stored());
    EXPECT_EQ(stored()->windows.size(), 1U);
    EXPECT_EQ(stored()->windows[0].resetsAt, dateFromUnixSeconds(std::stod(reset)));
    EXPECT_TRUE(std::holds_alternative<LimitSource::Local>(stored()->windows[0].source.value));

    // A transcript tells how old the assistant's own numbers are.
    const ProviderLimits fresh{{},
                               {ClaudeWindows::session(50, {}, LimitSource::live())},
                               {},
                               ProviderStatus::ok,
                               systemNow()};
    UsageStore(database()).setLimits(fresh, ProviderID::claude);
    world.write("old.jsonl", "");
    std::filesystem::last_write_time(
        world / "old.jsonl", std::filesystem::file_time_type::clock::now() - std::chrono::hours{1});
    const std::string idle = status.substr(0, status.size() - 1) + R"(,"transcript_path":")" +
                             (world / "old.jsonl").string() + "\"}";
    EXPECT_EQ(line(idle, {"--format", "session"}).out, "\033[32mSession 50% left\033[0m\n");
    EXPECT_EQ(stored(), fresh);
    EXPECT_EQ(parseJson(line(status, {"--json"}).out)["limits"]["windows"][0]["usedFraction"],
              0.92);

    // Without a store that can be used there is a line all the same.
    std::filesystem::remove_all(world / "data");
    world.write("data/Tokwatch/usage.sqlite", "no database at all, but longer than its header is");
    const testing::ProgramResult broken = line(status, {"--format", "today,session"});
    EXPECT_EQ(broken.status, 0);
    EXPECT_EQ(broken.out, "\033[31mSession 8% left (2h 0m)\033[0m\n");
}

} // namespace
} // namespace tokwatch
