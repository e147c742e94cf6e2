#include "Tokwatch/CommandLine/Table.h"

#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {
namespace {

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::string padded(const Terminal& terminal, const Table::Cell& cell, std::size_t width,
                   Table::Align align) {
    const std::string padding(width - std::min(width, displayWidth(cell.text)), ' ');
    const std::string text = terminal.paint(cell.tone, cell.text);
    return align == Table::Align::left ? text + padding : padding + text;
}

} // namespace

std::size_t displayWidth(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !continuesCharacter(c); }));
}

std::string fitted(std::string_view text, std::size_t most) {
    const std::string clean = plainText(text);
    if (displayWidth(clean) <= most) return clean;
    std::size_t end = 0;
    for (std::size_t columns = 0; end < clean.size(); ++end) {
        if (!continuesCharacter(clean[end]) && ++columns == most) break;
    }
    return clean.substr(0, end) + "…";
}

std::string bar(double fraction, std::size_t width) {
    constexpr const char* eighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const double clamped = std::clamp(std::isfinite(fraction) ? fraction : 0.0, 0.0, 1.0);
    const auto filled =
        static_cast<std::size_t>(std::lround(clamped * static_cast<double>(width) * 8));
    std::string text;
    for (std::size_t i = 0; i < filled / 8; ++i)
        text += "█";
    text += eighths[filled % 8];
    return text;
}

Table::Table(std::vector<Column> titles) : columns(std::move(titles)) {}

void Table::add(std::vector<Cell> row) {
    rows.push_back(std::move(row));
}

void Table::print(Terminal& terminal) const {
    std::vector<std::size_t> widths;
    for (const Column& column : columns)
        widths.push_back(displayWidth(column.title));
    for (const std::vector<Cell>& row : rows) {
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
    }
    const auto printRow = [&](const std::vector<Cell>& row) {
        std::string text;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0) text += "  ";
            text += padded(terminal, row[i], widths[i], columns[i].align);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        terminal.line(text);
    };
    std::vector<Cell> titles;
    for (const Column& column : columns)
        titles.push_back({column.title, Tone::dim});
    const bool isTitled = std::any_of(columns.begin(), columns.end(),
                                      [](const Column& column) { return !column.title.empty(); });
    if (isTitled) printRow(titles);
    for (const std::vector<Cell>& row : rows)
        printRow(row);
}

} // namespace tokwatch
