#include "Tokwatch/CommandLine/StatusLine.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <limits>
#include <optional>
#include <string_view>
#include <utility>

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
    return jsonText(versioned(std::move(json)));
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

/// Text as Pango markup shows it. A label of a service may hold anything.
std::string escapedForMarkup(std::string text) {
    return replaced(replaced(replaced(std::move(text), "&", "&amp;"), "<", "&lt;"), ">", "&gt;");
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

/// Of what is to be noticed. It can be read on light bars and on dark ones, and nobody tells which.
std::optional<std::string> barColour(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return std::nullopt;
    case Severity::warning:
        return "#c77700";
    case Severity::critical:
        return "#e5484d";
    }
    return std::nullopt;
}

std::string pangoLine(const StatusTitle& title) {
    const std::string text = escapedForMarkup(textLine(title));
    const std::optional<std::string> colour = barColour(title.severity);
    return colour ? "<span foreground=\"" + *colour + "\">" + text + "</span>" : text;
}

std::string polybarLine(const StatusTitle& title) {
    // Nothing escapes the beginning of a tag.
    const std::string text = replaced(textLine(title), "%{", "% {");
    const std::optional<std::string> colour = barColour(title.severity);
    return colour ? "%{F" + *colour + "}" + text + "%{F-}" : text;
}

/// The terminal's own colours, and the background among them: that of the bar is green where
/// nobody chose another, on which no text of these can be read.
std::string tmuxLine(const StatusTitle& title) {
    std::string text = replaced(textLine(title), "#", "##");
    switch (title.severity) {
    case Severity::normal:
        return text;
    case Severity::warning:
        return "#[fg=black,bg=yellow]" + text + "#[default]";
    case Severity::critical:
        return "#[fg=white,bg=red]" + text + "#[default]";
    }
    return text;
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
    case StatusFormat::pango:
        return pangoLine(title);
    case StatusFormat::polybar:
        return polybarLine(title);
    case StatusFormat::tmux:
        return tmuxLine(title);
    }
    return {};
}

} // namespace tokwatch
