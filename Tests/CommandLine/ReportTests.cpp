#include "Tests/CommandLine/CommandFixture.h"

namespace tokwatch::testing {

TEST_F(CommandTest, RefusesReportsOfWhatCannotBe) {
    for (const auto& [options, sentence] :
         {std::pair{"--days 3 --since 2026-03-01", "exclude each other"},
          {"--days 3 --until 2026-03-01", "exclude each other"},
          {"--since 2026-03-02 --until 2026-03-01", "--until lies before --since"},
          {"--since 2999-03-02", "lies in the future"},
          {"--until 2026-03-01", "needs --since"},
          {"--since 2026-02-30", "no day of the calendar"},
          {"--since 2026-3-1", "no day of the calendar"},
          {"--since ", "no day of the calendar"},
          {"--json --csv", "--json and --csv exclude each other"},
          {"--by year", "year"},
          {"--provider gemini", "gemini"}})
        expectRefused(("report " + std::string(options)).c_str(), sentence);
}

TEST_F(CommandTest, ReportsForPeopleProgramsAndSpreadsheets) {
    ClaudeResponse response;
    response.timestamp = formattedNow();
    response.session = R"(a \"b\", c)";
    response.model = R"(=evil\u001b[2J\u202e)";
    world.write("home/.claude/projects/p/a.jsonl", response.line());
    const Json report = json({"report", "--by", "session"});
    ASSERT_EQ(report["rows"].size(), 1U);
    const Json& row = report["rows"][0];
    EXPECT_EQ(row["session"], "a \"b\", c");
    EXPECT_EQ(row["totalTokens"], 15);
    EXPECT_TRUE(row["costUSD"].is_null());
    EXPECT_TRUE(row["project"].is_null());
    EXPECT_EQ(row["first"], response.timestamp);
    EXPECT_EQ(here({"report", "--by", "session", "--csv"}).out,
              "provider,session,project,responses,sessions,uncachedInput,cacheRead,cacheWrite5m,"
              "cacheWrite1h,output,reasoning,totalTokens,costUSD,approximate,first,last,models\r\n"
              "claude,\"a \"\"b\"\", c\",,1,1,10,0,0,0,5,0,15,,false," +
                  response.timestamp + "," + response.timestamp + ",'=evil?[2J?\r\n");
    const std::string text = here({"report", "--by", "model", "--days", "1"}).out;
    for (const char* part : {"Today  $0.00 · API estimate\n15 tokens · 1 session · 1 model\n",
                             "evil?[2J?", "—", "Excludes models without a published price"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_THAT(here({"report", "--since", "2020-01-01", "--until", "2020-01-02"}).out,
                HasSubstr("No usage: Jan 1, 2020 – Jan 2, 2020"));

    world.write("home/.grok/sessions/g/usage.json", "");
    std::filesystem::resize_file(world / "home/.grok/sessions/g/usage.json", 40'000'000);
    const ProgramResult part = here({"report"});
    EXPECT_EQ(part.status, 1);
    EXPECT_THAT(part.out, HasSubstr("  ~/.grok/sessions/g/usage.json: File too large\n"));
    EXPECT_EQ(part.err, "tokwatch: could not read ~/.grok/sessions/g/usage.json: File too large\n");
    EXPECT_EQ(here({"report", "--provider", "claude"}).status, 0);
}

TEST_F(CommandTest, ReportsByWhateverIsAskedFor) {
    world.write("home/.claude/projects/p/a.jsonl",
                ClaudeResponse{.id = "early", .timestamp = "2026-03-10T03:20:00Z"}.line() +
                    ClaudeResponse{.session = "later"}.line());
    for (const auto& [by, part] :
         {std::pair{"project", "no directory stated         2      30  <$0.01"},
          {"session",
           "session-1  —        Mar 10, 3:20 – 3:20    claude-opus-4-1-20250805      15"},
          {"hour", "Tue, Mar 10, 3:00          1      15"},
          {"day", "Tue, Mar 10         2      30"},
          {"week", "Mar 9 – Mar 15         2      30"},
          {"month", "March 2026         2      30"},
          {"block", "  no usage for 4h 0m\nTue, Mar 10, 3:00 – 8:00 "}})
        EXPECT_THAT(
            here({"report", "--since", "2026-03-09", "--until", "2026-03-11", "--by", by}).out,
            HasSubstr(part));
}

} // namespace tokwatch::testing
