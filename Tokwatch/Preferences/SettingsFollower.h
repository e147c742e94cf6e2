#pragma once

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <utility>

namespace tokwatch {

/// Tells that a settings file was changed, by whichever process, and stands still again, for as
/// long as it lives, also where it comes back after it was moved away. Main thread; needs an event
/// loop.
class SettingsFollower {
  public:
    SettingsFollower(std::filesystem::path file, std::function<void()> changed);

  private:
    /// Of what a file is that stands still: its size and when it was written.
    using Look = std::pair<qint64, QDateTime>;

    void watch();
    Look lookAtFile() const;

    const std::filesystem::path file;
    QFileSystemWatcher watcher;
    QTimer retry;
    QTimer rest;
    Look seen;
};

} // namespace tokwatch
