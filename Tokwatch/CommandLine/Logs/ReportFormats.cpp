#include "Tokwatch/CommandLine/Logs/ReportFormats.h"

#include "Tokwatch/CommandLine/CSVText.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <cmath>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

/// What tells a row from the others, by name, in the order of columns.
std::vector<std::pair<const char*, Json>> subjectOf(ReportBy by, const ReportRow& row) {
    const auto text = [](const std::string& known) { return known.empty() ? Json() : Json(known); };
    const auto provider = [&row] { return encode(row.provider.value_or(ProviderID::claude)); };
    switch (by) {
    case ReportBy::project:
        return {{"project", text(row.project)}};
    case ReportBy::session:
        return {{"provider", provider()},
                {"session", text(row.session)},
                {"project", text(row.project)}};
    case ReportBy::model:
        return {{"provider", provider()}, {"model", row.model}};
    case ReportBy::hour:
    case ReportBy::day:
    case ReportBy::week:
    case ReportBy::month:
        return {{"start", formatISO8601(row.period->start)},
                {"end", formatISO8601(row.period->end)}};
    case ReportBy::block:
        return {{"start", formatISO8601(row.period->start)},
                {"end", formatISO8601(row.period->end)},
                {"running", row.pace.has_value()}};
    }
    return {};
}

void put(Json& json, const char* key, std::optional<double> number) {
    json[key] = number && std::isfinite(*number) ? Json(*number) : Json();
}

void putSums(Json& json, const UsageSums& sums) {
    json["responses"] = sums.responses;
    json["sessions"] = sums.sessions;
    json["tokens"] = encode(sums.tokens);
    json["totalTokens"] = sums.tokens.total();
    put(json, "costUSD", sums.costUSD);
    json["approximate"] = sums.approximate;
    json["hasUnknownPrices"] = sums.hasUnknownPrices;
    const bool isEmpty = sums.responses == 0;
    json["first"] = isEmpty ? Json() : Json(formatISO8601(sums.first));
    json["last"] = isEmpty ? Json() : Json(formatISO8601(sums.last));
    json["models"] = sums.models;
}

Json rowJson(ReportBy by, const ReportRow& row) {
    Json json = Json::object();
    for (auto& [name, value] : subjectOf(by, row))
        json[name] = std::move(value);
    putSums(json, row.sums);
    if (row.pace) {
        Json& pace = json["pace"] = Json::object();
        put(pace, "tokensPerMinute", row.pace->tokensPerMinute);
        put(pace, "usdPerMinute", row.pace->usdPerMinute);
        put(pace, "projectedTokens", row.pace->projectedTokens);
        put(pace, "projectedUSD", row.pace->projectedUSD);
    }
    return json;
}

} // namespace

Json reportJson(const UsageReport& report) {
    Json json = Json::object();
    json["by"] = std::string(rawValue(report.query.by));
    json["since"] = formatISO8601(report.query.window.start);
    json["until"] = formatISO8601(report.query.window.end);
    putSums(json["total"] = Json::object(), report.total);
    Json& rows = json["rows"] = Json::array();
    for (const ReportRow& row : report.rows)
        rows.push_back(rowJson(report.query.by, row));
    return json;
}

std::string reportCSV(const UsageReport& report) {
    std::vector<std::string> titles;
    // The names are the same for every row, and there may be none.
    ReportRow sample;
    sample.period = report.query.window;
    for (const auto& [name, value] : subjectOf(report.query.by, sample))
        titles.emplace_back(name);
    for (const char* each : {"responses", "sessions", "uncachedInput", "cacheRead", "cacheWrite5m",
                             "cacheWrite1h", "output", "reasoning", "totalTokens", "costUSD",
                             "approximate", "first", "last", "models"})
        titles.emplace_back(each);
    std::string text = csvLine(titles);
    for (const ReportRow& row : report.rows) {
        std::vector<std::string> fields;
        for (const auto& [name, value] : subjectOf(report.query.by, row))
            fields.push_back(csvField(value));
        const UsageSums& sums = row.sums;
        for (const std::int64_t number :
             {sums.responses, sums.sessions, sums.tokens.uncachedInput, sums.tokens.cacheRead,
              sums.tokens.cacheWrite5m, sums.tokens.cacheWrite1h, sums.tokens.output,
              sums.tokens.reasoning, sums.tokens.total()})
            fields.push_back(std::to_string(number));
        std::string models;
        for (const std::string& model : sums.models)
            models.append(models.empty() ? "" : " ").append(model);
        for (const std::string& field :
             {csvNumber(sums.costUSD), std::string(sums.approximate ? "true" : "false"),
              formatISO8601(sums.first), formatISO8601(sums.last), csvField(models)})
            fields.push_back(field);
        text += csvLine(fields);
    }
    return text;
}

} // namespace tokwatch
