#include "Tokwatch/CommandLine/Terminal/Table.h"

#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {
namespace {

/// What a column that may be cut has at least and at most, in columns of letters.
constexpr std::size_t narrowestCut = 8;
constexpr std::size_t widestCut = 120;

} // namespace

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

void Table::fit(std::vector<std::vector<std::string>>& texts,
                std::optional<std::size_t> most) const {
    std::vector<std::size_t> widths(columns.size(), 0);
    for (const std::vector<std::string>& row : texts)
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    std::size_t over = 2 * (columns.size() - 1);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].cut) widths[i] = std::min(widths[i], widestCut);
        over += widths[i];
    }
    over -= std::min(over, most.value_or(over));
    while (over > 0) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < columns.size(); ++i)
            if (columns[i].cut && (widest == nullptr || widths[i] > *widest)) widest = &widths[i];
        if (widest == nullptr || *widest <= narrowestCut) break;
        --*widest;
        --over;
    }
    for (std::vector<std::string>& row : texts)
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            if (columns[i].cut) row[i] = fitted(row[i], widths[i], *columns[i].cut);
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
    fit(texts, terminal.columns());
    const auto paint = [&](std::size_t row, std::size_t column) {
        return terminal.paint(cells[row][column].tone, texts[row][column]);
    };
    for (const std::string& line : alignedLines(texts, aligns, paint))
        terminal.line(line);
}

} // namespace tokwatch
