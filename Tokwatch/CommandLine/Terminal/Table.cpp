#include "Tokwatch/CommandLine/Terminal/Table.h"

#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {

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
    std::vector<Align> aligns;
    std::vector<Cell> titles;
    for (const Column& column : columns) {
        aligns.push_back(column.align);
        titles.push_back({column.title, Tone::dim});
    }
    std::vector<std::vector<Cell>> cells;
    if (std::ranges::any_of(columns, [](const Column& each) { return !each.title.empty(); }))
        cells.push_back(titles);
    cells.insert(cells.end(), rows.begin(), rows.end());
    std::vector<std::vector<std::string>> texts;
    for (const std::vector<Cell>& row : cells) {
        std::vector<std::string>& line = texts.emplace_back();
        for (const Cell& cell : row)
            line.push_back(plainText(cell.text));
    }
    const auto paint = [&](std::size_t row, std::size_t column) {
        return terminal.paint(cells[row][column].tone, texts[row][column]);
    };
    for (const std::string& line : alignedLines(texts, aligns, paint))
        terminal.line(line);
}

} // namespace tokwatch
