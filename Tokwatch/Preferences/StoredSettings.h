#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What stands in a settings file, as QSettings reads it, but without the toolkit: its start takes
/// longer than all that a short command does. Keys of groups are "group/key"; of a key that stands
/// there twice the last counts.
class StoredSettings {
  public:
    explicit StoredSettings(std::string_view text);

    bool contains(const std::string& key) const { return values.contains(key); }
    /// None where the key is missing or holds a list.
    std::optional<std::string> text(const std::string& key) const;
    /// A single text is a list of one.
    std::vector<std::string> list(const std::string& key) const;
    /// The group's texts by their keys.
    std::map<std::string, std::string> group(const std::string& name) const;

  private:
    std::map<std::string, std::vector<std::string>> values;
};

} // namespace tokwatch
