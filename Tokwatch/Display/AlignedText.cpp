#include "Tokwatch/Display/AlignedText.h"

#include "TokwatchCore/Support/PlainText.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <array>
#include <utility>

namespace tokwatch {
namespace {

/// The blocks of East Asian letters and of pictures, which fixed-width types draw over two columns.
constexpr std::array<std::pair<char32_t, char32_t>, 8> wideBlocks{{{0x1100, 0x115F},
                                                                   {0x2E80, 0xA4CF},
                                                                   {0xAC00, 0xD7A3},
                                                                   {0xF900, 0xFAFF},
                                                                   {0xFE30, 0xFE6F},
                                                                   {0xFF00, 0xFF60},
                                                                   {0x1F300, 0x1FAFF},
                                                                   {0x20000, 0x3FFFD}}};

std::size_t columnsOf(char32_t letter) {
    const QChar::Category category = QChar::category(letter);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing) return 0;
    const auto holds = [letter](const auto& block) {
        return letter >= block.first && letter <= block.second;
    };
    return std::ranges::any_of(wideBlocks, holds) ? 2 : 1;
}

QList<uint> lettersOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toUcs4();
}

} // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (const char32_t letter : lettersOf(text))
        width += columnsOf(letter);
    return width;
}

std::string fitted(std::string_view text, std::size_t most, Cut cut) {
    const std::string clean = plainText(text);
    if (displayWidth(clean) <= most) return clean;
    QList<uint> letters = lettersOf(clean);
    if (cut == Cut::start) std::ranges::reverse(letters);
    QList<uint> kept;
    std::size_t width = 1; // the ellipsis
    for (const char32_t letter : letters) {
        width += columnsOf(letter);
        if (width > most) break;
        kept.append(letter);
    }
    if (cut == Cut::start) std::ranges::reverse(kept);
    static_assert(sizeof(uint) == sizeof(char32_t));
    const std::string shown =
        QString::fromUcs4(reinterpret_cast<const char32_t*>(kept.constData()), kept.size())
            .toStdString();
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
