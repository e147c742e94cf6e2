#include "Tokwatch/CommandLine/ExportFormats.h"

#include "Tokwatch/CommandLine/CSVText.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <cmath>

namespace tokwatch {

std::string exportCSV(const std::string& host, std::span<const DailyRow> days,
                      const PriceTable& prices) {
    std::string text =
        csvLine({"host", "day", "provider", "model", "uncachedInput", "cacheRead", "cacheWrite5m",
                 "cacheWrite1h", "output", "reasoning", "totalTokens", "costUSD", "approximate"});
    for (const DailyRow& row : days) {
        const TokenCounts& tokens = row.tokens;
        const PricedCost cost = prices.cost(row.model, tokens, row.reportedUSD);
        std::vector<std::string> fields{csvField(host), row.day,
                                        std::string(rawValue(row.provider)), csvField(row.model)};
        for (const std::int64_t number :
             {tokens.uncachedInput, tokens.cacheRead, tokens.cacheWrite5m, tokens.cacheWrite1h,
              tokens.output, tokens.reasoning, tokens.total()})
            fields.push_back(std::to_string(number));
        fields.push_back(csvNumber(cost.usd));
        fields.emplace_back(cost.approximate ? "true" : "false");
        text += csvLine(fields);
    }
    return text;
}

Json exportJson(const std::string& host, std::span<const DailyRow> days, const PriceTable& prices,
                const LimitsByProvider& limits, Date now) {
    Json json = Json::object();
    json["host"] = host;
    json["exportedAt"] = formatISO8601(now);
    Json& rows = json["days"] = Json::array();
    for (const DailyRow& row : days) {
        const PricedCost cost = prices.cost(row.model, row.tokens, row.reportedUSD);
        Json& each = rows.emplace_back(Json::object());
        each["day"] = row.day;
        each["provider"] = encode(row.provider);
        each["model"] = row.model;
        each["tokens"] = encode(row.tokens);
        each["totalTokens"] = row.tokens.total();
        each["costUSD"] = cost.usd && std::isfinite(*cost.usd) ? Json(*cost.usd) : Json();
        each["approximate"] = cost.approximate;
    }
    Json& known = json["limits"] = Json::object();
    for (const auto& [provider, each] : limits)
        known[std::string(rawValue(provider))] = encode(each, DateCoding::iso8601);
    return json;
}

} // namespace tokwatch
