#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <span>

namespace tokwatch {

class UsageStore;

/// The last known limits of these providers. A row that does not decode is one that is not there:
/// another build wrote it, and the next fetch replaces it. UsageStoreError when the store fails.
LimitsByProvider storedLimits(UsageStore& store, std::span<const ProviderID> providers);

} // namespace tokwatch
