#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Store/UsageSummary.h"

namespace tokwatch {

constexpr auto fieldsOf(const UsageSummary::Tool*) {
    using R = UsageSummary::Tool;
    return std::tuple{Field{"provider", &R::provider},      Field{"sessions", &R::sessions},
                      Field{"tokens", &R::tokens},          Field{"costUSD", &R::costUSD},
                      Field{"costShare", &R::costShare},    Field{"tokenShare", &R::tokenShare},
                      Field{"approximate", &R::approximate}};
}

constexpr auto fieldsOf(const UsageSummary::DayPoint*) {
    using R = UsageSummary::DayPoint;
    return std::tuple{Field{"day", &R::day}, Field{"provider", &R::provider},
                      Field{"tokens", &R::tokens}, Field{"costUSD", &R::costUSD}};
}

constexpr auto fieldsOf(const UsageSummary::ModelRow*) {
    using R = UsageSummary::ModelRow;
    return std::tuple{Field{"provider", &R::provider},      Field{"model", &R::model},
                      Field{"costUSD", &R::costUSD},        Field{"costShare", &R::costShare},
                      Field{"tokenShare", &R::tokenShare},  Field{"tokens", &R::tokens},
                      Field{"approximate", &R::approximate}};
}

constexpr auto fieldsOf(const UsageSummary::DayRow*) {
    using R = UsageSummary::DayRow;
    return std::tuple{Field{"day", &R::day}, Field{"costUSD", &R::costUSD},
                      Field{"tokens", &R::tokens}, Field{"sessions", &R::sessions}};
}

constexpr auto fieldsOf(const CostBreakdown*) {
    using R = CostBreakdown;
    return std::tuple{Field{"input", &R::input}, Field{"cacheRead", &R::cacheRead},
                      Field{"cacheWrite", &R::cacheWrite}, Field{"output", &R::output},
                      Field{"other", &R::other}};
}

constexpr auto fieldsOf(const UsageSummary*) {
    using R = UsageSummary;
    return std::tuple{Field{"days", &R::days},
                      Field{"windowEnd", &R::windowEnd},
                      Field{"totalCostUSD", &R::totalCostUSD},
                      Field{"sessions", &R::sessions},
                      Field{"tools", &R::tools},
                      Field{"daily", &R::daily},
                      Field{"models", &R::models},
                      Field{"perDay", &R::perDay},
                      Field{"tokens", &R::tokens},
                      Field{"costByType", &R::costByType},
                      Field{"cacheSavingsUSD", &R::cacheSavingsUSD},
                      Field{"hasUnknownPrices", &R::hasUnknownPrices}};
}

template Json encode(const UsageSummary&, DateCoding);
template UsageSummary decode(const Json&, DateCoding);

} // namespace tokwatch
