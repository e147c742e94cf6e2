#pragma once

#include "Tokwatch/Display/Severity.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

class Preferences;

/// What stands in the status area.
struct StatusTitle {
    std::optional<std::string> text;    ///< "42% · 3h 5m"; none with the icon alone
    std::optional<ProviderID> provider; ///< whose limit the text shows
    Severity severity = Severity::normal;
    std::string tooltip;              ///< one line a provider, never empty
    bool isOld = false;               ///< what the text shows is no longer current
    std::optional<int> percentLeft{}; ///< the number in the text, cut off as it is: 0…100

    friend bool operator==(const StatusTitle&, const StatusTitle&) = default;
};

/// The title by the user's settings. Reads what it depends on as observables, so that a tracked
/// computation follows the settings.
StatusTitle statusTitle(const Preferences& preferences, const LimitsByProvider& limits, Date now);

/// One limit of one provider, as the title can show it.
struct WindowChoice {
    ProviderID provider;
    std::string windowID;
    std::string label; ///< "Session"

    friend bool operator==(const WindowChoice&, const WindowChoice&) = default;
};

/// What the title can show of a provider, in the provider's order.
std::vector<WindowChoice> windowChoices(const LimitsByProvider& limits, ProviderID provider);
/// The same of all enabled providers, in the user's order: the steps of scrolling over the item.
std::vector<WindowChoice> windowChoices(const Preferences& preferences,
                                        const LimitsByProvider& limits);

/// The title showing this choice whatever the settings choose; its tooltip names it. When the
/// window is gone, the provider's usual one; when the provider is, or is disabled, the usual title.
StatusTitle statusTitle(const Preferences& preferences, const LimitsByProvider& limits, Date now,
                        const WindowChoice& choice);

/// "Claude · Session 42% left · resets in 3h 5m"; empty when the limit is gone.
std::string limitLine(const LimitsByProvider& limits, Date now, const WindowChoice& choice);

/// The window closest to running out: the smallest part left among those that have not reset yet,
/// or among all when all have; the first of equals. Null without windows.
const LimitWindow* tightestWindow(const ProviderLimits& limits, Date now);

/// The window that stands for the provider in the title: the chosen one, else the tightest.
const LimitWindow* menuBarWindow(const Preferences& preferences, ProviderID provider,
                                 const ProviderLimits& limits, Date now);

} // namespace tokwatch
