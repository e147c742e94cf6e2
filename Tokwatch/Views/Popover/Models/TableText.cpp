#include "Tokwatch/Views/Popover/Models/TableText.h"

#include "Tokwatch/Display/AlignedText.h"
#include "TokwatchCore/Support/PlainText.h"

#include <QChar>

#include <algorithm>
#include <iterator>

namespace tokwatch {
namespace {

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

QString csvField(const QString& field) {
    QString text = (isFormula(field.toStdString()) ? "'" : "") + inOneLine(field);
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

QString TableText::aligned() const {
    const auto lineOf = [](const QStringList& fields) {
        std::vector<std::string> line;
        for (const QString& field : fields)
            line.push_back(inOneLine(field).toStdString());
        return line;
    };
    std::vector<Align> aligns;
    QStringList titles;
    for (const Column& column : columns) {
        aligns.push_back(column.isNumber ? Align::right : Align::left);
        titles.append(column.title);
    }
    std::vector<std::vector<std::string>> lines{lineOf(titles)};
    std::ranges::transform(rows, std::back_inserter(lines), lineOf);
    QString text;
    for (const std::string& line : alignedLines(lines, aligns))
        text += QString::fromStdString(line) + '\n';
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
