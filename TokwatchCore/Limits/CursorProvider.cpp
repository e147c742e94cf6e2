#include "TokwatchCore/Limits/CursorProvider.h"

#include "TokwatchCore/Limits/UsageEndpoint.h"

namespace tokwatch {

QCoro::Task<ProviderLimits> CursorProvider::fetch(Date now) {
    return unavailableLimits(now);
}

} // namespace tokwatch
