#pragma once

#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Views/Popover/Models/TableText.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QAbstractListModel>
#include <QObject>
#include <QString>
#include <qqmlregistration.h>

#include <cstddef>
#include <optional>

namespace tokwatch {

/// One model or one day.
struct BreakdownRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString rank MEMBER rank)
    Q_PROPERTY(QString provider MEMBER provider)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(QString share MEMBER share)
    Q_PROPERTY(QString spoken MEMBER spoken)
    Q_PROPERTY(double fraction MEMBER fraction)
  public:
    QString id;
    QString rank;     ///< "1"; empty for days, whose order is their own
    QString provider; ///< raw value; empty for days
    QString title;
    QString value; ///< in the unit of summaries: "~$12.40", "—" when unknown
    QString note;  ///< in the other unit: "1.23M tokens"
    QString share; ///< of the unit, "—" when unknown
    QString spoken;
    double fraction = 0; ///< of the bar: a model's share, a day's part of the largest day
    friend bool operator==(const BreakdownRow&, const BreakdownRow&) = default;
};

/// The models of a summary by what they used of the unit, or its days from the newest. Rows are put
/// into words one by one, as they come into sight: there may be thousands.
class Breakdown {
  public:
    Breakdown(UsageSummary summary, BreakdownMode mode, SummaryUnit unit, Calendar calendar);

    BreakdownMode mode() const { return breakdownMode; }
    std::size_t count() const;
    BreakdownRow row(std::size_t at) const;

    /// As people read it, with the texts of the rows.
    TableText table() const;
    /// As programs read it: plain numbers, money in dollars, nothing where a price is unknown.
    TableText data() const;

  private:
    SummaryDisplay::Row shown(std::size_t at) const;

    UsageSummary summary; ///< its models ranked by the unit
    BreakdownMode breakdownMode;
    SummaryUnit unit;
    Calendar calendar;
    double largestShare = 0; ///< of the days
};

/// The rows of a breakdown for QML, each one value under the role "row", made when it is asked for.
/// Rows keep their places while numbers change, so that a list stays where it was scrolled to.
class BreakdownModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
  public:
    using QAbstractListModel::QAbstractListModel;

    void assign(std::optional<Breakdown> next);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    std::optional<Breakdown> breakdown;
};

} // namespace tokwatch
