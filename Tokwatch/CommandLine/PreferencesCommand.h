#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"

#include <string>
#include <vector>

namespace tokwatch {

/// The names of all settings, in their order.
std::vector<std::string> settingNames();

/// `tokwatch preferences list`: in JSON an object, numbers and truth values as such, all else as
/// text that `set` takes.
int runPreferencesList(const CommandEnvironment& environment);
/// `tokwatch preferences get KEY`
int runPreferencesGet(const CommandEnvironment& environment, const std::string& name);
/// `tokwatch preferences set KEY VALUE`. A value that the setting does not take is a usage error.
int runPreferencesSet(const CommandEnvironment& environment, const std::string& name,
                      const std::string& value);

} // namespace tokwatch
