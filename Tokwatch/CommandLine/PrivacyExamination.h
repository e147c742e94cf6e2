#pragma once

#include "Platform/Linux/UserPaths.h"
#include "Tokwatch/CommandLine/Doctor.h"

namespace tokwatch {

/// What other users may do with the folders that hold the data, and the files in them. Closing
/// takes it from them where that is wanted.
enum class Closing { offer, apply };
std::vector<Finding> examinePrivacy(const UserPaths& paths, Closing closing);

} // namespace tokwatch
