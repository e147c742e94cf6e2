#pragma once

#include "Tokwatch/Report/ResponseFiles.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tokwatch {

/// The responses of all files, each key once, with what they are counted by.
///
/// Within a file the last line about a response has its final counts. Files repeat each other's
/// lines where a session was resumed or forked; of their last lines that one counts which says
/// that no more follows, then the later one, then that of the later file.
struct CountedResponses {
    struct Session {
        ProviderID provider = ProviderID::claude;
        std::string id;
        std::string directory; ///< as `FileResponses::Session` has it, of all its files
        Date statedAt;
    };
    struct Model {
        ProviderID provider = ProviderID::claude;
        std::string name;
    };
    struct Entry {
        const Response* response = nullptr; ///< belongs to the reading
        std::uint32_t file = 0;             ///< of the reading
        std::uint32_t session = 0;
        std::uint32_t model = 0;
    };
    std::vector<Session> sessions;
    std::vector<Model> models;
    std::vector<Entry> entries; ///< in the order of time

    /// Those of [from, until).
    CountedResponses(const LogReading& reading, Date from, Date until);
};

} // namespace tokwatch
