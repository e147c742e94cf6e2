#include "Tokwatch/CommandLine/Session/EventLoop.h"

#include "Platform/Linux/TerminationSignals.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"

namespace tokwatch {

EventLoop::~EventLoop() {
    // Its end would wait for the look-up; the program leaves without it.
    if (URLSessionHTTPClient::mayBeLookingUp()) static_cast<void>(application.release());
}

void EventLoop::leaveIfHeldUp(int status) {
    if (URLSessionHTTPClient::mayBeLookingUp()) TerminationSignals::endNow(status);
}

} // namespace tokwatch
