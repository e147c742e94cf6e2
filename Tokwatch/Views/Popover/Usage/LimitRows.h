#pragma once

#include "KivoLooks/Palette.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Limits/AttemptTimes.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Popover/Usage/BurnUpLine.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <qqmlregistration.h>

#include <map>
#include <vector>

namespace tokwatch {

/// One limit window as the popover lays it out.
struct LimitRow {
    Q_GADGET
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString leftText MEMBER leftText)
    Q_PROPERTY(QString resetText MEMBER resetText)
    Q_PROPERTY(QString paceSymbol MEMBER paceSymbol)
    Q_PROPERTY(QString paceCaption MEMBER paceCaption)
    Q_PROPERTY(QString spoken MEMBER spoken)
    Q_PROPERTY(double leftFraction MEMBER leftFraction)
    Q_PROPERTY(double timeLeftFraction MEMBER timeLeftFraction)
    Q_PROPERTY(tokwatch::Level::Value level MEMBER level)
    Q_PROPERTY(bool isAhead MEMBER isAhead)
    Q_PROPERTY(bool isOld MEMBER isOld)
    Q_PROPERTY(QString timeText MEMBER timeText)
    Q_PROPERTY(QString paceText MEMBER paceText)
    Q_PROPERTY(QString runOutText MEMBER runOutText)
    Q_PROPERTY(tokwatch::BurnUpLine burnUp MEMBER burnUp)
  public:
    QString label;
    QString leftText;   ///< "42%"
    QString resetText;  ///< "Resets in 3h 5m · 20:45", "Has reset"; empty when unknown
    QString paceSymbol; ///< empty, with its caption, when the pace is unknown
    QString paceCaption;
    QString spoken; ///< all of it in one sentence
    double leftFraction = 0;
    double timeLeftFraction = -1; ///< negative when unknown
    Level::Value level = Level::Normal;
    bool isAhead = false; ///< used faster than time passes
    bool isOld = false;   ///< by LimitAge
    QString timeText;     ///< what the mark on the bar tells, and …
    QString paceText;     ///< … what the pace does, for who points at them
    QString runOutText;   ///< "Runs out about 14:00"; empty where it lasts until the reset
    BurnUpLine burnUp;    ///< empty where it is not known how the limit was used
    friend bool operator==(const LimitRow&, const LimitRow&) = default;

    /// As its MeterColors.
    Q_INVOKABLE QColor fill(const kivo::Palette& colors) const;
    Q_INVOKABLE QColor figure(const kivo::Palette& colors) const;
};

/// A LimitNotice's remedy by names for QML.
namespace ProviderAction {
Q_NAMESPACE
QML_ELEMENT

enum Value {
    None = static_cast<int>(LimitNotice::Remedy::none),
    Retry = static_cast<int>(LimitNotice::Remedy::retry),
    AllowAccess = static_cast<int>(LimitNotice::Remedy::allowAccess),
    TurnOnLiveLimits = static_cast<int>(LimitNotice::Remedy::turnOnLiveLimits),
    FinishWelcome = static_cast<int>(LimitNotice::Remedy::finishWelcome),
};
Q_ENUM_NS(Value)

} // namespace ProviderAction

/// One provider's card.
struct ProviderRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString plan MEMBER plan)
    Q_PROPERTY(QVariantList windows MEMBER windows)
    Q_PROPERTY(QString creditsLabel MEMBER creditsLabel)
    Q_PROPERTY(QString creditsText MEMBER creditsText)
    Q_PROPERTY(QString asOfText MEMBER asOfText)
    Q_PROPERTY(QString notice MEMBER notice)
    Q_PROPERTY(bool noticeIsCalm MEMBER noticeIsCalm)
    Q_PROPERTY(QString tryText MEMBER tryText)
    Q_PROPERTY(tokwatch::ProviderAction::Value action MEMBER action)
  public:
    QString id; ///< the provider's raw value
    QString name;
    QString plan;         ///< empty when unknown
    QVariantList windows; ///< of LimitRow
    QString creditsLabel; ///< empty, with its text, without credits
    QString creditsText;
    QString asOfText;         ///< "As of 14:02" when the numbers are not of the latest answer
    QString notice;           ///< one sentence; empty when all is well
    bool noticeIsCalm = true; ///< nothing is wrong, and nothing is asked of the user
    QString tryText;          ///< why the action has to wait: "Tried just now · again in 24 s"
    ProviderAction::Value action = ProviderAction::None;
    friend bool operator==(const ProviderRow&, const ProviderRow&) = default;
};

/// A provider that has no limits to show, in a few words.
struct QuietProvider {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString text MEMBER text)
  public:
    QString id;   ///< the provider's raw value
    QString text; ///< "Grok has no published limits"
    friend bool operator==(const QuietProvider&, const QuietProvider&) = default;
};

/// How limits are to be judged, from the preferences.
struct LimitJudgement {
    double warningThreshold = 0.25; ///< fraction left
    double criticalThreshold = 0.1;
    bool claudeLiveLimits = true;
    bool mayAsk = true; ///< the welcome is finished
};

/// What is known of the providers, in the user's order.
struct ProvidersKnown {
    std::vector<ProviderID> providers;
    std::vector<ProviderID> present; ///< those found on this machine
    std::map<ProviderID, ProviderLimits> limits;
    std::map<ProviderID, AttemptTimes> attempts;
    LimitJudgement judgement;
    SamplesByProvider samples{};
};

/// The cards: one for each provider that has limits, or could have.
std::vector<ProviderRow> providerRows(const ProvidersKnown& known, Date now,
                                      const Calendar& calendar);
/// The others, which share a line.
std::vector<QuietProvider> quietProviders(const ProvidersKnown& known);

} // namespace tokwatch
