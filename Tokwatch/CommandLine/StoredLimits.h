#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <span>

namespace tokwatch {

class UsageStore;

/// The last known limits of these providers. A row that does not decode is one that is not there;
/// CommandError when the store fails.
LimitsByProvider storedLimits(UsageStore& store, std::span<const ProviderID> providers);

} // namespace tokwatch
