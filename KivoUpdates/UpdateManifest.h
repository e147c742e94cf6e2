#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

#include <chrono>
#include <optional>

namespace kivo {

/// Seconds since 1970-01-01T00:00:00Z with a fraction.
using Moment = std::chrono::sys_time<std::chrono::duration<double>>;

/// What a feed says of a program's newest version. The texts are plain, bounded, and without
/// control characters, whoever wrote them.
struct UpdateManifest {
    QVersionNumber version;
    Moment date;   ///< when the feed was written
    QString notes; ///< what is new; lines end with a line feed
    QUrl page;     ///< https, for a browser

    friend bool operator==(const UpdateManifest&, const UpdateManifest&) = default;
};

/// Bytes of a document; real ones have some hundred.
inline constexpr qsizetype largestManifest = 16'384;

/// Reads {"version": "1.2.0", "date": "2026-11-26T12:00:00Z", "notes": "…", "page": "https://…"};
/// other keys do not matter. None where one of these is missing, has another type or makes no
/// sense: a version that is not numbers, a date without its offset, a page that is not https.
std::optional<UpdateManifest> parseManifest(const QByteArray& document);

} // namespace kivo
