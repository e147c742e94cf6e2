#include "Tokwatch/Preferences/SettingsGroup.h"

#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/SettingsFollower.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

/// A file that can neither be there nor be made.
constexpr const char* nowhere = "/dev/null/Tokwatch.conf";

} // namespace

SettingsGroup::SettingsGroup(QSettings& settings) : list{settings, {}} {}

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
    list.storage.sync();
    // A line that is no setting makes QSettings speak of an error for good and of no other: then it
    // has to do that the file may be written.
    if (list.storage.status() == QSettings::FormatError) return list.storage.isWritable();
    return list.storage.status() == QSettings::NoError;
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
