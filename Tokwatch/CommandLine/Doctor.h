#pragma once

#include "Tokwatch/CommandLine/Terminal.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <string>
#include <vector>

namespace tokwatch {

enum class Health { good, note, bad };

/// One finding of the doctor's.
struct Finding {
    std::string topic; ///< what it is about: "Claude", "Store"
    Health health = Health::good;
    std::string text; ///< one sentence; never holds a secret
};

void printFindings(Terminal& terminal, const std::vector<Finding>& findings);
Json encode(const std::vector<Finding>& findings);

} // namespace tokwatch
