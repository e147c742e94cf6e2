#include "Tests/Views/RowChanges.h"
#include "Tests/Views/SomeSummary.h"
#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Views/Popover/Models/TableText.h"
#include "Tokwatch/Views/Popover/PopoverView.h"

#include <string>
#include <utility>
#include <vector>

namespace tokwatch::testing {
namespace {

/// Costs that tools report are approximate.
BreakdownPointer breakdown(Segment::Breakdown mode, SummaryUnit unit) {
    const UsageSummary summary =
        summaryOf("2026-11-24", 30,
                  {{ProviderID::claude, "opus", "2026-11-23", 1'000, 7.5},
                   {ProviderID::grok, "grok\n\"4\", beta", "2026-11-24", 3'000, 2.5},
                   {ProviderID::claude, "new", "2026-11-24", 6'000, -1}});
    switch (mode) {
    case Segment::ByModel:
        return breakdownByModel(summary, unit);
    case Segment::ByDay:
        return breakdownByDay(summary, unit, Calendar::utc());
    case Segment::ByProject:
        break;
    }
    ProjectUsage usage;
    usage.rows = {{"~/src/app, old", 2, {7.5, true, 1'000, 0.75, 0.1}},
                  {"", 1, {std::nullopt, false, 9'000, 0, 0.9}}};
    return breakdownByProject(usage, unit);
}

TEST(Breakdown, LeadsWithTheUnitAndRanksByIt) {
    const BreakdownPointer byCost = breakdown(Segment::ByModel, SummaryUnit::cost);
    ASSERT_EQ(byCost->count(), 3U);
    EXPECT_EQ(
        byCost->row(0),
        (BreakdownRow{"claude/opus", "1", "claude", "opus", "", "~$7.50", "1.00K tokens", "75.0%",
                      "opus, Claude, about $7.50, 1.00K tokens, 75.0% of cost", 0.75}));
    EXPECT_EQ(byCost->row(1).provider, "grok");
    EXPECT_EQ(byCost->row(2).value + byCost->row(2).share, "——");
    EXPECT_EQ(byCost->row(2).spoken, "new, Claude, price unknown, 6.00K tokens");

    const auto firstOf = [](Segment::Breakdown mode) {
        const BreakdownRow first = breakdown(mode, SummaryUnit::tokens)->row(0);
        return (first.rank + " " + first.id + " " + first.value + " " + first.note).toStdString();
    };
    EXPECT_EQ(firstOf(Segment::ByModel), "1 claude/new 6.00K —");
    EXPECT_EQ(firstOf(Segment::ByProject), "1 project/No project told 9.00K —");
    EXPECT_EQ(
        breakdown(Segment::ByDay, SummaryUnit::cost)->row(0),
        (BreakdownRow{"day/2026-11-24", "", "", "Tue, Nov 24", "", "$2.50", "9.00K tokens", "25.0%",
                      "Tue, Nov 24, $2.50, 9.00K tokens, 25.0% of cost", 0.25 / 0.75}))
        << "its bar is a part of the largest day's";
    EXPECT_EQ(breakdown(Segment::ByProject, SummaryUnit::cost)->row(0),
              (BreakdownRow{"project/~/src/app, old", "1", "", "app, old", "~/src/app, old",
                            "~$7.50", "1.00K tokens", "75.0%",
                            "~/src/app, old, about $7.50, 1.00K tokens, 75.0% of cost", 0.75}));
}

TEST(Breakdown, IsATableForPrograms) {
    EXPECT_EQ(breakdown(Segment::ByProject, SummaryUnit::cost)->data().csv().toStdString(),
              "Project,Sessions,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
              "\"~/src/app, old\",2,1000,7.500000,yes,0.750000,0.100000\r\n"
              ",1,9000,,no,0.000000,0.900000\r\n");
    EXPECT_EQ(breakdown(Segment::ByModel, SummaryUnit::cost)->data().csv().toStdString(),
              "Provider,Model,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
              "Claude,opus,1000,7.500000,yes,0.750000,0.100000\r\n"
              "Grok,\"grok \"\"4\"\", beta\",3000,2.500000,yes,0.250000,0.300000\r\n"
              "Claude,new,6000,,no,0.000000,0.600000\r\n");
}

TEST(TableText, QuotesWhatACSVReaderWouldMistake) {
    for (const auto& [field, written] : {std::pair{"opus-4.5", "opus-4.5"},
                                         {"a,b", "\"a,b\""},
                                         {"the \"best\"", "\"the \"\"best\"\"\""},
                                         {" padded ", "\" padded \""},
                                         {"two\r\nlines", "two  lines"},
                                         {"@bell\a", "\"'@bell \""},
                                         {"\u202Eevil", "\" evil\""},
                                         {"模型-😀", "模型-😀"},
                                         {"＝1", "'＝1"},
                                         {"", ""}}) {
        const TableText table{{{"Model"}, {"Tokens"}}, {{QString::fromUtf8(field), "7"}}};
        EXPECT_EQ(table.csv().toStdString(), std::string("Model,Tokens\r\n") + written + ",7\r\n");
    }
}

struct Pair {
    QString id;
    int value = 0;
    friend bool operator==(const Pair&, const Pair&) = default;
};

/// A row for each letter, capitals with another value.
std::vector<Pair> rows(const char* letters) {
    std::vector<Pair> result;
    for (const QChar letter : QString(letters))
        result.push_back({letter.toLower(), letter.isUpper() ? 7 : 0});
    return result;
}

TEST(RowModel, ChangesOnlyWhatDiffers) {
    struct Case {
        const char *before, *after, *told;
    };
    for (const Case& c : {Case{"", "abc", "+0-2 "},
                          {"abc", "", "-0-2 "},
                          {"abc", "abc", ""},
                          {"abc", "aBc", "~1-1 "},
                          {"abc", "ac", "-1-1 "},
                          {"abc", "axc", "-1-1 +1-1 "},
                          {"ab", "aab", "+1-1 "},
                          {"abcd", "dcba", "-0-3 +0-3 "},
                          {"abcd", "DabC", ">3-0 ~0-0 ~3-3 "},
                          {"abcd", "aCdB", ">1-4 ~1-1 ~3-3 "},
                          {"ab", "BA", ">0-2 ~0-0 ~1-1 "}}) {
        RowModel model;
        model.assign(rows(c.before));
        RowChanges told(model);
        model.assign(rows(c.after));
        EXPECT_EQ(told.take(), c.told) << c.before << " to " << c.after;
        EXPECT_EQ(rowsOf<Pair>(model), rows(c.after)) << c.before << " to " << c.after;
    }
}

} // namespace
} // namespace tokwatch::testing
