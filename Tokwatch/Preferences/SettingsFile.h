#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// Bytes.
inline constexpr std::size_t largestSettings = 1'048'576;

/// What stands in a settings file; nothing where it is missing or cannot be used. The administrator
/// reads no more of another user's than that user may (`ActingAsOwner`).
struct SettingsContents {
    std::string text;
    std::optional<std::string> obstacle; ///< as `settingsObstacle` has it
};
SettingsContents readSettings(const std::filesystem::path& file);

/// What keeps the file from being read as settings, in words: it is a pipe or a directory, has more
/// than a megabyte, or may not be read. None for a sound file and for a missing one. QSettings
/// would wait for a pipe, and replace what it could not read.
std::optional<std::string> settingsObstacle(const std::filesystem::path& file);

/// Makes the settings file and its directory where they are missing, for their owner only:
/// QSettings keeps the permissions that it finds and would let everybody read a file that it makes.
/// What fails here fails again when a setting is written.
void makeSettingsFile(const std::filesystem::path& file);

/// What keeps the file from being written, as the system says it.
std::string writingObstacle(const std::filesystem::path& file);

/// The numbers (from 1) of the lines of a settings file that are no setting, no group and no
/// comment. QSettings leaves them out, and out of the file, too, at the next change.
std::vector<int> linesThatAreNoSettings(const std::string& text);

/// What keeps it from being read, or lines of it, as sentences for the log and the doctor. What the
/// lines say is for the `SettingsGroup` to judge.
std::vector<std::string> settingsFaults(const std::filesystem::path& file);
/// The same of a file that was read already, then the others that were found in it: the first 20 of
/// all, and how many there are more.
std::vector<std::string> settingsFaults(const std::filesystem::path& file,
                                        const SettingsContents& contents,
                                        const std::vector<std::string>& others = {});

} // namespace tokwatch
