#include "Tokwatch/Widget/WidgetDisplay.h"

#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using enum ProviderID;
using enum WidgetSize;

const Date now = *parseISO8601("2026-11-24T12:00:00Z");
const LimitSource hoursOld = LimitSource::stale(now - Seconds{7200});

/// A window with so much left, which resets so many seconds from now.
LimitWindow window(const char* label, double left, double resetsIn,
                   LimitSource source = LimitSource::live()) {
    return {label, label, 1 - left, {}, now + Seconds{resetsIn}, source};
}

Snapshot::Provider provider(ProviderID id, std::vector<LimitWindow> windows,
                            ProviderStatus status = ProviderStatus::ok) {
    return {id, {}, std::move(windows), {}, status, 0, 0, false};
}

TEST(WidgetDisplay, ChoosesAndOrdersWhatItHasRoomFor) {
    const std::vector<LimitWindow> five{window("A", 0.5, 9000), window("B", 0.9, 9000),
                                        window("C", 0.1, 800), window("D", 0.4, 9000),
                                        window("E", 0.3, 9000)};
    const Snapshot::Provider nobody = provider(grok, {}, ProviderStatus::unavailable);
    const Snapshot::Provider expired = provider(codex, {}, ProviderStatus::signInNeeded);
    struct Case {
        WidgetSize size;
        std::vector<Snapshot::Provider> providers;
        const char* spoken;
        double hours = 0; ///< that the snapshot is old
    };
    const std::vector<Case> cases{
        {small, {}, "Today $3. Last 30 days $12."},
        {small, {}, "Nov 23 $3. Last 30 days $12. Updated 15 h ago.", 15},
        {small, {nobody, expired}, "Today $3. Last 30 days $12."},
        // The tightest of all, the first of equals; what resets within a quarter of an hour last.
        {small,
         {provider(claude, {window("A", 0.4, 9000), window("B", 0.3, 9000)}),
          provider(codex, {window("C", 0.3, 9000)})},
         "Claude. B 30% left, resets in 2h 30m."},
        {small,
         {provider(claude, {window("A", 0.02, 900), window("B", 0.6, 90'000)})},
         "Claude. B 60% left, resets in 1d 1h. A 2% · full in 15m."},
        {small,
         {provider(claude, {window("A", 0.02, 901), window("B", 0.6, 90'000)})},
         "Claude. A 2% left, resets in 15m."},
        {small,
         {provider(claude, {window("A", 0.02, 60), window("B", 0.01, -60)})},
         "Claude. A 2% left, resets in 1m."},
        {small, {provider(claude, {window("A", 0.01, -60)})}, "Claude. A 100% left, has reset."},
        {small,
         {provider(claude, {window("A", 0.2, 9000, hoursOld)})},
         "Claude. A 20% left, resets in 2h 30m. As of 10:00."},
        // In turns what room there is, of each the tightest, in its own order.
        {medium,
         {provider(claude, five), nobody, provider(codex, five)},
         "Claude. A 50% left, resets in 2h 30m. D 40% left, resets in 2h 30m. E 30% left, resets "
         "in 2h 30m. Codex. D 40% left, resets in 2h 30m. E 30% left, resets in 2h 30m."},
        {medium,
         {expired, provider(claude, {window("A", 0.5, 9000)})},
         "Codex. sign-in needed. Claude. A 50% left, resets in 2h 30m. Updated 1 h ago.",
         1},
        {large,
         {provider(claude, five), provider(claude, {}), provider(codex, five)},
         "Claude. A 50% left, resets in 2h 30m. D 40% left, resets in 2h 30m. E 30% left, resets "
         "in 2h 30m. Codex. D 40% left, resets in 2h 30m. E 30% left, resets in 2h 30m. Today $3. "
         "Last 30 days $12. Updated 1 h ago.",
         1},
        // Of anybody's making.
        {small,
         {provider(claude, {window("\x1b[2J", -4, 9000)})},
         "Claude. ?[2J 0% left, resets in 2h 30m."},
    };
    for (const Case& each : cases) {
        const Snapshot snapshot{now - Seconds{each.hours * 3600}, each.providers, 3, 12, {}};
        EXPECT_EQ(WidgetDisplay::of(snapshot, each.size, {}, now, Calendar::utc()).spoken(),
                  each.spoken);
    }
    EXPECT_EQ(WidgetDisplay::of({}, large, {}, now, Calendar::utc()).spoken(),
              "No numbers yet. They appear once Tokwatch has told them.");
}

TEST(WidgetDisplay, ShowsThirtyDaysWhateverTheFileHas) {
    for (const std::size_t count : {0U, 2U, 40U}) {
        Snapshot snapshot{now, {}, 0, 0, std::vector<double>(count, 8)};
        if (count > 1) snapshot.dailyCost30[count - 2] = -1;
        const WidgetDisplay display = WidgetDisplay::of(snapshot, large, {}, now, Calendar::utc());
        ASSERT_EQ(display.costs->days.size(), 30U);
        EXPECT_EQ(display.costs->days.front(), count > 30 ? 1 : 0);
        EXPECT_EQ(display.costs->days[28], 0);
        EXPECT_EQ(display.costs->days.back(), count > 0 ? 1 : 0);
        EXPECT_EQ(display.costs->firstDay, "Oct 26");
    }
}

} // namespace
} // namespace tokwatch
