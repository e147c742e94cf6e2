#pragma once

#include "KivoUpdates/UpdateManifest.h"

#include <variant>

namespace kivo {

/// Why a manifest is not believed.
enum class UpdateRefusal {
    signature, ///< it is not the maker's, or was changed on its way
    form,      ///< signed, but no manifest
    replayed,  ///< older than one that was believed before
    outdated,  ///< older than `longestAge`
    ahead,     ///< dated after the present
};

/// A feed is signed anew at least this often, with or without a new version: whoever stands between
/// could else show an old one for ever.
inline constexpr std::chrono::days longestAge{90};
/// As much the maker's clock may be ahead of ours.
inline constexpr std::chrono::days clockSlack{1};

/// Judges a document by its detached signature (base64, of Ed25519) and the maker's public key, 32
/// bytes; then by its form and its age. Nothing of it is read before the signature holds.
/// `newestSeen`: the date of the newest one that was ever believed; a date that lies ahead is
/// nonsense, and counts as none.
std::variant<UpdateManifest, UpdateRefusal>
judgeManifest(const QByteArray& document, const QByteArray& signature, const QByteArray& publicKey,
              std::optional<Moment> newestSeen, Moment now);

/// The reason in words: what was found, and what that means.
QString sentenceFor(UpdateRefusal refusal);

} // namespace kivo
