#include "Tokwatch/CommandLine/StatusLine.h"

#include "Tokwatch/CommandLine/Table.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <limits>
#include <string_view>

namespace tokwatch {
namespace {

std::string_view nameOf(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return "normal";
    case Severity::warning:
        return "warning";
    case Severity::critical:
        return "critical";
    }
    return "";
}

std::string textLine(const StatusTitle& title) {
    const std::string line = title.text.value_or(title.tooltip.substr(0, title.tooltip.find('\n')));
    return fitted(line, std::numeric_limits<std::size_t>::max());
}

std::string jsonLine(const StatusTitle& title) {
    Json json = Json::object();
    if (title.text) json["text"] = *title.text;
    if (title.provider) json["provider"] = encode(*title.provider);
    json["severity"] = nameOf(title.severity);
    json["tooltip"] = title.tooltip;
    return jsonText(json);
}

/// Text as Pango markup shows it. A label of a service may hold anything.
std::string escapedForMarkup(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string waybarLine(const StatusReport& report) {
    const StatusTitle& title = report.title;
    Json json = Json::object();
    json["text"] = escapedForMarkup(title.text.value_or("Tokwatch"));
    json["alt"] = title.text ? std::string(rawValue(*title.provider)) : "none";
    json["tooltip"] = escapedForMarkup(title.tooltip);
    json["class"] = nameOf(title.severity);
    if (report.percentLeft) json["percentage"] = *report.percentLeft;
    return jsonText(json);
}

} // namespace

StatusReport statusReport(const Preferences& preferences, const LimitsByProvider& limits,
                          Date now) {
    StatusReport report{statusTitle(preferences, limits, now), std::nullopt};
    if (!report.title.text) return report;
    const ProviderID provider = *report.title.provider;
    const LimitWindow* shown = menuBarWindow(preferences, provider, limits.at(provider), now);
    // Cut off, not rounded, so that it is the number in the text.
    report.percentLeft = static_cast<int>(wholePercent(LimitBarModel(*shown, now).leftFraction));
    return report;
}

std::string statusLine(const StatusReport& report, StatusFormat format) {
    switch (format) {
    case StatusFormat::text:
        return textLine(report.title);
    case StatusFormat::json:
        return jsonLine(report.title);
    case StatusFormat::waybar:
        return waybarLine(report);
    }
    return {};
}

} // namespace tokwatch
