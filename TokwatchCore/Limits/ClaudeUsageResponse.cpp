#include "TokwatchCore/Limits/ClaudeUsageResponse.h"

#include "TokwatchCore/Limits/ServiceDocument.h"
#include "TokwatchCore/Records/ClaudeWindows.h"
#include "TokwatchCore/Support/ISO8601.h"
#include "TokwatchCore/Support/PlainText.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace tokwatch {
namespace {

/// Leaves room for the session, the week and the older answers' two.
constexpr std::size_t mostScopedWeeks = mostWindows - 4;

struct Reading {
    std::optional<double> percent;
    std::optional<Date> resetsAt;
};

struct Limit {
    std::string kind;
    std::string modelName; ///< empty where there is no scope
    Reading reading;
};

struct ExtraUsage {
    bool isEnabled = false;
    std::optional<double> monthlyLimit;
    std::optional<double> usedCredits;
    std::optional<std::int64_t> decimalPlaces;
};

/// A text that is no time counts as absent.
std::optional<Date> resetTime(const document::Value& object) {
    const std::optional<std::string> text = document::string(object, "resets_at");
    if (!text) return std::nullopt;
    return parseISO8601(*text);
}

std::optional<Reading> decodeWindow(const document::Value& root, const char* key) {
    const document::Value* window = document::object(root, key);
    if (window == nullptr) return std::nullopt;
    return Reading{document::number(*window, "utilization"), resetTime(*window)};
}

Limit decodeLimit(const document::Value& value) {
    Limit limit;
    limit.kind = document::string(value, "kind").value_or("");
    limit.reading = {document::number(value, "percent"), resetTime(value)};
    if (const document::Value* scope = document::object(value, "scope")) {
        if (const document::Value* model = document::object(*scope, "model"))
            limit.modelName = boundedName(document::string(*model, "display_name").value_or(""));
    }
    return limit;
}

std::vector<Limit> decodeLimits(const document::Value& root) {
    std::vector<Limit> limits;
    if (const document::Value* values = document::array(root, "limits")) {
        for (const document::Value& value : *values) {
            if (!value.is_null()) limits.push_back(decodeLimit(value));
        }
    }
    return limits;
}

ExtraUsage decodeExtraUsage(const document::Value& root) {
    ExtraUsage extra;
    if (const document::Value* value = document::object(root, "extra_usage")) {
        extra.isEnabled = document::boolean(*value, "is_enabled").value_or(false);
        extra.monthlyLimit = document::number(*value, "monthly_limit");
        extra.usedCredits = document::number(*value, "used_credits");
        extra.decimalPlaces = document::integer(*value, "decimal_places");
    }
    return extra;
}

/// A week of some models alone. Without a percentage there is nothing to show.
void addWeek(std::vector<LimitWindow>& windows, std::string id, std::string label,
             const Reading& reading) {
    if (!reading.percent) return;
    windows.push_back({std::move(id), std::move(label), clampedFraction(*reading.percent),
                       ClaudeWindows::weekSeconds, reading.resetsAt, LimitSource::live()});
}

void add(std::vector<LimitWindow>& windows, decltype(ClaudeWindows::session)& window,
         const Reading& reading) {
    if (reading.percent)
        windows.push_back(window(*reading.percent, reading.resetsAt, LimitSource::live()));
}

/// The window's own object, else the first limit of that kind.
Reading readingOf(const std::optional<Reading>& window, const std::vector<Limit>& limits,
                  std::string_view kind) {
    if (window) return *window;
    const auto found = std::ranges::find(limits, kind, &Limit::kind);
    return found == limits.end() ? Reading{} : found->reading;
}

/// "weekly.opus-4" of "Opus 4"
std::string scopedID(const std::string& modelName) {
    std::string name = QString::fromStdString(modelName).toLower().toStdString();
    std::ranges::replace(name, ' ', '-');
    return "weekly." + name;
}

std::vector<LimitWindow> scopedWeeks(const std::vector<Limit>& limits) {
    std::vector<LimitWindow> windows;
    for (const Limit& limit : limits) {
        if (windows.size() == mostScopedWeeks) break;
        if (limit.kind != "weekly_scoped" || limit.modelName.empty()) continue;
        const std::string id = scopedID(limit.modelName);
        if (std::ranges::find(windows, id, &LimitWindow::id) == windows.end())
            addWeek(windows, id, "Weekly · " + limit.modelName, limit.reading);
    }
    return windows;
}

/// Older answers have a key for each family of models. A scoped limit of the family replaces it.
std::vector<LimitWindow> legacyWeeks(const document::Value& root,
                                     const std::vector<LimitWindow>& scoped) {
    struct Legacy {
        const char* id;
        const char* label;
        const char* key;
    };
    constexpr std::array legacies{Legacy{"weekly.opus", "Weekly · Opus", "seven_day_opus"},
                                  Legacy{"weekly.sonnet", "Weekly · Sonnet", "seven_day_sonnet"}};
    std::vector<LimitWindow> windows;
    for (const auto& [id, label, key] : legacies) {
        const Reading reading = decodeWindow(root, key).value_or(Reading{});
        const bool isReplaced = std::ranges::any_of(
            scoped, [id](const LimitWindow& window) { return window.id.starts_with(id); });
        if (!isReplaced) addWeek(windows, id, label, reading);
    }
    return windows;
}

std::optional<double> dollars(std::optional<double> amount, double unitsPerDollar) {
    return amount ? plausibleAmount(*amount / unitsPerDollar) : std::nullopt;
}

std::optional<Credits> creditsOf(const ExtraUsage& extra) {
    if (!extra.isEnabled || (!extra.monthlyLimit && !extra.usedCredits)) return std::nullopt;
    const double unitsPerDollar =
        std::pow(10.0, static_cast<double>(extra.decimalPlaces.value_or(2)));
    Credits result;
    result.label = "Extra usage";
    result.spentUSD = dollars(extra.usedCredits, unitsPerDollar);
    result.limitUSD = dollars(extra.monthlyLimit, unitsPerDollar);
    return result;
}

} // namespace

ClaudeUsageResponse ClaudeUsageResponse::decode(std::string_view body) {
    const document::Value root = document::parse(body);
    const std::vector<Limit> limits = decodeLimits(root);
    ClaudeUsageResponse response;
    add(response.windows, ClaudeWindows::session,
        readingOf(decodeWindow(root, "five_hour"), limits, "session"));
    add(response.windows, ClaudeWindows::weekly,
        readingOf(decodeWindow(root, "seven_day"), limits, "weekly_all"));
    const std::vector<LimitWindow> scoped = scopedWeeks(limits);
    const std::vector<LimitWindow> legacy = legacyWeeks(root, scoped);
    response.windows.insert(response.windows.end(), scoped.begin(), scoped.end());
    response.windows.insert(response.windows.end(), legacy.begin(), legacy.end());
    response.credits = creditsOf(decodeExtraUsage(root));
    return response;
}

} // namespace tokwatch
