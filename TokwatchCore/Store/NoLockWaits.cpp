#include "TokwatchCore/Store/NoLockWaits.h"

#include <atomic>

namespace tokwatch {
namespace {

std::atomic<int> living = 0;

} // namespace

NoLockWaits::NoLockWaits() {
    ++living;
}

NoLockWaits::~NoLockWaits() {
    --living;
}

bool NoLockWaits::areInForce() {
    return living > 0;
}

} // namespace tokwatch
