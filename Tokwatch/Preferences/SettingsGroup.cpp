#include "Tokwatch/Preferences/SettingsGroup.h"

#include "Platform/System/ActingAsOwner.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/SettingsFollower.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

/// A file that can neither be there nor be made.
constexpr const char* nowhere = "/dev/null/Tokwatch.conf";

} // namespace

SettingsGroup::SettingsGroup(QSettings& settings) : list{settings, {}} {
    saving.setSingleShot(true);
    QObject::connect(&saving, &QTimer::timeout, &saving, [this] { saveOrTell(); });
    // Commands save themselves, and have no loop.
    list.onStore = [this] {
        if (QCoreApplication::instance() != nullptr) saving.start(0);
    };
}

SettingsGroup::~SettingsGroup() = default;

AnySetting* SettingsGroup::named(std::string_view name) const {
    const auto found = std::ranges::find(list.all, name, &AnySetting::name);
    return found == list.all.end() ? nullptr : *found;
}

bool SettingsGroup::areKnown() const {
    return fileOf(list.storage) != nowhere;
}

void SettingsGroup::tellFaults() {
    std::vector<std::string> faults = settingsFaults(fileOf(list.storage));
    if (faults == toldFaults) return;
    for (const std::string& fault : faults)
        systemLog(fault);
    toldFaults = std::move(faults);
}

void SettingsGroup::reload() {
    tellFaults();
    if (!storageIsSound(list.storage)) return; // what was read last holds
    list.storage.sync();
    for (AnySetting* setting : list.all)
        setting->reload();
}

bool SettingsGroup::save() {
    if (!areKnown() || !storageIsSound(list.storage)) return false;
    const ActingAsOwner owner(fileOf(list.storage).parent_path());
    // Another for the same file: one that failed once speaks of that for good.
    QSettings present(list.storage.fileName(), QSettings::IniFormat);
    present.sync();
    // A line that is no setting makes QSettings speak of an error and of no other: then it has to
    // do that the file may be written.
    if (present.status() == QSettings::FormatError) return present.isWritable();
    return present.status() == QSettings::NoError;
}

std::string SettingsGroup::whyUnsaved() const {
    if (!areKnown()) return "what is there cannot be used";
    const std::filesystem::path file = fileOf(list.storage);
    return settingsObstacle(file).value_or(writingObstacle(file));
}

void SettingsGroup::saveOrTell() {
    constexpr int retryMilliseconds = 10'000;
    std::string reason = save() ? "" : whyUnsaved();
    if (!reason.empty()) {
        if (reason != obstacle.value())
            systemLog("changes of settings could not be written to " +
                      fileOf(list.storage).string() + ": " + reason);
        saving.start(retryMilliseconds);
    }
    obstacle = std::move(reason);
}

void SettingsGroup::followFile() {
    if (follower) return;
    follower = std::make_unique<SettingsFollower>(list.storage, [this] { reload(); });
    reload();
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
