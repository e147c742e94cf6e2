#pragma once

#include "Platform/System/FileAccess.h"

#include <filesystem>
#include <string>

namespace tokwatch {

/// A log that its tool replaces as a whole, instead of appending lines to it.
struct LogDocument {
    std::string text;
    /// Taken before the text was read, so that one rewritten meanwhile is seen as changed by the
    /// next look.
    FileAttributes attributes;
};

/// Throws std::system_error when the file cannot be opened or read, or has more than 32 MiB, a
/// session of a hundred thousand turns.
LogDocument readLogDocument(const std::filesystem::path& file);

} // namespace tokwatch
