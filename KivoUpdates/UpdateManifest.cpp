#include "KivoUpdates/UpdateManifest.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

namespace kivo {
namespace {

constexpr qsizetype longestNotes = 1000; // characters
constexpr qsizetype longestVersion = 32;
constexpr qsizetype longestPage = 2000;

bool isShown(char32_t code) {
    switch (QChar::category(code)) {
    case QChar::Other_Control:
        return code == U'\n';
    case QChar::Other_Format: // those that turn the direction of text, and others that nobody sees
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString plain(const QString& text, qsizetype longest) {
    QString shown;
    qsizetype count = 0;
    for (const uint code : text.toUcs4()) {
        if (++count > longest) return shown + u'…';
        shown += isShown(code) ? QString::fromUcs4(reinterpret_cast<const char32_t*>(&code), 1)
                               : QStringLiteral("?");
    }
    return shown;
}

QVersionNumber versionFrom(const QString& text) {
    qsizetype end = 0;
    const QVersionNumber version = QVersionNumber::fromString(text, &end);
    return end == text.size() && end <= longestVersion ? version : QVersionNumber();
}

/// Null for one that leads anywhere but to a web page.
QUrl pageFrom(const QString& text) {
    const QUrl page(text, QUrl::StrictMode);
    const bool isPage = text.size() <= longestPage && page.isValid() &&
                        page.scheme() == QLatin1String("https") && !page.host().isEmpty() &&
                        page.userInfo().isEmpty();
    return isPage ? page : QUrl();
}

} // namespace

std::optional<UpdateManifest> parseManifest(const QByteArray& document) {
    if (document.size() > largestManifest) return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(document).object();
    const auto text = [&object](QLatin1String key) { return object.value(key).toString(); };

    const QDateTime date = QDateTime::fromString(text(QLatin1String("date")), Qt::ISODateWithMs);
    const UpdateManifest manifest{
        versionFrom(text(QLatin1String("version"))),
        Moment(std::chrono::milliseconds(date.toMSecsSinceEpoch())),
        plain(text(QLatin1String("notes")), longestNotes).trimmed(),
        pageFrom(text(QLatin1String("page"))),
    };
    const bool isWhole =
        !manifest.version.isNull() && date.isValid() && date.timeSpec() != Qt::LocalTime &&
        object.value(QLatin1String("notes")).isString() && !manifest.page.isEmpty();
    return isWhole ? std::optional(manifest) : std::nullopt;
}

} // namespace kivo
