#include "TokwatchCore/Limits/GrokLimitsProvider.h"

#include "TokwatchCore/Limits/UsageEndpoint.h"

namespace tokwatch {

QCoro::Task<ProviderLimits> GrokLimitsProvider::fetch(Date now) {
    return unavailableLimits(now);
}

} // namespace tokwatch
