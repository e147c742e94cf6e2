#pragma once

#include "Platform/Seams/AlertDisplay.h"
#include "Tokwatch/Alerts/AlertRule.h"
#include "TokwatchCore/Support/Calendar.h"

namespace tokwatch {

/// "claude/session", "claude/" for the login.
std::string nameOf(const AlertSubject& subject);

/// "Claude · Session 8% left", "Resets in 1h 12m · 14:00": what, how much, when that ends.
Alert alertOf(const DueAlert& due, Date now, const Calendar& calendar);

} // namespace tokwatch
