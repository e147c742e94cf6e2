#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tokwatch {

/// A table to be taken elsewhere. Names in it come from logs and may hold anything.
struct TableText {
    struct Column {
        QString title;
        bool isNumber = false; ///< aligned at the right
    };
    std::vector<Column> columns;
    std::vector<QStringList> rows; ///< as many fields as columns

    /// Aligned columns, two spaces apart, for places with a fixed-width type. No line ends with
    /// spaces; the last one is ended, too.
    QString aligned() const;
    /// As RFC 4180 has it: CRLF behind each line, quotes where a field needs them; a formula of a
    /// spreadsheet is a text.
    QString csv() const;
};

/// One line without anything that is not seen: control characters, line and paragraph separators
/// and those that turn the direction of text become spaces.
QString inOneLine(const QString& text);

} // namespace tokwatch
