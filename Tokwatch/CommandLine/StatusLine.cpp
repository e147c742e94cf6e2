#include "Tokwatch/CommandLine/StatusLine.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <limits>
#include <string_view>

namespace tokwatch {
namespace {

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
    if (title.runsOutAt) json["runsOutAt"] = encode(*title.runsOutAt, DateCoding::iso8601);
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

std::string waybarLine(const StatusTitle& title) {
    Json json = Json::object();
    json["text"] = escapedForMarkup(title.text.value_or(std::string(applicationName)));
    json["alt"] = title.text ? std::string(rawValue(*title.provider)) : "none";
    json["tooltip"] = escapedForMarkup(title.tooltip);
    json["class"] = nameOf(title.severity);
    if (title.percentLeft) json["percentage"] = *title.percentLeft;
    return jsonText(json);
}

} // namespace

std::string statusLine(const StatusTitle& title, StatusFormat format) {
    switch (format) {
    case StatusFormat::text:
        return textLine(title);
    case StatusFormat::json:
        return jsonLine(title);
    case StatusFormat::waybar:
        return waybarLine(title);
    }
    return {};
}

} // namespace tokwatch
