#include "KivoMenuBar/BarStyleSheet.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace kivo {
namespace {

// Sheets import a palette or two; a circle of imports or definitions must end.
constexpr int deepestNesting = 8;
// A style sheet and all that it imports have some kilobytes; a colour has some characters.
constexpr qint64 largestSheets = 1 << 20;
constexpr qsizetype longestColour = 200;

/// At most `most` bytes of a regular file; of anything else nothing, without waiting for it.
QByteArray contents(const QString& path, qint64 most) {
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return {};
    QFile file;
    file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return file.read(std::min<qint64>(most, status.st_size)); // for which it makes room first
}

QString withoutComments(QString text) {
    QString plain;
    qsizetype from = 0;
    for (qsizetype start = 0; (start = text.indexOf(QLatin1String("/*"), from)) >= 0;) {
        plain += QStringView(text).mid(from, start - from);
        const qsizetype end = text.indexOf(QLatin1String("*/"), start + 2);
        if (end < 0) return plain;
        from = end + 2;
    }
    return plain.append(QStringView(text).mid(from));
}

/// The file that an import names: in quotes, in url(…), or bare.
QString importedFile(QStringView argument) {
    argument = argument.trimmed();
    if (argument.startsWith(QLatin1String("url("))) {
        argument = argument.mid(4);
        argument = argument.left(argument.indexOf(QLatin1Char(')'))).trimmed();
    }
    if (argument.startsWith(QLatin1Char('"')) || argument.startsWith(QLatin1Char('\''))) {
        const QChar quote = argument.front();
        argument = argument.mid(1);
        argument = argument.left(argument.indexOf(quote));
    }
    return argument.trimmed().toString();
}

/// What a sheet and those that it imports say of the colour of text. Reads each file once and each
/// character a few times, whatever is in them.
class TextColours {
  public:
    void read(const QString& path, int depth = 0) {
        const QString file = QFileInfo(path).canonicalFilePath();
        if (depth > deepestNesting || file.isEmpty() || seen.contains(file)) return;
        seen.insert(file);
        const QByteArray bytes = contents(file, left);
        left -= bytes.size();
        const QString text = withoutComments(QString::fromUtf8(bytes));
        const QDir folder = QFileInfo(path).dir();
        // A statement ends with a semicolon, a rule is a selector and what stands in braces; of
        // rules within braces the innermost count.
        qsizetype start = 0;
        QStringView selectors;
        for (qsizetype at = 0; at < text.size(); ++at) {
            const QChar c = text[at];
            const QStringView part = QStringView(text).mid(start, at - start);
            if (c == QLatin1Char('{'))
                selectors = part.mid(part.lastIndexOf(QLatin1Char(';')) + 1);
            else if (c == QLatin1Char('}') && !selectors.isEmpty())
                rule(std::exchange(selectors, {}), part);
            else if (c == QLatin1Char(';') && selectors.isEmpty())
                statement(part.trimmed(), folder, depth);
            else if (c != QLatin1Char('}'))
                continue;
            start = at + 1;
        }
    }

    /// Of the first of these selectors that has one.
    std::optional<QColor> of(std::initializer_list<QLatin1String> selectors) const {
        for (const QLatin1String selector : selectors)
            if (const auto found = colours.constFind(selector); found != colours.cend())
                return colour(*found);
        return std::nullopt;
    }

  private:
    void statement(QStringView text, const QDir& folder, int depth) {
        constexpr QLatin1String import("@import");
        constexpr QLatin1String definition("@define-color");
        if (text.startsWith(import)) {
            read(folder.filePath(importedFile(text.mid(import.size()))), depth + 1);
        } else if (text.startsWith(definition)) {
            text = text.mid(definition.size()).trimmed();
            const auto space = std::ranges::find_if(text, [](QChar c) { return c.isSpace(); });
            const qsizetype length = space - text.begin();
            definitions[text.left(length).toString()] = text.mid(length).trimmed().toString();
        }
    }

    void rule(QStringView selectors, QStringView body) {
        static const QRegularExpression declaration(
            QStringLiteral(R"((?:^|;)\s*color\s*:([^;]+))"));
        const QRegularExpressionMatch found = declaration.match(body.toString());
        if (!found.hasMatch()) return;
        for (const QStringView selector : selectors.split(QLatin1Char(',')))
            colours[selector.trimmed().toString()] =
                found.captured(1).trimmed(); // the later rule wins
    }

    std::optional<QColor> colour(const QString& value, int depth = 0) const {
        if (depth > deepestNesting || value.size() > longestColour) return std::nullopt;
        if (value.startsWith(QLatin1Char('@'))) {
            const auto definition = definitions.constFind(value.mid(1));
            if (definition == definitions.cend()) return std::nullopt;
            return colour(*definition, depth + 1);
        }
        static const QRegularExpression derived(
            QStringLiteral(R"(^(?:alpha|shade|lighter|darker)\(\s*([^,]+?)\s*[,)])"));
        if (const auto found = derived.match(value); found.hasMatch())
            return colour(found.captured(1), depth + 1);
        static const QRegularExpression components(
            QStringLiteral(R"(^rgba?\(\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+))"));
        if (const auto found = components.match(value); found.hasMatch())
            return QColor(std::min(found.captured(1).toInt(), 255),
                          std::min(found.captured(2).toInt(), 255),
                          std::min(found.captured(3).toInt(), 255));
        // GTK puts the opacity behind the colour, Qt before it.
        const bool hasOpacity =
            value.startsWith(QLatin1Char('#')) && (value.size() == 5 || value.size() == 9);
        const QColor plain(hasOpacity ? value.left(value.size() == 5 ? 4 : 7) : value);
        if (!plain.isValid()) return std::nullopt;
        return plain;
    }

    QSet<QString> seen; ///< files
    qint64 left = largestSheets;
    QHash<QString, QString> definitions;
    QHash<QString, QString> colours; ///< as written, by selector
};

} // namespace

QString barStyleSheet(uint process) {
    const QString place = QStringLiteral("/proc/%1/").arg(process);
    // Relative paths are meant from the folder that the bar was started in.
    const auto named = [&place](const QByteArray& path) {
        const QString folder = QFile::symLinkTarget(place + QLatin1String("cwd"));
        const QString name = QFile::decodeName(path);
        return folder.isEmpty() && QDir::isRelativePath(name) ? QString()
                                                              : QDir(folder).filePath(name);
    };
    QFile commandLine(place + QLatin1String("cmdline"));
    if (commandLine.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> words = commandLine.readAll().split('\0');
        for (qsizetype index = 1; index < words.size(); ++index) {
            const QByteArray& word = words[index];
            if (word.startsWith("--style=")) return named(word.mid(8));
            if ((word == "-s" || word == "--style") && index + 1 < words.size())
                return named(words[index + 1]);
        }
    }
    return QStandardPaths::locate(QStandardPaths::GenericConfigLocation,
                                  QStringLiteral("waybar/style.css"));
}

std::optional<QColor> barTextColour(const QString& styleSheetPath) {
    if (styleSheetPath.isEmpty()) return std::nullopt;
    TextColours colours;
    colours.read(styleSheetPath);
    return colours.of({QLatin1String("#tray"), QLatin1String("window#waybar"),
                       QLatin1String("#waybar"), QLatin1String("window"), QLatin1String("*")});
}

} // namespace kivo
