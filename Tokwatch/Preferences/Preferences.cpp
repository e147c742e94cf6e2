#include "Tokwatch/Preferences/Preferences.h"

#include "Platform/System/PrivateFiles.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QSettings>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* lastPruneKey = "lastPruneAt";

/// The lower bound for anything that is not above it, as for what is not a number.
double atLeast(double bound, double value) {
    return value > bound ? value : bound;
}

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

/// Makes the directory and an empty file where they are missing, for their owner only: QSettings
/// keeps the permissions that it finds and would let everybody read a file that it makes. What
/// fails here fails again when a setting is written.
void makeFile(const std::filesystem::path& file) {
    try {
        makePrivateDirectory(file.parent_path());
        createPrivately(file);
    } catch (const std::system_error&) {
        return;
    }
}

std::filesystem::path fileOf(const QSettings& settings) {
    return QFile::encodeName(settings.fileName()).toStdString();
}

/// $XDG_CONFIG_HOME; a relative one is invalid by the base directory rules and counts as not set.
std::filesystem::path configHome() {
    const std::filesystem::path given = qgetenv("XDG_CONFIG_HOME").toStdString();
    if (given.is_absolute()) return given;
    return std::filesystem::path(QFile::encodeName(QDir::homePath()).toStdString()) / ".config";
}

} // namespace

Preferences::Preferences(QSettings& storage)
    : showDockIcon(storage, "showDockIcon", false),
      hasCompletedOnboarding(storage, "hasCompletedOnboarding", false),
      menuBarStyle(storage, "menuBarStyle", MenuBarStyle::provider),
      pinnedProvider(storage, "pinnedProvider", ProviderID::claude),
      showResetTime(storage, "showResetTime", true), menuBarWindows(storage, "menuBarWindows", {}),
      warningThreshold(storage, "warningThreshold", 0.25,
                       [](double value) { return atLeast(lowestWarning, value); }),
      criticalThreshold(storage, "criticalThreshold", 0.1,
                        [this](double value) {
                            return std::min(atLeast(lowestCritical, value),
                                            highestCritical(warningThreshold.peek()));
                        }),
      tintEnabled(storage, "tintEnabled", true),
      providerOrder(storage, "providerOrder", everyProvider(), completed),
      disabledProviders(storage, "disabledProviders", {}),
      claudeLiveLimits(storage, "claudeLiveLimits", true),
      summaryUnit(storage, "summaryUnit", SummaryUnit::cost),
      popoverTab(storage, "popoverTab", PopoverTab::usage), settings(storage),
      // What was asked for holds again as soon as the warning level leaves room for it.
      warningChanged(warningThreshold.addNotifier([this] { criticalThreshold.reload(); })) {
    tellFaults();
}

Preferences::~Preferences() = default;

double Preferences::highestCritical(double warning) {
    // As people write it: 0.15 less 0.05 is 0.1 and not 0.09999999999999999.
    constexpr double digits = 1e9;
    return std::round((warning - thresholdGap) * digits) / digits;
}

std::vector<ProviderID> Preferences::enabledProviders() const {
    std::vector<ProviderID> enabled;
    const ProviderSet& disabled = disabledProviders;
    std::ranges::copy_if(providerOrder.value(), std::back_inserter(enabled),
                         [&disabled](ProviderID provider) { return !disabled.contains(provider); });
    return enabled;
}

std::optional<Date> Preferences::lastPruneAt() const {
    bool isNumber = false;
    const double seconds = settings.value(lastPruneKey).toDouble(&isNumber);
    return isNumber ? std::optional(dateFromUnixSeconds(seconds)) : std::nullopt;
}

void Preferences::setLastPruneAt(Date date) {
    if (storageIsSound(settings)) settings.setValue(lastPruneKey, unixSeconds(date));
}

void Preferences::tellFaults() {
    std::vector<std::string> faults = settingsFaults(fileOf(settings));
    if (faults == toldFaults) return;
    for (const std::string& fault : faults)
        systemLog(fault);
    toldFaults = std::move(faults);
}

void Preferences::reload() {
    tellFaults();
    if (!storageIsSound(settings)) return; // what was read last holds
    settings.sync();
    showDockIcon.reload();
    hasCompletedOnboarding.reload();
    menuBarStyle.reload();
    pinnedProvider.reload();
    showResetTime.reload();
    menuBarWindows.reload();
    warningThreshold.reload();
    criticalThreshold.reload();
    tintEnabled.reload();
    providerOrder.reload();
    disabledProviders.reload();
    claudeLiveLimits.reload();
    summaryUnit.reload();
    popoverTab.reload();
}

bool Preferences::save() {
    if (!storageIsSound(settings)) return false;
    settings.sync();
    // A line that is no setting makes QSettings speak of an error for good and of no other: then it
    // has to do that the file may be written.
    if (settings.status() == QSettings::FormatError) return settings.isWritable();
    return settings.status() == QSettings::NoError;
}

void Preferences::followFile() {
    if (watcher) return;
    watcher = std::make_unique<QFileSystemWatcher>();
    const auto changed = [this] {
        watchFile();
        reload();
    };
    QObject::connect(watcher.get(), &QFileSystemWatcher::directoryChanged, watcher.get(), changed);
    QObject::connect(watcher.get(), &QFileSystemWatcher::fileChanged, watcher.get(), changed);
    watchFile();
    reload();
}

/// Writers replace the file, which ends the watch on it; the directory's watch tells of the new
/// one. The file's own is for those who write into it.
void Preferences::watchFile() {
    makeFile(fileOf(settings));
    const QFileInfo file(settings.fileName());
    const QString directory = file.absolutePath();
    if (!QFileInfo(directory).isDir()) return; // what stands there cannot be used
    if (!watcher->directories().contains(directory)) watcher->addPath(directory);
    if (!watcher->files().contains(file.absoluteFilePath()))
        watcher->addPath(file.absoluteFilePath());
}

std::unique_ptr<QSettings> userSettings() {
    return settingsFile(settingsPath());
}

std::filesystem::path settingsPath() {
    return configHome() / "Tokwatch/Tokwatch.conf";
}

std::unique_ptr<QSettings> settingsFile(const std::filesystem::path& file) {
    makeFile(file);
    if (settingsObstacle(file)) {
        for (const std::string& fault : settingsFaults(file))
            systemLog(fault);
        // A file that can neither be there nor be made.
        return std::make_unique<QSettings>(QStringLiteral("/dev/null/Tokwatch.conf"),
                                           QSettings::IniFormat);
    }
    return std::make_unique<QSettings>(QFile::decodeName(file.c_str()), QSettings::IniFormat);
}

} // namespace tokwatch
