#include "KivoMenuBar/PlasmaColours.h"

#include <QColor>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace kivo {
namespace {

constexpr QLatin1String panelSettings("plasmarc");
constexpr QLatin1String applicationSettings("kdeglobals");
constexpr QLatin1String windowColours("Colors:Window");
// A settings file has some kilobytes.
constexpr qint64 largestFile = 1 << 20;

/// The user's directory, below it the defaults that the look of the desktop wrote, then the
/// system's. The session names the second one to its own children only.
QStringList settingsDirectories() {
    QStringList directories =
        QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    directories.insert(1, directories.front() + QStringLiteral("/kdedefaults"));
    return directories;
}

/// A file's value of a key, empty where there is none. Keys and groups may carry the mark "[$i]".
QString valueIn(const QString& path, QLatin1String group, QLatin1String key) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return {};
    const QString groupLine = QLatin1Char('[') + group + QLatin1Char(']');
    bool isInGroup = false;
    for (const QByteArray& bytes : file.read(largestFile).split('\n')) {
        QString line = QString::fromUtf8(bytes).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            isInGroup = line.remove(QLatin1String("[$i]")) == groupLine;
        } else if (const qsizetype sign = line.indexOf(QLatin1Char('=')); isInGroup && sign > 0) {
            const QString name = line.left(sign).section(QLatin1Char('['), 0, 0).trimmed();
            if (name == key) return line.mid(sign + 1).trimmed();
        }
    }
    return {};
}

QString setting(QLatin1String file, QLatin1String group, QLatin1String key) {
    for (const QString& directory : settingsDirectories())
        if (QString value = valueIn(directory + QLatin1Char('/') + file, group, key);
            !value.isEmpty())
            return value;
    return {};
}

/// "239,240,241" or a name.
std::optional<QColor> colour(const QString& text) {
    const QStringList parts = text.split(QLatin1Char(','));
    const QColor result = parts.size() < 3
                              ? QColor(text)
                              : QColor(parts[0].toInt(), parts[1].toInt(), parts[2].toInt());
    if (text.isEmpty() || !result.isValid()) return std::nullopt;
    return result;
}

template<typename Value>
std::optional<bool> isDark(Value value) {
    const auto text = colour(value(QLatin1String("ForegroundNormal")));
    const auto ground = colour(value(QLatin1String("BackgroundNormal")));
    if (!text || !ground) return std::nullopt;
    return qGray(text->rgb()) > qGray(ground->rgb());
}

std::optional<bool> isDarkIn(const QString& path) {
    return isDark([&](QLatin1String key) { return valueIn(path, windowColours, key); });
}

QString dataFile(const QString& name) {
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, name);
}

} // namespace

std::optional<bool> isPlasmaPanelDark() {
    // A theme without colours of its own has those of the applications.
    const QString theme = setting(panelSettings, QLatin1String("Theme"), QLatin1String("name"));
    if (!theme.isEmpty())
        if (const auto own =
                isDarkIn(dataFile(QStringLiteral("plasma/desktoptheme/%1/colors").arg(theme))))
            return own;
    if (const auto common = isDark(
            [](QLatin1String key) { return setting(applicationSettings, windowColours, key); }))
        return common;
    const QString scheme =
        setting(applicationSettings, QLatin1String("General"), QLatin1String("ColorScheme"));
    return isDarkIn(dataFile(QStringLiteral("color-schemes/%1.colors").arg(scheme)));
}

QStringList plasmaSettingsPaths() {
    QStringList paths;
    for (const QString& directory : settingsDirectories().mid(0, 2))
        for (const QString& path : {directory, directory + QLatin1Char('/') + panelSettings,
                                    directory + QLatin1Char('/') + applicationSettings})
            if (QFileInfo::exists(path)) paths.append(path);
    return paths;
}

} // namespace kivo
