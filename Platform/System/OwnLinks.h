#pragma once

#include <filesystem>
#include <system_error>

#include <sys/types.h>

/// Whose the links and files are that stand where ours belong, and on the way there.
namespace tokwatch {

/// What another user planted stands in the place of a file of ours, or on the way there.
class ForeignFileError : public std::system_error {
  public:
    /// `what` as in "/x is a link of another user".
    ForeignFileError(const std::filesystem::path& file, const char* what);
};

/// Whether a link or file at this place may be the user's doing: its owner is the user or the
/// system. In another user's directory the administrator trusts that user, too.
bool isTrustedOwner(uid_t owner, const std::filesystem::path& place);

/// Where the path really leads, all links on the way and in its own place followed; absolute. What
/// does not exist is taken as it is. Throws ForeignFileError at a link that is not the user's or
/// the system's own, wherever it stands: what is written must not land where somebody else chose.
/// The administrator follows another user's link only within what is that user's.
std::filesystem::path followOwnLinks(const std::filesystem::path& path);

} // namespace tokwatch
