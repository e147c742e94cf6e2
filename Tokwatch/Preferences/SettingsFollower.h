#pragma once

#include <QFileSystemWatcher>

#include <filesystem>
#include <functional>

class QSettings;

namespace tokwatch {

/// Makes the settings file and its directory where they are missing, for their owner only:
/// QSettings keeps the permissions that it finds and would let everybody read a file that it makes.
/// What fails here fails again when a setting is written.
void makeSettingsFile(const std::filesystem::path& file);

/// Where the settings are kept.
std::filesystem::path fileOf(const QSettings& settings);

/// Tells that a settings file was changed, by whichever process, for as long as it lives. Main
/// thread; needs an event loop.
class SettingsFollower {
  public:
    SettingsFollower(const QSettings& settings, std::function<void()> changed);

  private:
    void watch();

    const std::filesystem::path file;
    QFileSystemWatcher watcher;
};

} // namespace tokwatch
