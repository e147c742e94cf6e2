#include "Tokwatch/CommandLine/Doctor/Examinations.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"

namespace tokwatch {
namespace {

std::string_view nameOf(Health health) {
    switch (health) {
    case Health::good:
        return "good";
    case Health::note:
        return "note";
    case Health::bad:
        return "bad";
    }
    return "";
}

Table::Cell markOf(Health health) {
    switch (health) {
    case Health::good:
        return {"✓", Tone::green};
    case Health::note:
        return {"·", Tone::dim};
    case Health::bad:
        return {"✗", Tone::red};
    }
    return {};
}

} // namespace

void printFindings(Terminal& terminal, const std::vector<Finding>& findings) {
    constexpr std::size_t least = 24;
    Table table({{""}, {"About"}, {"Found", Align::left, {}, least, true}});
    std::string last;
    for (const Finding& finding : findings) {
        table.add({markOf(finding.health),
                   {finding.topic == last ? "" : finding.topic, Tone::bold},
                   {fitted(finding.text, 400)}});
        last = finding.topic;
    }
    table.print(terminal);
}

Json encode(const std::vector<Finding>& findings) {
    Json json = Json::array();
    for (const Finding& finding : findings) {
        Json each = Json::object();
        each["topic"] = finding.topic;
        each["health"] = std::string(nameOf(finding.health));
        each["text"] = finding.text;
        json.push_back(versioned(std::move(each)));
    }
    return json;
}

} // namespace tokwatch
