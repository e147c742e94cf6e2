#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"

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

/// An amount of usage in both units.
struct ChartAmount {
    double costUSD = 0;
    std::int64_t tokens = 0;

    double in(SummaryUnit unit) const {
        return unit == SummaryUnit::cost ? costUSD : static_cast<double>(tokens);
    }
    ChartAmount& operator+=(const ChartAmount& other);

    QString text(SummaryUnit unit) const; ///< "$12.40", "1.23M"
    QString note(SummaryUnit unit) const; ///< in the other unit: "1.23M tokens", "$12.40"
    QString spoken(SummaryUnit unit) const;
};

} // namespace tokwatch
