#include "TokwatchCore/Records/LimitRecords.h"

#include <QString>

// Apart from the other rules on limits: letters are the toolkit's business, and a program that only
// reads limits is to start without it.
namespace tokwatch {

std::optional<std::string> planName(std::string_view raw) {
    if (raw.empty()) return std::nullopt;
    const std::string name = boundedName(std::string(raw));
    const QString text = QString::fromStdString(name);
    if (text.toStdString() != name) return name; // not UTF-8: nothing to capitalise
    const qsizetype first = text[0].isHighSurrogate() && text.size() > 1 ? 2 : 1;
    return (text.left(first).toUpper() + text.mid(first)).toStdString();
}

} // namespace tokwatch
