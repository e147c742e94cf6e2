#pragma once

#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Popover/Models/ProjectUsage.h"
#include "Tokwatch/Views/Popover/Models/TableText.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <memory>
#include <vector>

namespace tokwatch {

/// One model, day or project.
struct BreakdownRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString rank MEMBER rank)
    Q_PROPERTY(QString provider MEMBER provider)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString hint MEMBER hint)
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(QString share MEMBER share)
    Q_PROPERTY(QString spoken MEMBER spoken)
    Q_PROPERTY(double fraction MEMBER fraction)
  public:
    QString id;
    QString rank;     ///< "1"; empty for days, whose order is their own
    QString provider; ///< raw value; of models only
    QString title;
    QString hint;  ///< what the title leaves out; mostly nothing
    QString value; ///< in the unit of summaries: "~$12.40", "—" when unknown
    QString note;  ///< in the other unit: "1.23M tokens"
    QString share; ///< of the unit, "—" when unknown
    QString spoken;
    double fraction = 0; ///< of the bar: the share, or a day's part of the largest day
    friend bool operator==(const BreakdownRow&, const BreakdownRow&) = default;
};

/// What was used, in the parts that somebody asked for. Rows are put into words one by one, as they
/// come into sight: there may be thousands.
class Breakdown {
  public:
    virtual ~Breakdown() = default;

    virtual Segment::Breakdown mode() const = 0;
    virtual std::size_t count() const = 0;
    virtual BreakdownRow row(std::size_t at) const = 0;
    /// As people read it, with the texts of the rows.
    TableText table() const;
    /// As programs read it: plain numbers, money in dollars, nothing where a price is unknown.
    virtual TableText data() const = 0;

  private:
    /// What a table says of each row before what was used.
    virtual std::vector<TableText::Column> labels() const = 0;
    virtual QStringList label(const SummaryDisplay::Row& row) const = 0;
    virtual SummaryDisplay::Row shown(std::size_t at) const = 0;
};

using BreakdownPointer = std::shared_ptr<const Breakdown>;

/// Models by what they used of the unit.
BreakdownPointer breakdownByModel(UsageSummary summary, SummaryUnit unit);
/// Days from the newest.
BreakdownPointer breakdownByDay(UsageSummary summary, SummaryUnit unit, Calendar calendar);
/// Projects by what they used of the unit.
BreakdownPointer breakdownByProject(ProjectUsage usage, SummaryUnit unit);

/// A row's texts; where it has a rank, the caller says so.
BreakdownRow rowOf(const SummaryDisplay::Row& shown, SummaryUnit unit);
/// Six digits tell shares and fractions of a cent.
QString plainNumber(double value);
/// What was used, with its shares, as programs read it.
std::vector<TableText::Column> useColumns();
QStringList useFields(const SummaryDisplay::Use& use);

} // namespace tokwatch
