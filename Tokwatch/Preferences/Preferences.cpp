#include "Tokwatch/Preferences/Preferences.h"

#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/SettingsFollower.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QFile>
#include <QSettings>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* lastPruneKey = "lastPruneAt";
/// A file that can neither be there nor be made.
constexpr const char* nowhere = "/dev/null/Tokwatch.conf";

ProviderList everyProvider() {
    return {allCases<ProviderID>.begin(), allCases<ProviderID>.end()};
}

/// Each provider once: the given ones in their order, then the others in declaration order.
ProviderList completed(const ProviderList& given) {
    ProviderList order;
    const auto append = [&order](ProviderID provider) {
        if (std::ranges::count(order, provider) == 0) order.push_back(provider);
    };
    std::ranges::for_each(given, append);
    std::ranges::for_each(allCases<ProviderID>, append);
    return order;
}

} // namespace

Preferences::Preferences(QSettings& settings)
    : list{settings, {}},
      showDockIcon(list, "showDockIcon", "a task-bar entry for the window", false),
      hasCompletedOnboarding(list, "hasCompletedOnboarding", "the welcome window has been seen",
                             false),
      menuBarStyle(list, "menuBarStyle", "what stands in the status area", MenuBarStyle::provider),
      pinnedProvider(list, "pinnedProvider", "the provider shown in the status area",
                     ProviderID::claude),
      showResetTime(list, "showResetTime", "the time of the reset beside the number", true),
      menuBarWindows(list, "menuBarWindows", "the limit shown for each provider", {}),
      warningThreshold(list, "warningThreshold", "the fraction left below which a limit warns",
                       Thresholds().warning, Thresholds::acceptedWarning, "a number from 0.1 to 1"),
      criticalThreshold(
          list, "criticalThreshold", "the fraction left below which a limit is critical",
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
    tellFaults();
}

Preferences::~Preferences() = default;

AnySetting* Preferences::named(std::string_view name) const {
    const auto found = std::ranges::find(list.all, name, &AnySetting::name);
    return found == list.all.end() ? nullptr : *found;
}

bool Preferences::areKnown() const {
    return fileOf(list.storage) != nowhere;
}

std::vector<ProviderID> Preferences::enabledProviders() const {
    std::vector<ProviderID> enabled;
    const ProviderSet& disabled = disabledProviders;
    std::ranges::copy_if(providerOrder.value(), std::back_inserter(enabled),
                         [&disabled](ProviderID provider) { return !disabled.contains(provider); });
    return enabled;
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
    bool isNumber = false;
    const double seconds = list.storage.value(lastPruneKey).toDouble(&isNumber);
    return isNumber ? std::optional(dateFromUnixSeconds(seconds)) : std::nullopt;
}

void Preferences::setLastPruneAt(Date date) {
    if (storageIsSound(list.storage)) list.storage.setValue(lastPruneKey, unixSeconds(date));
}

void Preferences::tellFaults() {
    std::vector<std::string> faults = settingsFaults(fileOf(list.storage));
    if (faults == toldFaults) return;
    for (const std::string& fault : faults)
        systemLog(fault);
    toldFaults = std::move(faults);
}

void Preferences::reload() {
    tellFaults();
    if (!storageIsSound(list.storage)) return; // what was read last holds
    list.storage.sync();
    for (AnySetting* setting : list.all)
        setting->reload();
}

bool Preferences::save() {
    if (!storageIsSound(list.storage)) return false;
    list.storage.sync();
    // A line that is no setting makes QSettings speak of an error for good and of no other: then it
    // has to do that the file may be written.
    if (list.storage.status() == QSettings::FormatError) return list.storage.isWritable();
    return list.storage.status() == QSettings::NoError;
}

void Preferences::followFile() {
    if (follower) return;
    follower = std::make_unique<SettingsFollower>(list.storage, [this] { reload(); });
    reload();
}

std::unique_ptr<QSettings> userSettings() {
    return settingsFile(settingsPath());
}

std::unique_ptr<QSettings> settingsFile(const std::filesystem::path& file) {
    makeSettingsFile(file);
    if (settingsObstacle(file)) {
        for (const std::string& fault : settingsFaults(file))
            systemLog(fault);
        return settingsOfNobody();
    }
    return std::make_unique<QSettings>(QFile::decodeName(file.c_str()), QSettings::IniFormat);
}

std::unique_ptr<QSettings> settingsOfNobody() {
    return std::make_unique<QSettings>(QString::fromLatin1(nowhere), QSettings::IniFormat);
}

} // namespace tokwatch
