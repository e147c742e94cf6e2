#include "Tokwatch/CommandLine/Terminal/Table.h"

#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {
namespace {

/// What a column that may be cut has at most, in columns of letters.
constexpr std::size_t widestCut = 120;
/// Between two columns.
constexpr std::size_t gap = 2;

/// The text broken at blanks into lines of at most `columns`, but for longer words.
std::vector<std::string> wordWrapped(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines(1);
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        std::string& last = lines.back();
        if (last.empty())
            last = word;
        else if (displayWidth(last) + 1 + displayWidth(word) <= columns)
            last.append(1, ' ').append(word);
        else
            lines.emplace_back(word);
    }
    return lines;
}

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

Table::Table(std::vector<Column> titles, std::vector<std::size_t> order)
    : columns(std::move(titles)), yielding(std::move(order)) {}

void Table::add(std::vector<Cell> row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i].text = plainText(row[i].text);
        if (row.size() > 1 && columns[i].cut)
            row[i].text = fitted(row[i].text, widestCut, *columns[i].cut);
    }
    rows.push_back(std::move(row));
}

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths(columns.size(), 0);
    for (const std::vector<Cell>& row : rows)
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
    return widths;
}

/// With all cut that may be.
std::size_t Table::leastWidth() const {
    const std::vector<std::size_t> whole = widths();
    std::size_t sum = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t width = columns[i].cut ? std::min(whole[i], columns[i].least) : whole[i];
        if (width > 0) sum += width + (sum > 0 ? gap : 0);
    }
    return sum;
}

void Table::giveWay(std::size_t column) {
    for (std::vector<Cell>& row : rows) {
        if (row.size() <= std::max<std::size_t>(column, 1)) continue;
        Cell& cell = row[column];
        cell.text.clear();
        if (cell.shorter.empty()) continue;
        cell.text = plainText(cell.shorter.front());
        cell.shorter.erase(cell.shorter.begin());
    }
}

void Table::dropEmptyColumns() {
    const std::vector<std::size_t> whole = widths();
    for (std::size_t i = columns.size() - 1; i > 0; --i) {
        if (whole[i] > 0) continue;
        const auto at = static_cast<std::ptrdiff_t>(i);
        columns.erase(columns.begin() + at);
        for (std::vector<Cell>& row : rows)
            if (i < row.size()) row.erase(row.begin() + at);
    }
}

void Table::cutTo(std::size_t most) {
    std::vector<std::size_t> allowed = widths();
    std::size_t over = gap * (columns.size() - 1);
    for (const std::size_t width : allowed)
        over += width;
    over -= std::min(over, most);
    for (; over > 0; --over) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < columns.size(); ++i)
            if (columns[i].cut && allowed[i] > std::max(columns[i].least, widest ? *widest : 0))
                widest = &allowed[i];
        if (widest == nullptr) break;
        --*widest;
    }
    for (std::vector<Cell>& row : rows)
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            if (columns[i].cut) row[i].text = fitted(row[i].text, allowed[i], *columns[i].cut);
}

void Table::wrapLast(std::size_t most) {
    const std::vector<std::size_t> whole = widths();
    const std::size_t last = columns.size() - 1;
    std::size_t before = gap * last;
    for (std::size_t i = 0; i < last; ++i)
        before += whole[i];
    const std::size_t room = std::max(columns[last].least, most - std::min(most, before));
    std::vector<std::vector<Cell>> wrapped;
    for (std::vector<Cell>& row : rows) {
        const bool isWhole = row.size() <= last || displayWidth(row[last].text) <= room;
        const std::vector<std::string> lines =
            isWhole ? std::vector<std::string>{} : wordWrapped(row[last].text, room);
        const Tone tone = row.back().tone;
        wrapped.push_back(std::move(row));
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i > 0) wrapped.emplace_back(columns.size());
            wrapped.back()[last] = {lines[i], tone};
        }
    }
    rows = std::move(wrapped);
}

void Table::fit(std::size_t most) {
    const auto fitsAfter = [&](const std::vector<std::size_t>& steps) {
        Table shortened = *this;
        for (const std::size_t column : steps)
            shortened.giveWay(column);
        return shortened.leastWidth() <= most;
    };
    std::vector<std::size_t> steps;
    for (std::size_t i = 0; i < yielding.size() && !fitsAfter(steps); ++i)
        steps.push_back(yielding[i]);
    // Where a wide column gave way, a narrow one before it may have done so for nothing.
    for (std::size_t i = steps.size(); i-- > 0;) {
        std::vector<std::size_t> fewer = steps;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
        if (fitsAfter(fewer)) steps = std::move(fewer);
    }
    for (const std::size_t column : steps)
        giveWay(column);
    dropEmptyColumns();
    cutTo(most);
    if (columns.back().wraps) wrapLast(most);
}

void Table::print(Terminal& terminal) const {
    Table shown = *this;
    if (std::ranges::any_of(columns, [](const Column& each) { return !each.title.empty(); })) {
        std::vector<Cell> titles;
        for (const Column& column : columns)
            titles.push_back({column.title, Tone::dim});
        shown.rows.insert(shown.rows.begin(), std::move(titles));
    }
    if (const auto most = terminal.columns()) shown.fit(*most);
    std::vector<Align> aligns;
    for (const Column& column : shown.columns)
        aligns.push_back(column.align);
    std::vector<std::vector<std::string>> texts;
    for (const std::vector<Cell>& row : shown.rows) {
        std::vector<std::string>& line = texts.emplace_back();
        for (const Cell& cell : row)
            line.push_back(cell.text);
    }
    const auto paint = [&](std::size_t row, std::size_t column) {
        return terminal.paint(shown.rows[row][column].tone, texts[row][column]);
    };
    for (const std::string& line : alignedLines(texts, aligns, paint))
        terminal.line(line);
}

} // namespace tokwatch
