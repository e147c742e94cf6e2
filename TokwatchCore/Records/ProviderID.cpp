#include "TokwatchCore/Records/ProviderID.h"

#include <algorithm>

namespace tokwatch {

std::optional<ProviderID> providerFromRawValue(std::string_view raw) {
    const auto* found =
        std::find_if(allCases<ProviderID>.begin(), allCases<ProviderID>.end(),
                     [raw](ProviderID provider) { return rawValue(provider) == raw; });
    if (found == allCases<ProviderID>.end()) return std::nullopt;
    return *found;
}

} // namespace tokwatch
