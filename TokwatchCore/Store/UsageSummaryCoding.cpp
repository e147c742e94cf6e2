#include "TokwatchCore/Store/UsageSummary.h"

namespace tokwatch {
namespace {

using coding::required;

Json encode(const UsageSummary::Tool& tool) {
    Json json = Json::object();
    json["provider"] = tokwatch::encode(tool.provider);
    json["sessions"] = tool.sessions;
    json["tokens"] = tool.tokens;
    json["costUSD"] = tool.costUSD;
    json["costShare"] = tool.costShare;
    json["tokenShare"] = tool.tokenShare;
    json["approximate"] = tool.approximate;
    return json;
}

UsageSummary::Tool decodeTool(const Json& json) {
    return {
        decodeProviderID(required(json, "provider")),  coding::integer(required(json, "sessions")),
        coding::integer(required(json, "tokens")),     coding::number(required(json, "costUSD")),
        coding::number(required(json, "costShare")),   coding::number(required(json, "tokenShare")),
        coding::boolean(required(json, "approximate"))};
}

Json encode(const UsageSummary::DayPoint& point, DateCoding dates) {
    Json json = Json::object();
    json["day"] = tokwatch::encode(point.day, dates);
    json["provider"] = tokwatch::encode(point.provider);
    json["tokens"] = point.tokens;
    json["costUSD"] = point.costUSD;
    return json;
}

UsageSummary::DayPoint decodeDayPoint(const Json& json, DateCoding dates) {
    return {decodeDate(required(json, "day"), dates), decodeProviderID(required(json, "provider")),
            coding::integer(required(json, "tokens")), coding::number(required(json, "costUSD"))};
}

Json encode(const UsageSummary::ModelRow& row) {
    Json json = Json::object();
    json["provider"] = tokwatch::encode(row.provider);
    json["model"] = row.model;
    if (row.costUSD) json["costUSD"] = *row.costUSD;
    json["costShare"] = row.costShare;
    json["tokenShare"] = row.tokenShare;
    json["tokens"] = tokwatch::encode(row.tokens);
    json["approximate"] = row.approximate;
    return json;
}

UsageSummary::ModelRow decodeModelRow(const Json& json) {
    UsageSummary::ModelRow row;
    row.provider = decodeProviderID(required(json, "provider"));
    row.model = coding::string(required(json, "model"));
    if (const Json* cost = coding::optional(json, "costUSD")) row.costUSD = coding::number(*cost);
    row.costShare = coding::number(required(json, "costShare"));
    row.tokenShare = coding::number(required(json, "tokenShare"));
    row.tokens = decodeTokenCounts(required(json, "tokens"));
    row.approximate = coding::boolean(required(json, "approximate"));
    return row;
}

Json encode(const UsageSummary::DayRow& row, DateCoding dates) {
    Json json = Json::object();
    json["day"] = tokwatch::encode(row.day, dates);
    json["costUSD"] = row.costUSD;
    json["tokens"] = row.tokens;
    json["sessions"] = row.sessions;
    return json;
}

UsageSummary::DayRow decodeDayRow(const Json& json, DateCoding dates) {
    return {decodeDate(required(json, "day"), dates), coding::number(required(json, "costUSD")),
            coding::integer(required(json, "tokens")), coding::integer(required(json, "sessions"))};
}

template<typename Record, typename... Dates>
Json encodeList(const std::vector<Record>& records, Dates... dates) {
    Json json = Json::array();
    for (const Record& record : records)
        json.push_back(encode(record, dates...));
    return json;
}

template<typename Decode>
auto decodeList(const Json& object, const char* key, Decode decode) {
    std::vector<decltype(decode(object))> records;
    for (const Json& element : coding::array(required(object, key)))
        records.push_back(decode(element));
    return records;
}

} // namespace

Json encode(const CostBreakdown& cost) {
    Json json = Json::object();
    json["input"] = cost.input;
    json["cacheRead"] = cost.cacheRead;
    json["cacheWrite"] = cost.cacheWrite;
    json["output"] = cost.output;
    json["other"] = cost.other;
    return json;
}

CostBreakdown decodeCostBreakdown(const Json& json) {
    return {coding::number(required(json, "input")), coding::number(required(json, "cacheRead")),
            coding::number(required(json, "cacheWrite")), coding::number(required(json, "output")),
            coding::number(required(json, "other"))};
}

Json encode(const UsageSummary& summary, DateCoding dates) {
    Json json = Json::object();
    json["days"] = summary.days;
    json["windowEnd"] = encode(summary.windowEnd, dates);
    json["totalCostUSD"] = summary.totalCostUSD;
    json["sessions"] = summary.sessions;
    json["tools"] = encodeList(summary.tools);
    json["daily"] = encodeList(summary.daily, dates);
    json["models"] = encodeList(summary.models);
    json["perDay"] = encodeList(summary.perDay, dates);
    json["tokens"] = encode(summary.tokens);
    json["costByType"] = encode(summary.costByType);
    json["cacheSavingsUSD"] = summary.cacheSavingsUSD;
    json["hasUnknownPrices"] = summary.hasUnknownPrices;
    return json;
}

UsageSummary decodeUsageSummary(const Json& json, DateCoding dates) {
    UsageSummary summary;
    summary.days = coding::integer(required(json, "days"));
    summary.windowEnd = decodeDate(required(json, "windowEnd"), dates);
    summary.totalCostUSD = coding::number(required(json, "totalCostUSD"));
    summary.sessions = coding::integer(required(json, "sessions"));
    summary.tools = decodeList(json, "tools", decodeTool);
    summary.daily = decodeList(json, "daily",
                               [dates](const Json& each) { return decodeDayPoint(each, dates); });
    summary.models = decodeList(json, "models", decodeModelRow);
    summary.perDay =
        decodeList(json, "perDay", [dates](const Json& each) { return decodeDayRow(each, dates); });
    summary.tokens = decodeTokenCounts(required(json, "tokens"));
    summary.costByType = decodeCostBreakdown(required(json, "costByType"));
    summary.cacheSavingsUSD = coding::number(required(json, "cacheSavingsUSD"));
    summary.hasUnknownPrices = coding::boolean(required(json, "hasUnknownPrices"));
    return summary;
}

} // namespace tokwatch
