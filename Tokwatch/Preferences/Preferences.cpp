#include "Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QSettings>

#include <algorithm>
#include <iterator>

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

constexpr QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions privateDirectory = privateFile | QFileDevice::ExeOwner;

/// Makes the directory and an empty file where they are missing, for their owner only: QSettings
/// keeps the permissions that it finds and would let everybody read a file that it makes. What
/// exists is left as it is.
void makeFile(const QString& path) {
    const QString directory = QFileInfo(path).absolutePath();
    if (!QFileInfo::exists(directory)) {
        QDir().mkpath(directory);
        QFile::setPermissions(directory, privateDirectory);
    }
    if (!QFileInfo::exists(path)) {
        QFile file(path);
        file.open(QIODevice::NewOnly | QIODevice::WriteOnly, privateFile);
    }
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
                                            warningThreshold.peek() - thresholdGap);
                        }),
      tintEnabled(storage, "tintEnabled", true),
      providerOrder(storage, "providerOrder", everyProvider(), completed),
      disabledProviders(storage, "disabledProviders", {}),
      claudeLiveLimits(storage, "claudeLiveLimits", true),
      summaryUnit(storage, "summaryUnit", SummaryUnit::cost),
      popoverTab(storage, "popoverTab", PopoverTab::usage), settings(storage),
      // What was asked for holds again as soon as the warning level leaves room for it.
      warningChanged(warningThreshold.addNotifier([this] { criticalThreshold.reload(); })) {}

Preferences::~Preferences() = default;

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
    settings.setValue(lastPruneKey, unixSeconds(date));
}

void Preferences::reload() {
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
    settings.sync();
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
    makeFile(settings.fileName());
    const QFileInfo file(settings.fileName());
    const QString directory = file.absolutePath();
    if (!watcher->directories().contains(directory)) watcher->addPath(directory);
    if (!watcher->files().contains(file.absoluteFilePath()))
        watcher->addPath(file.absoluteFilePath());
}

std::unique_ptr<QSettings> userSettings() {
    auto settings =
        std::make_unique<QSettings>(QStringLiteral("Tokwatch"), QStringLiteral("Tokwatch"));
    // Neither the machine's nor another program's settings are ours.
    settings->setFallbacksEnabled(false);
    makeFile(settings->fileName());
    return settings;
}

std::unique_ptr<QSettings> settingsFile(const std::filesystem::path& file) {
    const QString path = QFile::decodeName(file.c_str());
    makeFile(path);
    return std::make_unique<QSettings>(path, QSettings::IniFormat);
}

} // namespace tokwatch
