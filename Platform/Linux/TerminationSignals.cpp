#include "Platform/Linux/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace tokwatch {
namespace {

constexpr std::array handled{SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t signalArrived = 0;
volatile std::sig_atomic_t wakeup = -1; ///< an eventfd

void onPatienceEnded(int) {
    ::_exit(EXIT_FAILURE);
}

void onTerminationSignal(int) {
    const int before = errno;
    if (signalArrived == 0) TerminationSignals::boundTheEnd();
    signalArrived = 1;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeup, &one, sizeof one);
    errno = before;
}

void handleWith(void (*handler)(int)) {
    for (const int signal : handled) {
        struct sigaction action {};
        action.sa_handler = handler;
        // Without SA_RESTART: a write into a pipe that nobody reads is to end, too. A terminal that
        // is closed says so itself, and its shell says it again.
        action.sa_flags = signal == SIGHUP ? 0 : static_cast<int>(SA_RESETHAND);
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        // Who started us with nohup wants us to outlive the terminal.
        if (signal == SIGHUP && before.sa_handler == SIG_IGN) continue;
        ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal) {
    signalArrived = 0;
    wakeup = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeup < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    notifier.emplace(wakeup, QSocketNotifier::Read);
    QObject::connect(&*notifier, &QSocketNotifier::activated, [this, call = std::move(onSignal)] {
        notifier->setEnabled(false);
        call();
    });
    handleWith(onTerminationSignal);
}

TerminationSignals::~TerminationSignals() {
    handleWith(SIG_DFL);
    notifier.reset();
    ::close(wakeup);
    wakeup = -1;
}

void TerminationSignals::boundTheEnd() {
    // Only what a signal handler may call.
    struct sigaction action {};
    action.sa_handler = onPatienceEnded;
    ::sigaction(SIGALRM, &action, nullptr);
    ::alarm(static_cast<unsigned>(patience.count()));
}

void TerminationSignals::endNow(int status) {
    std::fflush(nullptr);
    ::_exit(status);
}

bool TerminationSignals::arrived() {
    return signalArrived != 0;
}

} // namespace tokwatch
