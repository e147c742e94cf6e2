#pragma once

#include "TokwatchCore/Records/RecordCoding.h"

namespace tokwatch {

/// What a command prints for programs: the members behind the version of their form, which is
/// raised as soon as a reader of the one before would go wrong. Members are added without.
/// docs/json.md describes each of them, and a test compares it with what is printed.
Json versioned(Json members, int version = 1);

} // namespace tokwatch
