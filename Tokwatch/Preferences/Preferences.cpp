#include "Tokwatch/Preferences/Preferences.h"

#include <utility>

namespace tokwatch {
namespace {

constexpr const char* lastPruneKey = "lastPruneAt";

ProviderList everyProvider() {
    return {allCases<ProviderID>.begin(), allCases<ProviderID>.end()};
}

} // namespace

Preferences::Preferences(std::unique_ptr<SettingsStorage> settings)
    : SettingsGroup(std::move(settings)),
      showDockIcon(list, "showDockIcon", "a task-bar entry for the window", false),
      hasCompletedOnboarding(list, "hasCompletedOnboarding", "the welcome window has been seen",
                             false),
      menuBarStyle(list, "menuBarStyle", "what stands in the status area", MenuBarStyle::provider),
      pinnedProvider(list, "pinnedProvider", "the provider shown in the status area",
                     ProviderID::claude),
      showResetTime(list, "showResetTime", "the time of the reset beside the number", true),
      menuBarWindows(list, "menuBarWindows", "the limit shown for each provider", {}),
      warningThreshold(list, "warningThreshold", "the fraction left at which a limit warns",
                       Thresholds().warning, Thresholds::acceptedWarning, "a number from 0.1 to 1"),
      criticalThreshold(
          list, "criticalThreshold", "the fraction left at which a limit is critical",
          Thresholds().critical,
          [this](double value) {
              return Thresholds::acceptedCritical(value, warningThreshold.peek());
          },
          "a number from 0.05 to warningThreshold - 0.05"),
      tintEnabled(list, "tintEnabled", "colour the number by its severity", true),
      providerOrder(list, "providerOrder", "the order of providers", everyProvider(), completed),
      disabledProviders(list, "disabledProviders", "providers that are not shown", {}),
      claudeLiveLimits(list, "claudeLiveLimits", "ask for live limits of Claude", true, {}, nullptr,
                       false),
      summaryUnit(list, "summaryUnit", "lead with cost or tokens", SummaryUnit::cost),
      popoverTab(list, "popoverTab", "the tab that opens", PopoverTab::usage),
      // What was asked for holds again as soon as the warning level leaves room for it.
      warningChanged(warningThreshold.addNotifier([this] { criticalThreshold.reload(); })) {
    list.kept = {{lastPruneKey, keptTimes, isText<Date>}};
    tellFaults();
}

std::vector<ProviderID> Preferences::enabledProviders() const {
    return enabledOf(providerOrder, disabledProviders);
}

PlainSettings Preferences::plain() const {
    return {menuBarStyle,  pinnedProvider,     pinnedProvider.isChosen(),
            showResetTime, menuBarWindows,     {warningThreshold, criticalThreshold},
            tintEnabled,   enabledProviders(), claudeLiveLimits,
            summaryUnit};
}

void Preferences::setEnabled(ProviderID provider, bool isEnabled) {
    ProviderSet disabled = disabledProviders.peek();
    if (isEnabled)
        disabled.erase(provider);
    else
        disabled.insert(provider);
    disabledProviders = std::move(disabled);
}

std::optional<Date> Preferences::lastPruneAt() const {
    return storedDate(*list.storage, lastPruneKey);
}

void Preferences::setLastPruneAt(Date date) {
    list.onStore();
    list.storage->setValue(lastPruneKey, unixSeconds(date));
}

} // namespace tokwatch
