#include "Tokwatch/CommandLine/StoredLimits.h"

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/Limits/ClaudeGate.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/DecodingError.h"

namespace tokwatch {

LimitsByProvider storedLimits(const CommandEnvironment& environment, UsageStore& store,
                              const Preferences& preferences,
                              std::span<const ProviderID> providers) {
    LimitsByProvider limits;
    for (const ProviderID provider : providers) {
        try {
            if (auto known = store.limits(provider)) limits.emplace(provider, std::move(*known));
        } catch (const DecodingError&) {
            // Another build wrote it; the next fetch replaces it.
        } catch (const UsageStoreError& error) {
            throw CommandError(std::string("reading the usage store failed: ") + error.what());
        }
    }
    return ClaudeGate::applied(std::move(limits), preferences, environment.now());
}

} // namespace tokwatch
