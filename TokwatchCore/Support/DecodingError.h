#pragma once

#include <stdexcept>
#include <string>

namespace tokwatch {

/// A JSON document that does not have the shape of the record it should hold: a missing key, a
/// wrong type, an unknown case. `what()` names the key or case, never the document's other
/// contents.
class DecodingError : public std::runtime_error {
  public:
    explicit DecodingError(const std::string& message);
};

} // namespace tokwatch
