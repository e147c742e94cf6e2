#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/CommandLine/StatusLine.h"

namespace tokwatch {

struct StatusOptions {
    StatusFormat format = StatusFormat::text;
    bool follow = false;
};

/// `tokwatch status`: the title by what is stored, without a look at logs or network. With `follow`
/// the whole application without its windows, which writes a line whenever the title changes.
int runStatus(const CommandEnvironment& environment, const StatusOptions& options);

} // namespace tokwatch
