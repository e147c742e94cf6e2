#pragma once

#include "Tokwatch/Preferences/StoredEntries.h"

#include <set>
#include <string>
#include <string_view>

namespace tokwatch {

/// What stands in a settings file, as QSettings reads it, but without the toolkit: its start takes
/// longer than all that a short command does. Keys of groups are "group/key"; of a key that stands
/// there twice the last counts.
class StoredSettings {
  public:
    explicit StoredSettings(std::string_view text);

    /// What is stored of the setting of that name.
    StoredEntries entries(const std::string& name) const;
    /// What the settings are called of which anything is stored.
    std::set<std::string> names() const;

  private:
    StoredEntries values; ///< of the whole file
};

} // namespace tokwatch
