#include "TokwatchCore/Support/DecodingError.h"

namespace tokwatch {

DecodingError::DecodingError(const std::string& message) : std::runtime_error(message) {}

} // namespace tokwatch
