#include "KivoLaunch/LoginItem.h"

#include "Platform/System/ActingAsOwner.h"
#include "Platform/System/OwnLinks.h"
#include "Platform/System/Places.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"

#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <optional>
#include <system_error>
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

/// The file that the entry is, or nothing where it cannot be told or another user chose it.
std::optional<std::string> readEntry(const std::filesystem::path& entry, std::size_t mostBytes) {
    try {
        return tokwatch::readWholeFile(tokwatch::followOwnLinks(entry), mostBytes);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

/// The entry, or the user's own link in its place; what that leads to was not made here. Throws
/// std::system_error where another user's link leads to it.
bool removeEntry(const std::filesystem::path& entry) {
    tokwatch::followOwnLinks(entry);
    const auto place = tokwatch::followOwnLinks(entry.parent_path()) / entry.filename();
    const tokwatch::ActingAsOwner owner(place.parent_path());
    std::error_code ignored;
    std::filesystem::remove(place, ignored);
    return !std::filesystem::exists(place, ignored);
}

/// Bytes. Ours has some two hundred.
constexpr std::size_t largestEntry = 65'536;

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
    const std::filesystem::path given(QFile::encodeName(config).toStdString());
    // It is relative where HOME is.
    return (given.is_absolute() ? given : tokwatch::homeDirectory() / ".config") / "autostart";
}

bool LoginItem::isEnabled() const {
    const std::optional<std::string> stored = readEntry(entry, largestEntry);
    if (!stored) return false;
    bool inEntry = false;
    for (const QByteArray& stretch : QByteArray::fromStdString(*stored).split('\n')) {
        const QByteArray text = stretch.trimmed();
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
    try {
        if (!isEnabled) return removeEntry(entry);
        // A link to a device masks the entry; it stays, and the entry does not.
        tokwatch::makePrivateDirectory(entry.parent_path());
        tokwatch::replacePrivately(entry, contents().toStdString());
        return true;
    } catch (const std::system_error&) {
        return false;
    }
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
