#pragma once

#include "Tokwatch/Pictures/StatusPictures.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QString>

#include <filesystem>
#include <optional>

namespace tokwatch {

/// The marks as files, for status areas that take icons by name only. The untinted ones are
/// symbolic: the panel draws them in the colour of its own text.
class NamedIcons {
  public:
    /// The directory becomes the root of an icon theme; it may be missing. One that is not absolute
    /// counts as none, and nothing can be written.
    explicit NamedIcons(std::filesystem::path directory);

    /// Writes all icons where that is not done, at once: panels look into a theme's directories
    /// only from time to time, and would miss a file that comes later. False when that failed.
    bool write();

    QString name(std::optional<ProviderID> provider, const InkChoice& ink) const;
    QString themePath() const;

  private:
    void writeAll() const;

    std::filesystem::path directory;
    bool isWritten = false;
};

} // namespace tokwatch
