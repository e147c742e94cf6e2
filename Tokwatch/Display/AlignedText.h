#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// Columns that a text takes in a fixed-width type: combining marks none, wide letters two.
std::size_t displayWidth(std::string_view text);

/// Which end of a text goes where there is no room for all of it: of a path the start.
enum class Cut { end, start };

/// The text cut to at most `most` columns, with an ellipsis where something is missing, and
/// plain (`plainText`).
std::string fitted(std::string_view text, std::size_t most, Cut cut = Cut::end);

enum class Align { left, right };

/// Lines of aligned columns, two spaces apart, none of which ends with spaces. A row of one field
/// stands across all of them. What `paint` makes of a field is taken to be as wide as the field.
std::vector<std::string>
alignedLines(const std::vector<std::vector<std::string>>& rows, const std::vector<Align>& columns,
             const std::function<std::string(std::size_t row, std::size_t column)>& paint = {});

} // namespace tokwatch
