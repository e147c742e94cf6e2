#pragma once

#include "TokwatchCore/Support/Calendar.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <cstdint>

namespace tokwatch {

/// What a chart says in words: of the day that is looked at, or of all its days.
struct ChartReadout {
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QVariantMap figures MEMBER figures)
    Q_PROPERTY(QString spoken MEMBER spoken)
  public:
    QString title;       ///< "Tue, Nov 24" or "Last 30 days"
    QString note;        ///< the same in the other unit, and what else is known
    QString value;       ///< "$12.40" or "1.23M"
    QVariantMap figures; ///< by the ids of the chart's legend
    QString spoken;
    friend bool operator==(const ChartReadout&, const ChartReadout&) = default;
};

/// Calls a readout by its day, or by all of the days that end today.
void nameDay(ChartReadout& readout, Date day, bool isToday, const Calendar& calendar);
void nameWhole(ChartReadout& readout, std::int64_t days);

} // namespace tokwatch
