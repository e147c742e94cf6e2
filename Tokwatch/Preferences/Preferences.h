#pragma once

#include "Tokwatch/Preferences/PlainSettings.h"
#include "Tokwatch/Preferences/SettingsGroup.h"
#include "TokwatchCore/Support/Date.h"

#include <memory>
#include <optional>
#include <vector>

namespace tokwatch {

/// The user's settings of what is shown and asked for. Main thread only.
class Preferences final : public SettingsGroup {
  public:
    explicit Preferences(std::unique_ptr<SettingsStorage> settings);

    Setting<bool> showDockIcon;
    Setting<bool> hasCompletedOnboarding;
    Setting<MenuBarStyle> menuBarStyle;
    /// Whose number the title shows, if enabled.
    Setting<ProviderID> pinnedProvider;
    Setting<bool> showResetTime;
    /// From a provider's raw value to the id of the window that stands for it in the title; a
    /// provider without an entry is shown by the window that is closest to running out.
    Setting<WindowChoices> menuBarWindows;
    /// Fractions of a limit left at which it turns yellow and red.
    Setting<double> warningThreshold;
    Setting<double> criticalThreshold;
    Setting<bool> tintEnabled;
    /// Always all providers, each once.
    Setting<ProviderList> providerOrder;
    Setting<ProviderSet> disabledProviders;
    /// Allows fetching Claude's limits with its login. A value that is no boolean forbids it.
    Setting<bool> claudeLiveLimits;
    Setting<SummaryUnit> summaryUnit;
    Setting<PopoverTab> popoverTab;

    /// All that decides what is shown. Reads it as observables, so that a tracked computation
    /// follows the settings.
    PlainSettings plain() const;
    /// `providerOrder` less `disabledProviders`.
    std::vector<ProviderID> enabledProviders() const;
    /// Keeps the other providers as they are.
    void setEnabled(ProviderID provider, bool isEnabled);

    /// When old days were last deleted; not a setting, but kept with them.
    std::optional<Date> lastPruneAt() const;
    void setLastPruneAt(Date date);

  private:
    QPropertyNotifier warningChanged;
};

} // namespace tokwatch
