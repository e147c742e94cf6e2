#pragma once

#include "Tokwatch/Display/StatusTitle.h"
#include "TokwatchCore/Support/Date.h"

#include <QObject>
#include <QString>

namespace tokwatch {

/// What the status item would show, for pictures of it.
struct TitlePreview {
    Q_GADGET
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(QString provider MEMBER provider)
    Q_PROPERTY(int severity MEMBER severity)
    Q_PROPERTY(int percent MEMBER percent)
    Q_PROPERTY(bool isSample MEMBER isSample)
    Q_PROPERTY(QString spoken MEMBER spoken)
  public:
    QString text;          ///< "42% · 3h 5m"; empty with the icon alone
    QString provider;      ///< a raw value; empty for the application's own mark
    int severity = 0;      ///< a Severity
    int percent = -1;      ///< the number in the text, negative without one
    bool isSample = false; ///< no limit is known yet
    QString spoken;
    friend bool operator==(const TitlePreview&, const TitlePreview&) = default;
};

/// The item by the present settings and limits; while no enabled provider has any, with made-up
/// limits, so that the settings show what they do.
TitlePreview titlePreview(const Preferences& preferences, const LimitsByProvider& limits, Date now);

} // namespace tokwatch
