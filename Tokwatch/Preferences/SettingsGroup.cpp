#include "Tokwatch/Preferences/SettingsGroup.h"

#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/SettingsFollower.h"
#include "Tokwatch/Preferences/StoredSettings.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/PlainText.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoreApplication>
#include <QScopedValueRollback>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tokwatch {
namespace {

/// What the toolkit keeps of other programs in such values; their lines are no settings.
constexpr std::string_view foreignValue = "@Variant(";

bool isForeign(const StoredEntries& entries) {
    return std::ranges::any_of(entries, [](const auto& entry) {
        return std::ranges::any_of(
            entry.second, [](const std::string& item) { return item.starts_with(foreignValue); });
    });
}

/// What somebody wrote, as it may be shown.
std::string quoted(const std::string& text) {
    return '"' + plainText(boundedName(text)) + '"';
}

/// A file that was never read may be moved away and put right by hand.
constexpr std::chrono::seconds absencePatience{10};

/// Missing or empty.
bool isAbsent(const std::filesystem::path& file) {
    const SettingsContents contents = readSettings(file);
    return contents.text.empty() && !contents.obstacle;
}

/// Nobody is to see half of a file.
struct NotifiedAtOnce {
    NotifiedAtOnce() { Qt::beginPropertyUpdateGroup(); }
    ~NotifiedAtOnce() { Qt::endPropertyUpdateGroup(); }
    NotifiedAtOnce(const NotifiedAtOnce&) = delete;
    NotifiedAtOnce& operator=(const NotifiedAtOnce&) = delete;
};

/// A file that can neither be there nor be made.
constexpr const char* nowhere = "/dev/null/Tokwatch.conf";

} // namespace

SettingsGroup::SettingsGroup(std::unique_ptr<SettingsStorage> settings)
    : list{std::move(settings)}, known(list.storage->isLoaded()) {
    absence.setSingleShot(true);
    QObject::connect(&absence, &QTimer::timeout, &absence, [this] { takeOver(); });
    saving.setSingleShot(true);
    QObject::connect(&saving, &QTimer::timeout, &saving, [this] { saveOrTell(); });
    // Commands save themselves, and have no loop.
    list.onStore = [this] {
        if (std::exchange(isLost, false))
            for (AnySetting* setting : list.all)
                setting->store();
        if (QCoreApplication::instance() != nullptr) saving.start(0);
    };
}

SettingsGroup::~SettingsGroup() = default;

AnySetting* SettingsGroup::named(std::string_view name) const {
    const auto found = std::ranges::find(list.all, name, &AnySetting::name);
    return found == list.all.end() ? nullptr : *found;
}

std::vector<std::string> SettingsGroup::faultsOf(const std::filesystem::path& file) const {
    const SettingsContents contents = readSettings(file);
    std::vector<std::string> faults;
    std::vector<std::string> unread; // these matter least
    const StoredSettings stored(contents.text);
    for (const std::string& name : stored.names()) {
        const StoredEntries entries = stored.entries(name);
        if (isForeign(entries)) continue;
        const std::string found = plainText(boundedName(name)) + " in " + file.string() + " is " +
                                  quoted(textOf(entries));
        const auto kept = std::ranges::find(list.kept, name, &KeptValue::key);
        if (const AnySetting* setting = named(name)) {
            if (const auto taken = setting->takenInstead(entries))
                faults.push_back(found + ", not " + setting->domain().values + "; it counts as " +
                                 quoted(*taken));
        } else if (kept == list.kept.end()) {
            unread.push_back(found + ", but no setting has that name; nobody reads it");
        } else if (std::string text; !takeStored(entries, text) || !kept->isOne(text)) {
            faults.push_back(found + ", not " + std::string(kept->values) +
                             "; it counts as missing");
        }
    }
    faults.insert(faults.end(), unread.begin(), unread.end());
    return settingsFaults(file, contents, faults);
}

void SettingsGroup::tellFaults() {
    const std::vector<std::string> faults = faultsOf(file());
    std::set<std::string> present(faults.begin(), faults.end());
    for (const std::string& fault : faults)
        if (!toldFaults.contains(fault)) systemLog(fault);
    toldFaults = std::move(present);
}

void SettingsGroup::reload() {
    tellFaults();
    if (areKnown() || !isAbsent(file()))
        takeOver();
    else if (!absence.isActive())
        absence.start(absencePatience);
}

void SettingsGroup::takeOver() {
    absence.stop();
    // What was read last holds, also of a file that is being moved, or was emptied and could not be
    // written: it may forbid what the defaults allow.
    if (!list.storage->load()) return;
    isLost = !list.storage->hasContents();
    const QScopedValueRollback<bool> whileNotifying(reloading, true);
    const NotifiedAtOnce atOnce;
    known = true;
    if (isLost) return;
    for (AnySetting* setting : list.all)
        setting->reload();
}

bool SettingsGroup::save() {
    return list.storage->save();
}

std::string SettingsGroup::whyUnsaved() const {
    if (!areKnown()) return "what is there cannot be used";
    return settingsObstacle(file()).value_or(writingObstacle(file()));
}

void SettingsGroup::saveOrTell() {
    constexpr int retryMilliseconds = 10'000;
    std::string reason = save() ? "" : whyUnsaved();
    if (!reason.empty()) {
        if (reason != obstacle.value())
            systemLog("changes of settings could not be written to " + file().string() + ": " +
                      reason);
        saving.start(retryMilliseconds);
    }
    obstacle = std::move(reason);
}

void SettingsGroup::followFile() {
    if (follower) return;
    follower = std::make_unique<SettingsFollower>(file(), [this] { reload(); });
    reload();
}

std::unique_ptr<SettingsStorage> settingsFile(const std::filesystem::path& file) {
    makeSettingsFile(file);
    auto storage = std::make_unique<SettingsStorage>(file);
    storage->load();
    return storage;
}

std::unique_ptr<SettingsStorage> settingsOfNobody() {
    return std::make_unique<SettingsStorage>(nowhere);
}

} // namespace tokwatch
