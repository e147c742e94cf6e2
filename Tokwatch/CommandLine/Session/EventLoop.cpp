#include "Tokwatch/CommandLine/Session/EventLoop.h"

#include "Platform/Linux/ProcessStart.h"
#include "Platform/Linux/TerminationSignals.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"

namespace tokwatch {
namespace {

/// A follower's, the toolkit's, and a few to spare.
constexpr int threads = 12;
/// A follower has 15 open, half of them its threads'.
constexpr int descriptors = 20;

std::unique_ptr<QCoreApplication> makeApplication(int& argumentCount, char** arguments) {
    requireThreads(threads);
    requireDescriptors(descriptors);
    return std::make_unique<QCoreApplication>(argumentCount, arguments);
}

} // namespace

EventLoop::EventLoop() : application(makeApplication(argumentCount, arguments.data())) {}

EventLoop::~EventLoop() {
    // Its end would wait for the look-up; the program leaves without it.
    if (URLSessionHTTPClient::mayBeLookingUp()) static_cast<void>(application.release());
}

void EventLoop::leaveIfHeldUp(int status) {
    if (URLSessionHTTPClient::mayBeLookingUp()) TerminationSignals::endNow(status);
}

} // namespace tokwatch
