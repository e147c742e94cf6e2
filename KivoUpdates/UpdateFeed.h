#pragma once

#include <QByteArray>
#include <QUrl>
#include <QVersionNumber>

#include <functional>
#include <optional>

namespace kivo {

/// Where a program's maker says what its newest version is, and how to know that it was the maker.
struct UpdateFeed {
    QUrl manifest;          ///< https, without a query
    QByteArray publicKey;   ///< Ed25519, 32 bytes
    QVersionNumber version; ///< that runs

    /// The detached signature, beside the manifest: its address with ".sig" behind it.
    QUrl signature() const { return QUrl(manifest.toString(QUrl::FullyEncoded) + ".sig"); }
};

/// None where the address or the key (base64) is empty or makes no sense.
std::optional<UpdateFeed> makeUpdateFeed(const QString& manifest, const QByteArray& publicKey,
                                         const QString& version);

/// What came of asking for an address.
struct Fetched {
    int status = 0;  ///< HTTP's; 0 where no answer came
    QByteArray body; ///< bounded by who fetched it
    QString error;   ///< why no answer came, a part of a sentence
};

/// Asks over https, with a bound and a deadline, follows no redirect, says nothing of the user, and
/// calls back once, from the event loop or at once.
using UpdateFetch = std::function<void(const QUrl& address, std::function<void(Fetched)> done)>;

} // namespace kivo
