#pragma once

#include "Tokwatch/Display/RunOuts.h"
#include "Tokwatch/Display/Severity.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// What stands in the status area.
struct StatusTitle {
    std::optional<std::string> text;    ///< "42% · 3h 5m"; none with the icon alone
    std::optional<ProviderID> provider; ///< whose limit the text shows
    Severity severity = Severity::normal;
    std::string tooltip;              ///< one line a provider, never empty
    bool isOld = false;               ///< what the text shows is no longer current
    std::optional<int> percentLeft{}; ///< the number in the text, cut off as it is: 0…100
    std::optional<Date> runsOutAt{};  ///< the limit in the text, before its reset

    friend bool operator==(const StatusTitle&, const StatusTitle&) = default;
};

/// The title by the user's settings.
StatusTitle statusTitle(const PlainSettings& settings, const LimitsByProvider& limits, Date now,
                        const RunOuts& runOuts = {});

/// Whose limit the title shows: the pinned provider's, or the first one's while that is turned off.
/// Until somebody has chosen, the first with a limit stands in for one without. None when all are
/// turned off.
std::optional<ProviderID> shownProvider(const PlainSettings& settings,
                                        const LimitsByProvider& limits);

/// One limit of one provider: a step of scrolling over the item, an entry of its menu.
struct LimitStep {
    ProviderID provider = ProviderID::claude;
    std::string windowID;
    bool isUsual = false; ///< the title shows it, or would with text
    /// What the item shows while it was scrolled here, whatever the settings choose: "Weekly 66%",
    /// in the colour of this limit.
    /// The tooltip is the limit in words: "Claude · Weekly 66% left · resets in 2d 4h".
    StatusTitle title;

    friend bool operator==(const LimitStep&, const LimitStep&) = default;
};

/// All that the status area shows.
struct StatusContent {
    StatusTitle title;
    std::vector<LimitStep> steps; ///< of the enabled providers, in the user's order

    friend bool operator==(const StatusContent&, const StatusContent&) = default;
};
StatusContent statusContent(const PlainSettings& settings, const LimitsByProvider& limits, Date now,
                            const RunOuts& runOuts = {});

/// The window closest to running out: the smallest part left among those that have not reset yet,
/// or among all when all have; the first of equals. Null without windows.
const LimitWindow* tightestWindow(const ProviderLimits& limits, Date now);

/// The window that stands for the provider in the title: the chosen one, else the tightest.
const LimitWindow* menuBarWindow(const PlainSettings& settings, ProviderID provider,
                                 const ProviderLimits& limits, Date now);

} // namespace tokwatch
