#pragma once

#include "Tokwatch/Preferences/SettingsGroup.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// A setting of whichever file.
struct NamedSetting {
    std::string name; ///< "notifications.critical"; of the Preferences the bare name
    AnySetting& setting;
    SettingsGroup& group;
    std::filesystem::path file;
};

/// What is wrong with a settings file, in sentences.
struct FileFaults {
    std::filesystem::path file;
    std::vector<std::string> faults; ///< none where it is sound, or missing
};

/// The settings of all files of the user, for whoever lists and changes them by their names, or
/// looks for what is wrong with them. Main thread only.
class AllSettings {
  public:
    static AllSettings ofUser();
    /// Without files, all at their defaults.
    static AllSettings ofNobody();

    /// File by file, in the order in which each declares them. They live as long as this.
    std::vector<NamedSetting> all() const;
    std::optional<NamedSetting> named(std::string_view name) const;
    /// Of each of the user's files, also of those whose settings have no name here. What stands in
    /// the windows' own their room alone can judge: of that, what keeps it from being read.
    std::vector<FileFaults> faults() const;

  private:
    struct File {
        std::string prefix;
        std::filesystem::path path;
        std::unique_ptr<SettingsGroup> group;
    };
    using Open = std::unique_ptr<SettingsStorage> (*)(const std::filesystem::path&);

    explicit AllSettings(Open open);
    template<typename Group>
    void add(std::string prefix, std::filesystem::path path, Open open);

    std::vector<File> files;
};

} // namespace tokwatch
