#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {

std::string_view applicationVersion() {
    return TOKWATCH_VERSION;
}

} // namespace tokwatch
