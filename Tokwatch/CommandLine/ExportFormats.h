#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/LastingCounts.h"
#include "TokwatchCore/Store/PriceTable.h"

#include <span>
#include <string>

/// What is stored, in the forms that other programs collect. `host` is whose it is.
namespace tokwatch {

/// The text format of Prometheus, version 0.0.4: counters of tokens and cost, gauges of limits.
std::string prometheusText(const std::string& host, std::span<const ModelCount> counts,
                           const LimitsByProvider& limits);

/// A line for each day and model, a line of names above them.
std::string exportCSV(const std::string& host, std::span<const DailyRow> days,
                      const PriceTable& prices);

/// The same days and the limits.
Json exportJson(const std::string& host, std::span<const DailyRow> days, const PriceTable& prices,
                const LimitsByProvider& limits, Date now);

} // namespace tokwatch
