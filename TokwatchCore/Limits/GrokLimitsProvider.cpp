#include "GrokLimitsProvider.h"

#include "UsageEndpoint.h"

namespace tokwatch {

QCoro::Task<ProviderLimits> GrokLimitsProvider::fetch(Date now) {
    return unavailableLimits(now);
}

} // namespace tokwatch
