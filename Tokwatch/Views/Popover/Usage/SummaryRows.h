#pragma once

#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "TokwatchCore/Store/UsageSummary.h"

#include <QObject>
#include <QString>
#include <QVariantList>

namespace tokwatch {

/// One part of the stacked bar with its place in the legend.
struct SegmentRow {
    Q_GADGET
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(double fraction MEMBER fraction)
    Q_PROPERTY(int part MEMBER part)
  public:
    QString label;
    QString text;
    double fraction = 0; ///< of the whole bar
    int part = 0;        ///< of the theme's colours for parts of a whole; the same for a label
    friend bool operator==(const SegmentRow&, const SegmentRow&) = default;
};

/// One assistant's line below the bar.
struct ToolRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString sessions MEMBER sessions)
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QString detail MEMBER detail)
  public:
    QString id;
    QString name;
    QString sessions;
    QString value;
    QString detail;
    friend bool operator==(const ToolRow&, const ToolRow&) = default;
};

/// The usage of the reading window in one card.
struct SummaryCard {
    Q_GADGET
    Q_PROPERTY(bool isEmpty MEMBER isEmpty)
    Q_PROPERTY(QString period MEMBER period)
    Q_PROPERTY(QString headline MEMBER headline)
    Q_PROPERTY(QString headlineNote MEMBER headlineNote)
    Q_PROPERTY(QString other MEMBER other)
    Q_PROPERTY(QString spoken MEMBER spoken)
    Q_PROPERTY(QString exclusion MEMBER exclusion)
    Q_PROPERTY(tokwatch::Segment::Unit unit MEMBER unit)
    Q_PROPERTY(QVariantList segments MEMBER segments)
    Q_PROPERTY(QVariantList tools MEMBER tools)
  public:
    bool isEmpty = true;
    QString period;       ///< "Last 30 days"; the sentence for no usage when it is empty
    QString headline;     ///< "$124" or "1.5M"
    QString headlineNote; ///< " · API estimate" or " tokens"
    QString other;        ///< the same in the other unit, smaller
    QString spoken;
    QString exclusion; ///< that some models have no price; empty otherwise
    Segment::Unit unit = Segment::Cost;
    QVariantList segments; ///< of SegmentRow
    QVariantList tools;    ///< of ToolRow
    friend bool operator==(const SummaryCard&, const SummaryCard&) = default;
};

SummaryCard summaryCard(const UsageSummary& summary, SummaryUnit unit);

} // namespace tokwatch
