#pragma once

#include <string_view>

namespace tokwatch {

/// What the first bytes of a log line tell of its top-level "type".
struct LeadingType {
    enum class Kind {
        notAnObject, ///< the line cannot be a JSON object
        found,       ///< `type` is the value of the first "type" key
        unknown, ///< a nested value, an escape or something unusual came first; only a parser can
                 ///< tell
    };
    Kind kind = Kind::unknown;
    std::string_view type;
};

/// Reads the plain fields at the front of a line up to its "type". Most lines of a log are long and
/// none of our business, and say so within their first hundred bytes; this finds it out without
/// looking at the rest. Where a line repeats the key, the first that is a text counts, here and in
/// the parsers.
LeadingType leadingType(std::string_view line);

} // namespace tokwatch
