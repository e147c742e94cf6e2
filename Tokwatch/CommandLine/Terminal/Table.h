#pragma once

#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "Tokwatch/Display/AlignedText.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// A horizontal bar of `width` columns whose `fraction` (0…1) is filled, to an eighth of a column.
std::string bar(double fraction, std::size_t width);

/// Rows of aligned columns, two spaces apart. A row of one cell stands across all of them. Without
/// any title there is no row of titles. Where a line of the terminal has no room for all columns,
/// some give way in turn, until those have it that may be cut; then these become narrower. A last
/// column of sentences goes on below instead.
class Table {
  public:
    struct Cell {
        std::string text;
        Tone tone = Tone::plain;
        /// What it says instead each time that its column gives way; after these, nothing.
        std::vector<std::string> shorter = {};
    };
    struct Column {
        std::string title;
        Align align = Align::left;
        std::optional<Cut> cut = {}; ///< none where each letter counts
        std::size_t least = 8;       ///< what is left of it when it is cut, in columns of letters
        bool wraps = false;          ///< at blanks, the last column alone
    };

    /// `yielding`: which column gives way first, which next; one more than once where its cells
    /// have shorter texts.
    explicit Table(std::vector<Column> columns, std::vector<std::size_t> yielding = {});
    void add(std::vector<Cell> row);
    bool isEmpty() const { return rows.empty(); }
    void print(Terminal& terminal) const;

  private:
    std::vector<std::size_t> widths() const;
    std::size_t leastWidth() const;
    void giveWay(std::size_t column);
    void dropEmptyColumns();
    void cutTo(std::size_t most);
    void wrapLast(std::size_t most);
    void fit(std::size_t most);

    std::vector<Column> columns;
    std::vector<std::size_t> yielding;
    std::vector<std::vector<Cell>> rows;
};

} // namespace tokwatch
