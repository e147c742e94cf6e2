#pragma once

#include "TokwatchCore/Presentation/BurnUp.h"
#include "TokwatchCore/Presentation/Forecast.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QString>
#include <qqmlregistration.h>

#include <optional>

namespace tokwatch {

/// What was used of a limit, against the time of its window: both as fractions.
struct BurnUpLine {
    Q_GADGET
    Q_PROPERTY(bool isEmpty READ isEmpty)
    Q_PROPERTY(QString beginText MEMBER beginText)
    Q_PROPERTY(QString endText MEMBER endText)
  public:
    static BurnUpLine of(const BurnUp& course, const std::optional<Forecast>& forecast, Date now,
                         const Calendar& calendar);

    bool isEmpty() const { return used.isEmpty(); }

    QList<QPointF> used;     ///< corner by corner, the present number last
    QList<QPointF> forecast; ///< from the present number on; empty without one
    QString beginText;       ///< when the window began, "12:40"
    QString endText;         ///< when it resets
    friend bool operator==(const BurnUpLine&, const BurnUpLine&) = default;
};

} // namespace tokwatch
