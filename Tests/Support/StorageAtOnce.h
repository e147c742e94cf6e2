#pragma once

#include "Tokwatch/Limits/LimitsService.h"

#include <memory>
#include <utility>

namespace tokwatch::testing {

/// Does work within the call that asks for it.
inline void runAtOnce(const std::function<void()>& work) {
    work();
}

/// Results in the store and attempts in a ledger, without a thread in between.
inline LimitsService::Storage
storageAtOnce(std::shared_ptr<UsageStore> store,
              std::shared_ptr<AttemptLedger> attempts = std::make_shared<MemoryAttemptLedger>()) {
    return {std::make_shared<LimitsCache>(std::move(store), runAtOnce), std::move(attempts),
            runAtOnce};
}

} // namespace tokwatch::testing
