#include "Tokwatch/Preferences/SettingsFollower.h"

#include "Platform/System/PrivateFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <system_error>
#include <utility>

namespace tokwatch {

void makeSettingsFile(const std::filesystem::path& file) {
    try {
        makePrivateDirectory(file.parent_path());
        createPrivately(file);
    } catch (const std::system_error&) {
        return;
    }
}

std::filesystem::path fileOf(const QSettings& settings) {
    return QFile::encodeName(settings.fileName()).toStdString();
}

SettingsFollower::SettingsFollower(const QSettings& settings, std::function<void()> changed)
    : file(fileOf(settings)) {
    const auto again = [this, changed = std::move(changed)] {
        watch();
        changed();
    };
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &watcher, again);
    QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &watcher, again);
    watch();
}

/// Writers replace the file, which ends the watch on it; the directory's watch tells of the new
/// one. The file's own is for those who write into it.
void SettingsFollower::watch() {
    makeSettingsFile(file);
    const QFileInfo place(QFile::decodeName(file.c_str()));
    const QString directory = place.absolutePath();
    if (!QFileInfo(directory).isDir()) return; // what stands there cannot be used
    if (!watcher.directories().contains(directory)) watcher.addPath(directory);
    if (!watcher.files().contains(place.absoluteFilePath()))
        watcher.addPath(place.absoluteFilePath());
}

} // namespace tokwatch
