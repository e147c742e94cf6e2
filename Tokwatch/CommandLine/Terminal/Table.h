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
/// any title there is no row of titles. Where a line has no room for all columns, those become
/// narrower that may be cut.
class Table {
  public:
    struct Cell {
        std::string text;
        Tone tone = Tone::plain;
    };
    struct Column {
        std::string title;
        Align align = Align::left;
        std::optional<Cut> cut = {}; ///< none where each letter counts
    };

    explicit Table(std::vector<Column> columns);
    void add(std::vector<Cell> row);
    bool isEmpty() const { return rows.empty(); }
    void print(Terminal& terminal) const;

  private:
    void fit(std::vector<std::vector<std::string>>& texts, std::optional<std::size_t> most) const;

    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
};

} // namespace tokwatch
