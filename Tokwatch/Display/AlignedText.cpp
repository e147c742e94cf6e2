#include "Tokwatch/Display/AlignedText.h"

#include "TokwatchCore/Support/Letters.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>

namespace tokwatch {
std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (const wchar_t letter : lettersOf(text))
        width += columnsOf(letter);
    return width;
}

std::string fitted(std::string_view text, std::size_t most, Cut cut) {
    std::string clean = plainText(text);
    if (displayWidth(clean) <= most) return clean;
    std::wstring letters = lettersOf(clean);
    if (cut == Cut::start) std::ranges::reverse(letters);
    std::wstring kept;
    std::size_t width = 1; // the ellipsis
    for (const wchar_t letter : letters) {
        width += columnsOf(letter);
        if (width > most) break;
        kept += letter;
    }
    if (cut == Cut::start) std::ranges::reverse(kept);
    const std::string shown = utf8Of(kept);
    return cut == Cut::start ? "…" + shown : shown + "…";
}

std::vector<std::string>
alignedLines(const std::vector<std::vector<std::string>>& rows, const std::vector<Align>& columns,
             const std::function<std::string(std::size_t row, std::size_t column)>& paint) {
    std::vector<std::size_t> widths(columns.size(), 0);
    for (const std::vector<std::string>& row : rows)
        for (std::size_t i = 0; row.size() > 1 && i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < rows.size(); ++at) {
        const std::vector<std::string>& row = rows[at];
        std::string& line = lines.emplace_back();
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t width = displayWidth(row[i]);
            const std::string padding(widths[i] - std::min(widths[i], width), ' ');
            const std::string shown = paint ? paint(at, i) : row[i];
            if (i > 0) line += "  ";
            line += columns[i] == Align::left ? shown + padding : padding + shown;
        }
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

} // namespace tokwatch
