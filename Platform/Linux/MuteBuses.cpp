#include "Platform/Linux/MuteBuses.h"

#include "Platform/System/MuteBus.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <cstdlib>
#include <string>

namespace tokwatch {
namespace {

struct Bus {
    const char* name;
    const char* variable; ///< that has its address
    std::string usual;    ///< where it is without that
};

// NOLINTBEGIN(concurrency-mt-unsafe): there are no other threads yet.
std::string valueOf(const char* variable, const std::string& fallback) {
    const char* value = std::getenv(variable);
    return value == nullptr ? fallback : value;
}

bool leaveOutIfMute(const Bus& bus, std::chrono::milliseconds patience) {
    if (!isMuteBus(valueOf(bus.variable, bus.usual), patience)) return false;
    systemLog(std::string("the ") + bus.name + " bus does not answer and is left out");
    ::setenv(bus.variable, "unix:path=/dev/null", 1);
    return true;
}
// NOLINTEND(concurrency-mt-unsafe)

} // namespace

bool leaveOutMuteBuses(std::chrono::milliseconds patience) {
    const std::string runtime = valueOf("XDG_RUNTIME_DIR", "");
    const Bus session{"session", "DBUS_SESSION_BUS_ADDRESS",
                      runtime.empty() ? "" : "unix:path=" + runtime + "/bus"};
    const Bus system{"system", "DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/run/dbus/system_bus_socket"};
    const bool isSessionMute = leaveOutIfMute(session, patience);
    return leaveOutIfMute(system, patience) || isSessionMute;
}

} // namespace tokwatch
