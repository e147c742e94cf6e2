#include "KivoUpdates/ManifestJudgement.h"

#include <sodium.h>

namespace kivo {
namespace {

const unsigned char* bytes(const QByteArray& array) {
    return reinterpret_cast<const unsigned char*>(array.constData());
}

bool isSigned(const QByteArray& document, const QByteArray& signature, const QByteArray& key) {
    const auto decoded = QByteArray::fromBase64Encoding(signature.trimmed(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() != crypto_sign_BYTES ||
        key.size() != crypto_sign_PUBLICKEYBYTES || sodium_init() < 0)
        return false;
    return crypto_sign_verify_detached(bytes(decoded.decoded), bytes(document),
                                       static_cast<unsigned long long>(document.size()),
                                       bytes(key)) == 0;
}

} // namespace

std::variant<UpdateManifest, UpdateRefusal>
judgeManifest(const QByteArray& document, const QByteArray& signature, const QByteArray& publicKey,
              std::optional<Moment> newestSeen, Moment now) {
    if (!isSigned(document, signature, publicKey)) return UpdateRefusal::signature;
    std::optional<UpdateManifest> manifest = parseManifest(document);
    if (!manifest) return UpdateRefusal::form;
    const Moment latest = now + clockSlack;
    if (manifest->date > latest) return UpdateRefusal::ahead;
    if (newestSeen && *newestSeen <= latest && manifest->date < *newestSeen)
        return UpdateRefusal::replayed;
    if (manifest->date < now - longestAge) return UpdateRefusal::outdated;
    return *std::move(manifest);
}

QString sentenceFor(UpdateRefusal refusal) {
    switch (refusal) {
    case UpdateRefusal::signature:
        return QStringLiteral("The feed's signature is wrong, so nothing it says is believed.");
    case UpdateRefusal::form:
        return QStringLiteral("The feed is signed but cannot be read.");
    case UpdateRefusal::replayed:
        return QStringLiteral(
            "The feed is older than the last one seen: an old one was sent again.");
    case UpdateRefusal::outdated:
        return QStringLiteral("The feed is older than %1 days, so a newer version may be withheld.")
            .arg(longestAge.count());
    case UpdateRefusal::ahead:
        return QStringLiteral("The feed is dated in the future. Is this computer's clock right?");
    }
    return {};
}

} // namespace kivo
