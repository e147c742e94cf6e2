#include "TokwatchCore/Limits/NoLimitsProvider.h"

#include "TokwatchCore/Limits/UsageEndpoint.h"

namespace tokwatch {

QCoro::Task<ProviderLimits> NoLimitsProvider::fetch(Date now) {
    ProviderLimits limits = limitsWithout(ProviderStatus::unavailable, now);
    co_return limits;
}

} // namespace tokwatch
