#include "Tests/Popover/SummaryMaker.h"
#include "Tokwatch/Views/Popover/BreakdownModel.h"

#include <QAbstractItemModelTester>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::summaryOf;
using testing::Used;

constexpr auto claude = ProviderID::claude;
constexpr auto grok = ProviderID::grok;

/// Costs that tools report are approximate.
UsageSummary example() {
    return summaryOf("2026-11-24", 30,
                     {{claude, "opus", "2026-11-23", 1'000, 7.5},
                      {grok, "grok\n\"4\", beta", "2026-11-24", 3'000, 2.5},
                      {claude, "new", "2026-11-24", 6'000, -1}});
}

const Calendar utc = Calendar::utc();

std::vector<BreakdownRow> rowsOf(const Breakdown& breakdown) {
    std::vector<BreakdownRow> rows;
    for (std::size_t at = 0; at < breakdown.count(); ++at)
        rows.push_back(breakdown.row(at));
    return rows;
}

TEST(BreakdownRows, LeadWithTheUnitAndRankByIt) {
    const std::vector<BreakdownRow> byCost =
        rowsOf(Breakdown(example(), BreakdownMode::model, SummaryUnit::cost, utc));
    ASSERT_THAT(byCost, SizeIs(3));
    EXPECT_EQ(byCost[0],
              (BreakdownRow{"claude/opus", "1", "claude", "opus", "~$7.50", "1.00K tokens", "75.0%",
                            "opus, Claude, about $7.50, 1.00K tokens, 75.0% of cost", 0.75, 0}));
    EXPECT_EQ(byCost[1].title, "grok?\"4\", beta");
    EXPECT_EQ(byCost[1].series, 2);
    EXPECT_EQ(byCost[2].value + byCost[2].share, "——");
    EXPECT_EQ(byCost[2].spoken, "new, Claude, price unknown, 6.00K tokens");

    const std::vector<BreakdownRow> byTokens =
        rowsOf(Breakdown(example(), BreakdownMode::model, SummaryUnit::tokens, utc));
    ASSERT_THAT(byTokens, SizeIs(3));
    EXPECT_EQ(byTokens[0].id, "claude/new");
    EXPECT_EQ(byTokens[0].rank, "1");
    EXPECT_EQ(byTokens[0].value, "6.00K");
    EXPECT_EQ(byTokens[0].note, "—");
    EXPECT_EQ(byTokens[2].id, "claude/opus");
}

TEST(BreakdownRows, DaysComeNewestFirstWithoutRank) {
    const std::vector<BreakdownRow> rows =
        rowsOf(Breakdown(example(), BreakdownMode::day, SummaryUnit::cost, utc));
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(
        rows[0],
        (BreakdownRow{"day/2026-11-24", "", "", "Tue, Nov 24", "$2.50", "9.00K tokens", "25.0%",
                      "Tue, Nov 24, $2.50, 9.00K tokens, 25.0% of cost", 0.25 / 0.75, 0}))
        << "its bar is a part of the largest day's";
    EXPECT_THAT(rowsOf(Breakdown(summaryOf("2026-11-24", 30, {}), BreakdownMode::day,
                                 SummaryUnit::cost, utc)),
                IsEmpty());
}

TEST(BreakdownRows, AreATableForPeopleAndOneForPrograms) {
    EXPECT_EQ(Breakdown(example(), BreakdownMode::model, SummaryUnit::cost, utc)
                  .table()
                  .aligned()
                  .toStdString(),
              "#  Provider  Model           Tokens    Cost  Share\n"
              "1  Claude    opus             1.00K  ~$7.50  75.0%\n"
              "2  Grok      grok?\"4\", beta   3.00K  ~$2.50  25.0%\n"
              "3  Claude    new              6.00K       —      —\n");
    EXPECT_EQ(Breakdown(example(), BreakdownMode::model, SummaryUnit::cost, utc)
                  .data()
                  .csv()
                  .toStdString(),
              "Provider,Model,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
              "Claude,opus,1000,7.500000,yes,0.750000,0.100000\r\n"
              "Grok,\"grok \"\"4\"\", beta\",3000,2.500000,yes,0.250000,0.300000\r\n"
              "Claude,new,6000,,no,0.000000,0.600000\r\n");
    EXPECT_EQ(Breakdown(example(), BreakdownMode::day, SummaryUnit::tokens, utc)
                  .table()
                  .aligned()
                  .toStdString(),
              "Day          Tokens   Cost  Share\n"
              "Tue, Nov 24   9.00K  $2.50  90.0%\n"
              "Mon, Nov 23   1.00K  $7.50  10.0%\n");
    EXPECT_EQ(
        Breakdown(example(), BreakdownMode::day, SummaryUnit::cost, utc).data().csv().toStdString(),
        "Day,Sessions,Tokens,Cost (USD)\r\n"
        "2026-11-24,2,9000,2.500000\r\n"
        "2026-11-23,1,1000,7.500000\r\n");
    EXPECT_THAT(
        Breakdown(summaryOf("2026-11-24", 30, {}), BreakdownMode::model, SummaryUnit::cost, utc)
            .data()
            .rows,
        IsEmpty());
}

TEST(BreakdownModel, KeepsRowsInPlaceWhileNumbersChange) {
    BreakdownModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    QStringList signalled;
    QObject::connect(&model, &QAbstractItemModel::modelReset, [&] { signalled << "reset"; });
    QObject::connect(&model, &QAbstractItemModel::rowsInserted,
                     [&](const QModelIndex&, int first, int last) {
                         signalled << QString("inserted %1-%2").arg(first).arg(last);
                     });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved,
                     [&](const QModelIndex&, int first, int last) {
                         signalled << QString("removed %1-%2").arg(first).arg(last);
                     });
    QObject::connect(&model, &QAbstractItemModel::dataChanged,
                     [&](const QModelIndex& first, const QModelIndex& last) {
                         signalled << QString("changed %1-%2").arg(first.row()).arg(last.row());
                     });
    const auto signalsOf = [&](std::optional<Breakdown> next) {
        signalled.clear();
        model.assign(std::move(next));
        return signalled;
    };
    const Breakdown three(example(), BreakdownMode::model, SummaryUnit::cost, utc);
    const Breakdown one(summaryOf("2026-11-24", 30, {{claude, "opus", "2026-11-23", 1, 1}}),
                        BreakdownMode::model, SummaryUnit::cost, utc);
    const Breakdown days(example(), BreakdownMode::day, SummaryUnit::cost, utc);
    EXPECT_THAT(signalsOf(one), ElementsAre("reset"));
    EXPECT_THAT(signalsOf(three), ElementsAre("inserted 1-2", "changed 0-0"));
    EXPECT_THAT(signalsOf(three), ElementsAre("changed 0-2"));
    EXPECT_THAT(signalsOf(one), ElementsAre("removed 1-2", "changed 0-0"));
    EXPECT_THAT(signalsOf(days), ElementsAre("reset"));
    EXPECT_EQ(model.data(model.index(0), Qt::UserRole).value<BreakdownRow>().title, "Tue, Nov 24");
    EXPECT_THAT(signalsOf(std::nullopt), ElementsAre("reset"));
    EXPECT_EQ(model.rowCount(), 0);
}

} // namespace
} // namespace tokwatch
