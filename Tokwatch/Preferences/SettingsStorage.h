#pragma once

#include <QString>
#include <QVariant>

#include <filesystem>
#include <map>
#include <optional>

class QSettings;

namespace tokwatch {

/// What stands in a settings file, as the toolkit reads and writes it, with the changes that are
/// not there yet. Main thread only.
///
/// A QSettings writes what it is told by itself, from the event loop and at its end: in another
/// user's home as the administrator, and through whatever link stands there by then. Hence it lives
/// only for as long as a file is read or written here: after a look at the links, and as the owner
/// of the directory (`ActingAsOwner`).
class SettingsStorage {
  public:
    /// Nothing is read yet.
    explicit SettingsStorage(std::filesystem::path file);
    /// Saves the changes that are not in the file.
    ~SettingsStorage();
    SettingsStorage(const SettingsStorage&) = delete;
    SettingsStorage& operator=(const SettingsStorage&) = delete;

    const std::filesystem::path& path() const { return file; }
    /// The file could be read since this was made.
    bool isLoaded() const { return hasBeenRead; }
    /// There were settings in it when it was read last.
    bool hasContents() const { return !wasEmpty; }

    /// By their keys; those of groups are "group/key".
    using Values = std::map<QString, QVariant>;
    const Values& values() const { return present; }
    bool contains(const QString& key) const { return present.contains(key); }
    /// Invalid where it is missing.
    QVariant value(const QString& key) const;

    void setValue(const QString& key, const QVariant& value);
    /// With the group of that name.
    void remove(const QString& key);

    /// Reads the file again; changes that are not in it hold still. False where it cannot be used
    /// (`settingsObstacle`); then all stays as it is.
    bool load();
    /// Writes the changes into the file, which is made where it is missing, and keeps what others
    /// changed there meanwhile; false when that failed, or nothing was ever read of it.
    bool save();

  private:
    void takeOver(const QSettings& toolkit);

    const std::filesystem::path file;
    bool hasBeenRead = false;
    bool wasEmpty = true;
    Values present;
    std::map<QString, std::optional<QVariant>> changes; ///< none for what was removed
};

} // namespace tokwatch
