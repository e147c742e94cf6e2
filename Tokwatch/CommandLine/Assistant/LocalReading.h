#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <span>

namespace tokwatch {

/// What is to be stored of a provider whose assistant told some of its limits on this machine;
/// absent where it told nothing new.
///
/// Each window goes by its own age: one that was told replaces an older one of its kind, be that
/// live, local or stale, and never one that is as new. Windows that were not told, the plan and the
/// credits stay, with the date that they are of; so does what a fetch found wrong with the login,
/// which was not needed for this. A window that has reset since it was told says
/// nothing about the one that runs. Numbers that are told again unchanged are news once a minute,
/// so that they do not seem to age, and a line at every keystroke does not wake everybody who
/// watches the store.
std::optional<ProviderLimits> withLocalReading(const std::optional<ProviderLimits>& stored,
                                               std::span<const LimitWindow> told, Date now);

} // namespace tokwatch
