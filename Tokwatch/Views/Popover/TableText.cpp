#include "Tokwatch/Views/Popover/TableText.h"

#include <QChar>

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

bool isUnseen(char32_t letter) {
    switch (QChar::category(letter)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

int columnsOf(char32_t letter) {
    const QChar::Category category = QChar::category(letter);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing) return 0;
    const auto holds = [letter](const auto& block) {
        return letter >= block.first && letter <= block.second;
    };
    return std::ranges::any_of(wideBlocks, holds) ? 2 : 1;
}

QString csvField(const QString& field) {
    QString text = inOneLine(field);
    const bool needsQuotes =
        text.contains(',') || text.contains('"') || text.startsWith(' ') || text.endsWith(' ');
    return needsQuotes ? '"' + text.replace('"', "\"\"") + '"' : text;
}

} // namespace

QString inOneLine(const QString& text) {
    QString line;
    for (const char32_t letter : text.toUcs4())
        line += isUnseen(letter) ? QStringLiteral(" ") : QString::fromUcs4(&letter, 1);
    return line;
}

int fixedWidth(const QString& text) {
    int width = 0;
    for (const char32_t letter : text.toUcs4())
        width += columnsOf(letter);
    return width;
}

QString TableText::aligned() const {
    QStringList titles;
    for (const Column& column : columns)
        titles.append(column.title);
    std::vector<QStringList> lines{titles};
    for (const QStringList& row : rows) {
        QStringList& line = lines.emplace_back();
        for (const QString& field : row)
            line.append(inOneLine(field));
    }
    std::vector<int> widths(columns.size(), 0);
    for (const QStringList& line : lines)
        for (qsizetype i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], fixedWidth(line[i]));

    QString text;
    for (const QStringList& line : lines) {
        QString joined;
        for (qsizetype i = 0; i < line.size(); ++i) {
            const QString padding(widths[i] - fixedWidth(line[i]), ' ');
            if (i > 0) joined += "  ";
            joined += columns[i].isNumber ? padding + line[i] : line[i] + padding;
        }
        while (joined.endsWith(' '))
            joined.chop(1);
        text += joined + '\n';
    }
    return text;
}

QString TableText::csv() const {
    QString text;
    const auto append = [&text](QStringList fields) {
        std::ranges::transform(fields, fields.begin(), csvField);
        text += fields.join(',') + "\r\n";
    };
    QStringList titles;
    for (const Column& column : columns)
        titles.append(column.title);
    append(titles);
    for (const QStringList& row : rows)
        append(row);
    return text;
}

} // namespace tokwatch
