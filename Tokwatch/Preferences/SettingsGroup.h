#pragma once

#include "Tokwatch/Preferences/Setting.h"

#include <QProperty>
#include <QTimer>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

class SettingsFollower;

/// The settings of one file. Main thread only.
///
/// No setting can fail to load: what is missing or malformed reads as its default. The file is
/// written from the event loop after an assignment, or at the latest when the storage ends.
class SettingsGroup {
  public:
    SettingsGroup(const SettingsGroup&) = delete;
    SettingsGroup& operator=(const SettingsGroup&) = delete;
    virtual ~SettingsGroup();

    /// In the order in which they are declared.
    const std::vector<AnySetting*>& all() const { return list.all; }
    /// The setting of that name, or none.
    AnySetting* named(std::string_view name) const;

    /// The file, whether or not it can be read.
    const std::filesystem::path& file() const { return list.storage->path(); }
    /// Whether the settings are the user's: not as long as there is a file that could not be read,
    /// which may forbid what the defaults allow. Observable.
    bool areKnown() const { return known.value(); }
    QBindable<bool> bindableKnown() { return &known; }

    /// What is wrong with a file of these settings, as sentences for the log and the doctor: what
    /// `settingsFaults` tells, values that are not of their setting's form, keys that nobody knows.
    std::vector<std::string> faultsOf(const std::filesystem::path& file) const;

    /// Follows changes that other processes make to the file, for as long as this lives. Needs an
    /// event loop.
    void followFile();
    /// Reads the file again and notifies of what changed, once all of it is read.
    void reload();
    /// During such notifications: nobody in this process made the change.
    bool isReloading() const { return reloading; }
    /// Writes the file now; false when that failed.
    bool save();
    /// Why changes are not in the file, as "Permission denied"; empty where they are. What cannot
    /// be written is tried again. Observable.
    const QProperty<std::string>& unsaved() const { return obstacle; }
    /// The same of a `save` that failed.
    std::string whyUnsaved() const;

  protected:
    explicit SettingsGroup(std::unique_ptr<SettingsStorage> settings);

    /// What is wrong with the file goes into the log, once each.
    void tellFaults();

    SettingList list;

  private:
    void takeOver();
    void saveOrTell();

    bool reloading = false;
    bool isLost = false; ///< the file has nothing any more of what holds
    std::set<std::string> toldFaults;
    QProperty<std::string> obstacle;
    QProperty<bool> known;
    QTimer absence; ///< of a file that was never read, until it counts as empty
    QTimer saving;
    std::unique_ptr<SettingsFollower> follower;
};

/// The settings file at the path. It and its directory are made when they are missing. Of one that
/// cannot be read, or is no regular file of bounded size, the defaults hold until `reload` can read
/// it; nothing is written meanwhile, and the settings are not `areKnown`. What was changed until
/// then is written over it.
std::unique_ptr<SettingsStorage> settingsFile(const std::filesystem::path& file);
/// Settings without a file, all at their defaults: for their names and what they may be.
std::unique_ptr<SettingsStorage> settingsOfNobody();

} // namespace tokwatch
