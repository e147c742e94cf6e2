#include "Tests/Report/ReportFixture.h"
#include "Tests/Support/LogLines.h"
#include "Tokwatch/Report/LogAudit.h"

namespace tokwatch::testing {

struct AuditTest : LogsTest {
    /// Counted by the store: output tokens of a Claude response.
    void store(const std::string& key, std::int64_t output, const std::string& day = "2026-03-10",
               const std::string& model = "claude-opus-4-1") {
        stored.seen[responseKey(key)] = {day, ProviderID::claude};
        stored.rows.push_back(
            {ProviderID::claude, model, day, {0, 0, 0, 0, output, 0}, std::nullopt});
    }

    LogAudit audit() {
        const LogReading reading = ResponseFiles(ProviderLocations{home.path()}, KeepLines::all)
                                       .read(allCases<ProviderID>, at("2020-01-01T00:00:00Z"));
        if (hasRead) {
            for (const auto& file : reading.files) {
                const FileAttributes& attributes = file->file.attributes;
                stored.cursorTexts[file->file.path] =
                    jsonText(encode(FileCursor{{}, attributes.inode, attributes.size, {}}));
            }
        }
        return LogAudit::make(reading, stored, Calendar::utc(), "2026-01-01");
    }

    LogAudit::Stored stored;
    bool hasRead = true; ///< by the store
};

TEST_F(AuditTest, TellsWhatEachLineCameTo) {
    const std::string good = Line{"a"}.text();
    const auto but = [&good](const std::string& part, const std::string& with) {
        return std::string(good).replace(good.find(part), part.size(), with);
    };
    home.write(".claude/projects/p/a.jsonl",
               good + good + Line{"b"}.text() + "\n" + but("assistant", "user") +
                   but("\"output_tokens\":1", "\"output_tokens\":0") + but("usage", "use") +
                   but("timestamp", "time") + but(R"("id":"a")", R"("id":7)") + "[1]\n" +
                   but("claude-opus-4-1", "<synthetic>") + good.substr(0, 90) + "\n" +
                   good.substr(0, 90) + good + good.substr(0, 90));
    home.write(".claude/projects/p/s/subagents/agent-1.jsonl", good);
    home.write(".codex/sessions/old.jsonl",
               R"({"type":"event_msg","timestamp":"2026-03-10T12:00:00Z","payload":)"
               R"({"type":"token_count","info":{"total_token_usage":{}}}})"
               "\n" +
                   CodexLog::limits(3));
    home.write(".codex/sessions/new.jsonl", CodexLog::session("s") + CodexLog::usage("r", 1, 1));
    home.write(".grok/sessions/g/usage.json", grokDocument("g", 2));
    home.write(".grok/sessions/h/usage.json", R"({"sessionId":"h","turns":[{"turnNumber":1,)"
                                              R"("modelUsage":{"grok-4":{"outputTokens":1}}}]})");
    const LogAudit found = audit();
    std::string text;
    for (const LogAudit::Group& group : found.groups) {
        text += std::string(rawValue(group.provider)) + (group.isOfAgents ? "'s agents" : "") +
                ": " + std::to_string(group.files) + " files, " + std::to_string(group.responses) +
                " responses, " + std::to_string(group.repeated) + " repeated, " +
                std::to_string(group.cumulativeOnly) + " old, " +
                std::to_string(group.lines.unended) + " unended";
        for (const LineVerdict verdict : allCases<LineVerdict>)
            if (group.lines.of(verdict) > 0)
                text += ", " + std::string(rawValue(verdict)) + " " +
                        std::to_string(group.lines.of(verdict));
        text += '\n';
    }
    EXPECT_EQ(text,
              "claude: 1 files, 1 responses, 2 repeated, 0 old, 1 unended, counted 3, "
              "other 2, noUsage 2, noTime 1, unknownForm 2, synthetic 1, cut 2\n"
              "claude's agents: 1 files, 1 responses, 0 repeated, 0 old, 0 unended, counted 1\n"
              "codex: 2 files, 1 responses, 0 repeated, 1 old, 0 unended, counted 1, "
              "other 2, cumulative 1\n"
              "grok: 2 files, 2 responses, 0 repeated, 0 old, 0 unended, counted 2, "
              "noTime 1\n");
}

TEST_F(AuditTest, FindsTheReasonOfEachDifference) {
    struct Stored {
        std::string key;
        std::int64_t output;
        std::string day = "2026-03-10";
    };
    struct Case {
        const char* what;
        std::vector<Line> file;
        std::vector<Stored> stored;
        std::string differences = "";
        bool hasRead = true;
    };
    const std::string old = "2025-12-31T12:00:00Z";
    for (const Case& c :
         {Case{"all agrees", {{"a", 2}, {"a", 5}}, {{"a", 5}}},
          {"not read yet", {{"a", 5}}, {}, "2026-03-10 notReadYet -5\n", false},
          {"read and not counted", {{"a", 5}}, {}, "2026-03-10 unexplained -5\n"},
          {"too old", {{"a", 5, old}}, {}, "2025-12-31 deleted -5\n"},
          {"of another day",
           {{"a", 5}},
           {{"a", 5, "2026-03-09"}},
           "2026-03-09 otherDay 5\n2026-03-10 otherDay -5\n"},
          {"by an earlier line", {{"a", 2}, {"a", 5}}, {{"a", 2}}, "2026-03-10 earlierLine -3\n"},
          {"by an earlier line, on the day before",
           {{"a", 2}, {"a", 5}},
           {{"a", 2, "2026-03-09"}},
           "2026-03-09 otherDay 5\n2026-03-09 earlierLine -3\n2026-03-10 otherDay -5\n"},
          {"by no line that there is",
           {{"a", 2}, {"a", 5}},
           {{"a", 1}},
           "2026-03-10 unexplained -4\n"},
          {"from a file that is gone", {{"a", 5}}, {{"a", 5}, {"b", 7}}, "2026-03-10 gone 7\n"},
          {"more than a file that is gone",
           {{"a", 5}},
           {{"a", 1}, {"b", 1}},
           "2026-03-10 unexplained -3\n"}}) {
        write("p/a.jsonl", c.file);
        stored = {};
        hasRead = c.hasRead;
        for (const Stored& each : c.stored)
            store(each.key, each.output, each.day);
        const LogAudit found = audit();
        std::string differences;
        for (const auto& [key, row] : found.rows)
            for (const auto& [reason, tokens] : row.differences)
                differences += key.day + " " + std::string(rawValue(reason)) + " " +
                               std::to_string(tokens.output) + "\n";
        EXPECT_EQ(differences, c.differences) << c.what;
        EXPECT_EQ(found.isExplained(), c.differences.find("unexplained") == std::string::npos);
    }
}

} // namespace tokwatch::testing
