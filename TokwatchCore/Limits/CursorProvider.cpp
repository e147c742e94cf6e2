#include "CursorProvider.h"

#include "UsageEndpoint.h"

namespace tokwatch {

QCoro::Task<ProviderLimits> CursorProvider::fetch(Date now) {
    return unavailableLimits(now);
}

} // namespace tokwatch
