#pragma once

#include <QFileSystemWatcher>
#include <QTimer>

#include <filesystem>
#include <functional>

class QSettings;

namespace tokwatch {

/// Tells that a settings file was changed, by whichever process, and stands still again, for as
/// long as it lives, also where it comes back after it was moved away. Main thread; needs an event
/// loop.
class SettingsFollower {
  public:
    SettingsFollower(const QSettings& settings, std::function<void()> changed);

  private:
    void watch();

    const std::filesystem::path file;
    QFileSystemWatcher watcher;
    QTimer retry;
    QTimer rest;
};

} // namespace tokwatch
