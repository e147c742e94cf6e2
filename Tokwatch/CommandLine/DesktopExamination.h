#pragma once

#include "Tokwatch/CommandLine/Doctor.h"

#include <vector>

namespace tokwatch {

/// The doctor's look at the desktop's buses: whether there is a session bus and who of those that
/// the application works with is on it. Every question is bounded in time. Starts nothing.
std::vector<Finding> examineDesktop();

} // namespace tokwatch
