#include "Tokwatch/Views/Popover/Models/ProjectUsage.h"

#include "Tokwatch/Display/HomeRelative.h"

namespace tokwatch {
namespace {

double partOf(double whole, double part) {
    return whole > 0 ? part / whole : 0;
}

ProjectUsage::Row rowOf(const ReportRow& row, const UsageSums& total, const std::string& home) {
    const std::int64_t tokens = row.sums.tokens.total();
    return {homeRelative(row.project, home), row.sums.sessions,
            SummaryDisplay::Use{
                row.sums.costUSD, row.sums.approximate, tokens,
                partOf(total.costUSD.value_or(0), row.sums.costUSD.value_or(0)),
                partOf(static_cast<double>(total.tokens.total()), static_cast<double>(tokens))}};
}

} // namespace

std::optional<ProjectUsage> ProjectUsage::read(ResponseFiles& files, const Query& query,
                                               const PriceTable& prices,
                                               const ResponseFiles::Progress& progress,
                                               const std::stop_token& stop) {
    const Period window = lastDays(query.days, query.now, query.calendar);
    const LogReading reading = files.read(allCases<ProviderID>, window.start, progress, stop);
    if (stop.stop_requested()) return std::nullopt;
    const CountedResponses responses(reading, window.start, window.end);
    const UsageReport report = UsageReport::make({ReportBy::project, window, query.home}, responses,
                                                 prices, query.calendar, query.now);
    ProjectUsage usage;
    usage.days = query.days;
    usage.tokens = report.total.tokens.total();
    usage.hasUnknownPrices = report.total.hasUnknownPrices;
    usage.hasApproximateCosts = report.total.costUSD && report.total.approximate;
    usage.unread = std::ssize(reading.unread);
    for (const ReportRow& row : report.rows)
        usage.rows.push_back(rowOf(row, report.total, query.home));
    return usage;
}

} // namespace tokwatch
