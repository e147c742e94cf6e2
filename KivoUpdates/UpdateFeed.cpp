#include "KivoUpdates/UpdateFeed.h"

namespace kivo {

std::optional<UpdateFeed> makeUpdateFeed(const QString& manifest, const QByteArray& publicKey,
                                         const QString& version) {
    constexpr qsizetype keyBytes = 32;
    const QUrl address(manifest, QUrl::StrictMode);
    const auto key =
        QByteArray::fromBase64Encoding(publicKey, QByteArray::AbortOnBase64DecodingErrors);
    const bool isSound = address.isValid() && address.scheme() == QLatin1String("https") &&
                         !address.host().isEmpty() && address.userInfo().isEmpty() &&
                         !address.hasQuery() && !address.hasFragment() && key &&
                         key.decoded.size() == keyBytes;
    if (!isSound) return std::nullopt;
    return UpdateFeed{address, key.decoded, QVersionNumber::fromString(version)};
}

} // namespace kivo
