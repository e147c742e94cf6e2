#include "Tokwatch/Preferences/SettingsFollower.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <utility>

namespace tokwatch {
namespace {

/// Until a directory that is gone is looked for again.
constexpr std::chrono::seconds pause{5};
/// For which a file stands still that was written: who writes into it has emptied it before.
constexpr std::chrono::milliseconds settling{250};

} // namespace

SettingsFollower::SettingsFollower(std::filesystem::path itsFile, std::function<void()> changed)
    : file(std::move(itsFile)) {
    const auto again = [this] {
        watch();
        if (rest.isActive()) return;
        seen = lookAtFile();
        rest.start();
    };
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &watcher, again);
    QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &watcher, again);
    for (QTimer* timer : {&retry, &rest})
        timer->setSingleShot(true);
    retry.setInterval(pause);
    QObject::connect(&retry, &QTimer::timeout, &watcher, again);
    rest.setInterval(settling);
    QObject::connect(&rest, &QTimer::timeout, &watcher, [this, changed = std::move(changed)] {
        watch();
        if (std::exchange(seen, lookAtFile()) != seen) return rest.start();
        changed();
    });
    watch();
}

/// Writers replace the file, which ends the watch on it; the directory's watch tells of the new
/// one. The file's own is for those who write into it. Nothing is made here: whoever moves the
/// settings elsewhere and puts a link in their place would find it taken.
void SettingsFollower::watch() {
    const QFileInfo place(QFile::decodeName(file.c_str()));
    const QString directory = place.absolutePath();
    if (!QFileInfo(directory).isDir()) return retry.start();
    if (!watcher.directories().contains(directory)) watcher.addPath(directory);
    if (!place.exists()) return retry.start();
    // Behind a link, writers replace its target.
    const QString targets = QFileInfo(place.canonicalFilePath()).absolutePath();
    if (!watcher.directories().contains(targets)) watcher.addPath(targets);
    if (!watcher.files().contains(place.absoluteFilePath()))
        watcher.addPath(place.absoluteFilePath());
}

SettingsFollower::Look SettingsFollower::lookAtFile() const {
    const QFileInfo place(QFile::decodeName(file.c_str()));
    return {place.size(), place.lastModified()};
}

} // namespace tokwatch
