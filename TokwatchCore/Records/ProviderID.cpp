#include "ProviderID.h"

#include <algorithm>

namespace tokwatch {

std::optional<ProviderID> providerFromRawValue(std::string_view raw) {
    const auto* found =
        std::find_if(allProviders.begin(), allProviders.end(),
                     [raw](ProviderID provider) { return rawValue(provider) == raw; });
    if (found == allProviders.end()) return std::nullopt;
    return *found;
}

} // namespace tokwatch
