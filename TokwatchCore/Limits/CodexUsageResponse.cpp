#include "TokwatchCore/Limits/CodexUsageResponse.h"

#include "TokwatchCore/Limits/ServiceDocument.h"
#include "TokwatchCore/Records/PlausibleMoment.h"

namespace tokwatch {
namespace {

void add(std::vector<LimitWindow>& windows, const char* id, const char* label,
         const document::Value* window) {
    if (window == nullptr) return;
    const std::optional<double> percent = document::number(*window, "used_percent");
    const std::optional<double> seconds = document::number(*window, "limit_window_seconds");
    const std::optional<double> resetAt = document::number(*window, "reset_at");
    if (!percent || !seconds) return;
    windows.push_back({id, label, clampedFraction(*percent), plausibleDuration(*seconds),
                       resetAt ? plausibleMoment(*resetAt) : std::nullopt, LimitSource::live()});
}

} // namespace

CodexUsageResponse CodexUsageResponse::decode(std::string_view body) {
    const document::Value root = document::parse(body);
    CodexUsageResponse response;
    response.plan = planName(document::string(root, "plan_type").value_or(""));
    if (const document::Value* limits = document::object(root, "rate_limit")) {
        add(response.windows, "session", "Session", document::object(*limits, "primary_window"));
        add(response.windows, "weekly", "Weekly", document::object(*limits, "secondary_window"));
    }
    return response;
}

} // namespace tokwatch
