#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"

#include <utility>

namespace tokwatch {

Json versioned(Json members, int version) {
    Json document = Json::object({{"version", version}});
    for (auto& [name, value] : members.items())
        document[name] = std::move(value);
    return document;
}

} // namespace tokwatch
