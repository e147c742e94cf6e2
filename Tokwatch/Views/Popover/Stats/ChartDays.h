#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Views/Popover/Stats/ChartReadout.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QObject>
#include <QString>
#include <QVariantList>

#include <vector>

namespace tokwatch {

/// The marks of a value axis that begins at zero.
struct ChartScale {
    std::vector<double> ticks; ///< above zero, evenly spaced, the last one the axis's top
    double step = 0;           ///< a round number: 1, 2, 2.5 or 5 times a power of ten

    double top() const { return ticks.empty() ? 0 : ticks.back(); }

    /// Two or three ticks that reach `most`; a single one where `most` is about the smallest amount
    /// that can be told apart, none where there is nothing to show. Steps are multiples of
    /// `smallest`.
    static ChartScale reaching(double most, double smallest);
};

/// One assistant's entry in the chart's legend.
struct ChartSeries {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
  public:
    QString id; ///< the provider's raw value
    QString name;
    friend bool operator==(const ChartSeries&, const ChartSeries&) = default;
};

struct ChartTick {
    double fraction = 0; ///< of the axis's length
    QString text;
    friend bool operator==(const ChartTick&, const ChartTick&) = default;
};

struct ChartPart {
    int series = 0;      ///< of the theme's side-by-side colours
    double fraction = 0; ///< of the axis's length
    friend bool operator==(const ChartPart&, const ChartPart&) = default;
};

struct ChartColumn {
    std::vector<ChartPart> parts; ///< from the baseline up
    QString label;                ///< below the column; empty for most
    ChartReadout readout;
    friend bool operator==(const ChartColumn&, const ChartColumn&) = default;
};

/// The days of a summary as columns that are stacked of the assistants' usage. The last column is
/// today.
struct ChartDays {
    Q_GADGET
    Q_PROPERTY(QVariantList series READ seriesList)
  public:
    std::vector<ChartSeries> series;
    std::vector<ChartTick> ticks;
    std::vector<ChartColumn> columns;
    ChartReadout whole;
    friend bool operator==(const ChartDays&, const ChartDays&) = default;

    QVariantList seriesList() const;

    static ChartDays of(const UsageSummary& summary, SummaryUnit unit, const Calendar& calendar);
};

} // namespace tokwatch
