#include "Tokwatch/CommandLine/Session/Screen.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace tokwatch {
namespace {

// The page that leaves the shell's lines alone, without a cursor and without wrapping long lines.
constexpr std::string_view enter = "\033[?1049h\033[?25l\033[?7l";
constexpr std::string_view leave = "\033[?7h\033[?25h\033[?1049l";
// Terminals that know these show what comes between them at once; the others ignore them.
constexpr std::string_view beginFrame = "\033[?2026h\033[H";
constexpr std::string_view endFrame = "\033[J\033[?2026l";

void write(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

volatile std::sig_atomic_t guardedChild = 0;

void passOn(int signal) {
    ::kill(guardedChild, signal);
}

/// What keys send comes to both of us, and by the kernel's hand.
void passOnUnlessTyped(int signal, siginfo_t* info, void*) {
    if (info->si_code != SI_KERNEL) passOn(signal);
}

/// Outlives the signals, and passes on those that the child has not got by itself.
void handleSignalsFor(pid_t child) {
    guardedChild = child;
    struct sigaction action {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
    action.sa_sigaction = passOnUnlessTyped;
    action.sa_flags = SA_RESTART | SA_SIGINFO;
    for (const int signal : {SIGINT, SIGQUIT})
        ::sigaction(signal, &action, nullptr);
}

} // namespace

bool Screen::isPossible() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    const char* kind = std::getenv("TERM");
    const bool isDumb = kind == nullptr || std::string_view(kind) == "dumb";
    return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0 && !isDumb;
}

int Screen::guarded(const std::function<int()>& program) {
    termios before{};
    ::tcgetattr(STDIN_FILENO, &before);
    const pid_t guard = ::getpid();
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        return ::getppid() == guard ? program() : EXIT_FAILURE;
    }
    handleSignalsFor(child);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) return EXIT_SUCCESS;
    write(leave);
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &before);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

Screen::Screen() {
    ::tcgetattr(STDIN_FILENO, &before);
    takeOver();
    holdMessages();

    sigset_t resize{};
    sigemptyset(&resize);
    sigaddset(&resize, SIGWINCH);
    ::pthread_sigmask(SIG_BLOCK, &resize, nullptr);
    resizes = ::signalfd(-1, &resize, SFD_CLOEXEC | SFD_NONBLOCK);
    keyNotifier.emplace(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&*keyNotifier, &QSocketNotifier::activated, [this] { readKeys(); });
    if (resizes < 0) return;
    resizeNotifier.emplace(resizes, QSocketNotifier::Read);
    QObject::connect(&*resizeNotifier, &QSocketNotifier::activated, [this] {
        signalfd_siginfo ignored{};
        while (::read(resizes, &ignored, sizeof ignored) > 0) {
        }
        shown.clear();
        if (onResize) onResize();
    });
}

Screen::~Screen() {
    keyNotifier.reset();
    resizeNotifier.reset();
    if (resizes >= 0) ::close(resizes);
    giveBack();
    releaseMessages();
}

void Screen::takeOver() {
    termios keys = before;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VSUSP] = _POSIX_VDISABLE; // stopped at once, it would keep the page
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
    write(enter);
}

void Screen::giveBack() const {
    write(leave);
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &before);
}

/// Returns when the job goes on, in which case the page is drawn anew.
void Screen::suspend() {
    giveBack();
    ::kill(0, SIGTSTP); // the job, which is this program and its guard
    takeOver();
    shown.clear();
    if (onResize) onResize();
}

void Screen::holdMessages() {
    if (::isatty(STDERR_FILENO) == 0) return;
    messages = ::memfd_create("messages", MFD_CLOEXEC);
    error = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    if (messages >= 0 && error >= 0) ::dup2(messages, STDERR_FILENO);
}

void Screen::releaseMessages() const {
    if (messages < 0 || error < 0) return;
    ::dup2(error, STDERR_FILENO);
    std::array<char, 4096> text{};
    off_t at = 0;
    for (ssize_t size = 0; (size = ::pread(messages, text.data(), text.size(), at)) > 0; at += size)
        if (::write(STDERR_FILENO, text.data(), static_cast<std::size_t>(size)) < 0) break;
    ::close(messages);
    ::close(error);
}

void Screen::readKeys() {
    std::array<char, 64> keys{};
    const ssize_t count = ::read(STDIN_FILENO, keys.data(), keys.size());
    // A terminal that went away stays readable and has nothing.
    if (count <= 0) keyNotifier->setEnabled(false);
    constexpr char suspendKey = '\x1a';
    for (ssize_t i = 0; i < count; ++i) {
        const char key = keys[static_cast<std::size_t>(i)];
        if (key == suspendKey)
            suspend();
        else if (onKey)
            onKey(key);
    }
}

Screen::Size Screen::size() const {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return {};
    return {size.ws_row, size.ws_col};
}

void Screen::show(const std::vector<std::string>& lines) {
    std::string frame;
    const std::size_t count = std::min(lines.size(), size().rows);
    for (std::size_t i = 0; i < count; ++i)
        frame += (i == 0 ? "" : "\r\n") + lines[i] + "\033[0m\033[K";
    if (frame == shown) return;
    write(std::string(beginFrame).append(frame).append(endFrame));
    shown = std::move(frame);
}

} // namespace tokwatch
