#pragma once

#include <filesystem>
#include <string>

namespace tokwatch {

/// The bytes of a file with a login. A missing file is CredentialError::notFound; one that cannot
/// be read, is no regular file or is beyond any sensible size is CredentialError::denied. Never
/// waits, whatever stands at the path.
std::string readCredentialFile(const std::filesystem::path& file);

/// The text, if it is UTF-8; else CredentialError::malformed.
std::string checkedText(std::string text);

} // namespace tokwatch
