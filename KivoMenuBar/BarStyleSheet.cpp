#include "BarStyleSheet.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>

namespace kivo {
namespace {

// Sheets import a palette or two; a circle of imports or definitions must end.
constexpr int deepestNesting = 8;
// A style sheet has some kilobytes.
constexpr qint64 largestSheet = 1 << 20;

QString contents(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.read(largestSheet));
}

/// What a sheet and those that it imports say of the colour of text.
class TextColours {
  public:
    void read(const QString& path, int depth = 0) {
        if (depth > deepestNesting) return;
        static const QRegularExpression comment(QStringLiteral(R"(/\*.*?\*/)"),
                                                QRegularExpression::DotMatchesEverythingOption);
        static const QRegularExpression statement(
            QStringLiteral(R"(@import\s+(?:url\(\s*)?["']?(?<file>[^"');]+)["']?\s*\)?\s*;)"
                           R"(|@define-color\s+(?<name>[\w-]+)\s+(?<value>[^;]+);)"
                           R"(|(?<selectors>[^{}@;]+)\{(?<body>[^{}]*)\})"));
        const QString text = contents(path).remove(comment);
        for (auto match = statement.globalMatch(text); match.hasNext();) {
            const QRegularExpressionMatch found = match.next();
            if (found.hasCaptured(QStringLiteral("file")))
                read(QFileInfo(path).dir().filePath(found.captured(QStringLiteral("file"))),
                     depth + 1);
            else if (found.hasCaptured(QStringLiteral("name")))
                definitions[found.captured(QStringLiteral("name"))] =
                    found.captured(QStringLiteral("value")).trimmed();
            else
                rule(found.captured(QStringLiteral("selectors")),
                     found.captured(QStringLiteral("body")));
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
    void rule(const QString& selectors, const QString& body) {
        static const QRegularExpression declaration(
            QStringLiteral(R"((?:^|;)\s*color\s*:([^;]+))"));
        const QRegularExpressionMatch found = declaration.match(body);
        if (!found.hasMatch()) return;
        for (const QString& selector : selectors.split(QLatin1Char(',')))
            colours[selector.trimmed()] = found.captured(1).trimmed(); // the later rule wins
    }

    std::optional<QColor> colour(const QString& value, int depth = 0) const {
        if (depth > deepestNesting) return std::nullopt;
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

    QHash<QString, QString> definitions;
    QHash<QString, QString> colours; ///< as written, by selector
};

} // namespace

QString barStyleSheet(uint process) {
    QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(process));
    if (commandLine.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> words = commandLine.readAll().split('\0');
        for (qsizetype index = 1; index < words.size(); ++index) {
            const QByteArray& word = words[index];
            if (word.startsWith("--style=")) return QString::fromLocal8Bit(word.mid(8));
            if ((word == "-s" || word == "--style") && index + 1 < words.size())
                return QString::fromLocal8Bit(words[index + 1]);
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
