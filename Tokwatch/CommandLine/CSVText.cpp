#include "Tokwatch/CommandLine/CSVText.h"

#include "TokwatchCore/Support/PlainText.h"

#include <array>
#include <charconv>

namespace tokwatch {

std::string csvField(const std::string& text) {
    std::string field = (isFormula(text) ? "'" : "") + plainText(text);
    if (field.find_first_of("\",\r\n") == std::string::npos) return field;
    for (std::size_t at = field.find('"'); at != std::string::npos; at = field.find('"', at + 2))
        field.insert(at, 1, '"');
    return '"' + field + '"';
}

std::string csvField(const Json& value) {
    if (value.is_string()) return csvField(value.get<std::string>());
    return value.is_null() ? "" : value.dump();
}

std::string csvLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields)
        line.append(line.empty() ? "" : ",").append(field);
    return line + "\r\n";
}

std::string csvNumber(std::optional<double> number) {
    std::array<char, 64> text{};
    if (!number) return {};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), *number).ptr;
    return {text.data(), end};
}

} // namespace tokwatch
