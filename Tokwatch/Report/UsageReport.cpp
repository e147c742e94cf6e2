#include "Tokwatch/Report/UsageReport.h"

#include "Tokwatch/Report/NumberedTexts.h"
#include "Tokwatch/Report/ProjectPath.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace tokwatch {
namespace {

constexpr Seconds blockLength{5 * 3600.0};
/// How long before the window blocks are followed from, to find where the first one begins.
constexpr Seconds blockLead{24 * 3600.0};

BlockPace paceOf(const Period& block, const UsageSums& sums, Date now) {
    constexpr double secondsAMinute = 60;
    // One response alone, a minute ago, is no pace.
    constexpr double shortestMinutes = 10;
    const double passed =
        std::max(shortestMinutes, Seconds(now - sums.first).count() / secondsAMinute);
    const double left = Seconds(block.end - now).count() / secondsAMinute;
    BlockPace pace;
    const auto tokens = static_cast<double>(sums.tokens.total());
    pace.tokensPerMinute = tokens / passed;
    pace.projectedTokens = tokens + pace.tokensPerMinute * left;
    if (sums.costUSD) {
        pace.usdPerMinute = *sums.costUSD / passed;
        pace.projectedUSD = *sums.costUSD + *pace.usdPerMinute * left;
    }
    return pace;
}

/// Puts responses, which come in the order of time, into their rows.
class Rows {
  public:
    Rows(const UsageReport::Query& q, const CountedResponses& r, const Calendar& c)
        : query(q), responses(r), calendar(c), projectsOfSessions(r.sessions.size()) {}

    void add(const CountedResponses::Entry& entry) {
        const std::size_t row = rowOf(entry);
        if (!isShown(rows[row])) return;
        sums[row].add(entry);
        total.add(entry);
    }

    UsageReport finish(const PriceTable& prices, Date now) {
        UsageReport report{query, total.sums(responses.models, prices), {}};
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (!isShown(rows[i])) continue;
            ReportRow& row = report.rows.emplace_back(std::move(rows[i]));
            row.sums = sums[i].sums(responses.models, prices);
            if (query.by == ReportBy::block && row.period->holds(now))
                row.pace = paceOf(*row.period, row.sums, now);
        }
        sort(report.rows);
        return report;
    }

  private:
    /// Only blocks can lie beside the window.
    bool isShown(const ReportRow& row) const {
        return !row.period ||
               (row.period->end > query.window.start && row.period->start < query.window.end);
    }

    std::size_t rowOf(const CountedResponses::Entry& entry) {
        switch (query.by) {
        case ReportBy::project:
            return rowNumbered(projects.numberOf(projectOfSession(entry.session)), entry);
        case ReportBy::session:
            return rowNumbered(entry.session, entry);
        case ReportBy::model:
            return rowNumbered(entry.model, entry);
        case ReportBy::hour:
            return rowOfPeriod(entry, hourHolding);
        case ReportBy::day:
            return rowOfPeriod(entry, dayHolding);
        case ReportBy::week:
            return rowOfPeriod(entry, weekHolding);
        case ReportBy::month:
            return rowOfPeriod(entry, monthHolding);
        case ReportBy::block:
            return rowOfPeriod(entry, [](Date first, const Calendar& c) {
                const Date start = hourHolding(first, c).start;
                return Period{start, start + blockLength};
            });
        }
        return 0;
    }

    std::size_t rowNumbered(std::uint32_t number, const CountedResponses::Entry& entry) {
        const auto [known, isNew] = numbered.try_emplace(number, rows.size());
        if (!isNew) return known->second;
        ReportRow row;
        if (query.by == ReportBy::model) {
            row.provider = responses.models[entry.model].provider;
            row.model = responses.models[entry.model].name;
        } else {
            row.project = projectOfSession(entry.session);
        }
        if (query.by == ReportBy::session) {
            row.provider = responses.sessions[entry.session].provider;
            row.session = responses.sessions[entry.session].id;
        }
        return append(std::move(row));
    }

    template<typename PeriodHolding>
    std::size_t rowOfPeriod(const CountedResponses::Entry& entry, PeriodHolding holding) {
        const Date moment = entry.response->timestamp;
        if (!rows.empty() && rows.back().period->holds(moment)) return rows.size() - 1;
        ReportRow row;
        row.period = holding(moment, calendar);
        return append(std::move(row));
    }

    std::size_t append(ReportRow row) {
        rows.push_back(std::move(row));
        sums.emplace_back();
        return rows.size() - 1;
    }

    const std::string& projectOfSession(std::uint32_t number) {
        std::optional<std::string>& project = projectsOfSessions[number];
        if (!project) project = projectOf(responses.sessions[number].directory, query.home);
        return *project;
    }

    void sort(std::vector<ReportRow>& shown) const {
        if (query.by == ReportBy::project || query.by == ReportBy::model) {
            std::ranges::sort(shown, {}, [](const ReportRow& row) {
                return std::tuple(!row.sums.costUSD, -row.sums.costUSD.value_or(0),
                                  -row.sums.tokens.total(), row.provider, row.project, row.model);
            });
        } else {
            std::ranges::stable_sort(shown, std::ranges::greater(), [](const ReportRow& row) {
                return row.period ? row.period->start : row.sums.last;
            });
        }
    }

    const UsageReport::Query& query;
    const CountedResponses& responses;
    const Calendar& calendar;
    NumberedTexts projects;
    std::vector<std::optional<std::string>> projectsOfSessions;
    std::unordered_map<std::uint32_t, std::size_t> numbered; ///< rows that are no times
    std::vector<ReportRow> rows;
    std::vector<UsageAddition> sums; ///< of each row
    UsageAddition total;
};

} // namespace

Period UsageReport::reach(const Query& query) {
    if (query.by != ReportBy::block) return query.window;
    return {query.window.start - blockLead, query.window.end + blockLength};
}

UsageReport UsageReport::make(const Query& query, const CountedResponses& responses,
                              const PriceTable& prices, const Calendar& calendar, Date now) {
    Rows rows(query, responses, calendar);
    for (const CountedResponses::Entry& entry : responses.entries)
        rows.add(entry);
    return rows.finish(prices, now);
}

} // namespace tokwatch
