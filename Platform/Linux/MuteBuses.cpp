#include "Platform/Linux/MuteSessionBus.h"

#include "Platform/System/MuteBus.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <cstdlib>
#include <string>

namespace tokwatch {
namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";

// NOLINTBEGIN(concurrency-mt-unsafe): there are no other threads yet.
std::string sessionBusAddress() {
    if (const char* address = std::getenv(addressVariable)) return address;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime == nullptr ? std::string() : "unix:path=" + std::string(runtime) + "/bus";
}
// NOLINTEND(concurrency-mt-unsafe)

} // namespace

bool leaveOutMuteSessionBus(std::chrono::milliseconds patience) {
    if (!isMuteBus(sessionBusAddress(), patience)) return false;
    systemLog("the session bus does not answer and is left out");
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there are no other threads yet.
    ::setenv(addressVariable, "unix:path=/dev/null", 1);
    return true;
}

} // namespace tokwatch
