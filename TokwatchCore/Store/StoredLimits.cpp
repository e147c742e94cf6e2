#include "TokwatchCore/Store/StoredLimits.h"

#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/DecodingError.h"

namespace tokwatch {

LimitsByProvider storedLimits(UsageStore& store, std::span<const ProviderID> providers) {
    LimitsByProvider limits;
    for (const ProviderID provider : providers) {
        try {
            if (auto known = store.limits(provider)) limits.emplace(provider, std::move(*known));
        } catch (const DecodingError&) {
            continue;
        }
    }
    return limits;
}

} // namespace tokwatch
