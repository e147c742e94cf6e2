#pragma once

#include "Tokwatch/CommandLine/Terminal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tokwatch {

/// Columns a text takes on a terminal: characters, not bytes. Every character of ours is one column
/// wide.
std::size_t displayWidth(std::string_view text);

/// The text cut to at most `most` columns, with an ellipsis where something is missing, and
/// plain (`plainText`).
std::string fitted(std::string_view text, std::size_t most);

/// A horizontal bar of `width` columns whose `fraction` (0…1) is filled, to an eighth of a column.
std::string bar(double fraction, std::size_t width);

/// Rows of aligned columns, two spaces apart. A row of one cell stands across all of them. Without
/// any title there is no row of titles.
class Table {
  public:
    struct Cell {
        std::string text;
        Tone tone = Tone::plain;
    };
    enum class Align { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns);
    void add(std::vector<Cell> row);
    bool isEmpty() const { return rows.empty(); }
    void print(Terminal& terminal) const;

  private:
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
};

} // namespace tokwatch
