#include "KivoLaunch/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace kivo {
namespace {

/// A value of the type string: what would end the line or begin an escape is escaped.
QString stringValue(QString text) {
    return text.replace(u'\\', QLatin1String("\\\\"))
        .replace(u'\n', QLatin1String("\\n"))
        .replace(u'\r', QLatin1String("\\r"))
        .replace(u'\t', QLatin1String("\\t"));
}

/// Within quotes these four keep their meaning unless a backslash stands before them.
QString quoted(const QString& argument) {
    QString text(u'"');
    for (const QChar character : argument) {
        if (QStringView(u"\"`$\\").contains(character)) text += u'\\';
        text += character;
    }
    return text + u'"';
}

bool isPlain(const QString& argument) {
    return !argument.isEmpty() && std::ranges::all_of(argument, [](QChar character) {
        return (character.unicode() < 0x80 && character.isLetterOrNumber()) ||
               QStringView(u"/._-+,:@").contains(character);
    });
}

QString line(const char* key, const QString& value) {
    return QLatin1String(key) + u'=' + stringValue(value) + u'\n';
}

QString pathText(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

} // namespace

QString desktopEntryCommand(const QStringList& command) {
    QStringList arguments;
    for (const QString& argument : command) {
        // A percent sign begins a field code, quoted or not.
        const QString text = isPlain(argument) ? argument : quoted(argument);
        arguments.append(QString(text).replace(u'%', QLatin1String("%%")));
    }
    return arguments.join(u' ');
}

LoginItem::LoginItem(const std::filesystem::path& directory, Program what)
    : entry(directory / (what.id.toStdString() + ".desktop")), program(std::move(what)) {}

std::filesystem::path LoginItem::userDirectory() {
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return std::filesystem::path(QFile::encodeName(config).toStdString()) / "autostart";
}

bool LoginItem::isEnabled() const {
    QFile stored(pathText(entry));
    if (!stored.open(QIODevice::ReadOnly | QIODevice::Text)) return false;
    bool inEntry = false;
    while (!stored.atEnd()) {
        const QByteArray text = stored.readLine().trimmed();
        if (text.startsWith('[')) inEntry = text == "[Desktop Entry]";
        const qsizetype separator = text.indexOf('=');
        if (!inEntry || separator < 0) continue;
        const QByteArray key = text.left(separator).trimmed();
        const QByteArray value = text.mid(separator + 1).trimmed();
        if (key == "Hidden" && value == "true") return false;
        if (key == "X-GNOME-Autostart-enabled" && value == "false") return false;
    }
    return true;
}

bool LoginItem::setEnabled(bool isEnabled) {
    const QString path = pathText(entry);
    if (!isEnabled) return !QFile::exists(path) || QFile::remove(path);
    if (!QDir().mkpath(pathText(entry.parent_path()))) return false;
    // A link to a device masks the entry; saving would put a file in the device's place.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) return false;
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents().toUtf8()) >= 0 && file.commit();
}

QString LoginItem::contents() const {
    QString text("[Desktop Entry]\nType=Application\n");
    text += line("Name", program.name);
    text += line("Comment", program.comment);
    text += line("Exec", desktopEntryCommand(program.command));
    // Nothing happens, and nothing complains, once the program is gone.
    text += line("TryExec", program.command.value(0));
    text += line("Icon", program.icon);
    return text + "Terminal=false\nStartupNotify=false\n";
}

} // namespace kivo
