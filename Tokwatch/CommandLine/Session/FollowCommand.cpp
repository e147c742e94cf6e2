#include "Platform/Linux/TerminationSignals.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/CommandLine/Session/WindowlessApplication.h"
#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <QProperty>
#include <QSocketNotifier>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <system_error>

namespace tokwatch {
namespace {

/// The times to the resets in the title count down in minutes.
constexpr Seconds titlePeriod{30};

/// Standard output as a stream of lines, each sent off at once.
class LineOutput {
  public:
    explicit LineOutput(Terminal& t) : terminal(t) { watchReader(); }

    /// The same line twice in a row is written once.
    void show(const std::string& line) {
        if (line == last || failed) return;
        last = line;
        terminal.line(line);
        if (const std::error_code failure = terminal.flush()) fail(failure);
    }

  private:
    /// Learns of a reader that went away though there is nothing to write: an idle follower whose
    /// bar has ended would stay for ever.
    void watchReader() {
        struct stat status {};
        if (::fstat(STDOUT_FILENO, &status) != 0 || !S_ISFIFO(status.st_mode)) return;
        // A pipe's end for writing never becomes readable; it is activated by the error alone.
        reader.emplace(STDOUT_FILENO, QSocketNotifier::Read);
        QObject::connect(&*reader, &QSocketNotifier::activated, [this] {
            reader->setEnabled(false);
            pollfd pipe{STDOUT_FILENO, 0, 0};
            if (::poll(&pipe, 1, 0) == 1 && (pipe.revents & POLLERR) != 0)
                fail(std::make_error_code(std::errc::broken_pipe));
        });
    }

    void fail(std::error_code failure) {
        failed = true;
        if (TerminationSignals::arrived()) return EventLoop::end(exitOk);
        // That its reader has gone is no news to a program in a pipe.
        if (failure != std::errc::broken_pipe)
            terminal.error("writing the output failed: " + failure.message());
        EventLoop::end(exitFailure);
    }

    Terminal& terminal;
    std::string last;
    bool failed = false;
    std::optional<QSocketNotifier> reader;
};

class Follower {
  public:
    Follower(const CommandSurroundings& given, StatusFormat format)
        : surroundings(given), output(given.terminal), application(given),
          title([this] { return current(); },
                [this, format](const StatusTitle& now) { output.show(statusLine(now, format)); }) {}

    int run() {
        const auto ticking =
            application.timers().every(titlePeriod, [this] { ticks.setValue(ticks.value() + 1); });
        return application.run(loop, [this] { title.arm(); });
    }

  private:
    StatusTitle current() {
        ticks.value(); // time is read, too
        const AppModel& model = application.model();
        const Date now = surroundings.now();
        return statusTitle(application.preferences().plain(), model.limits(), now,
                           RunOuts(model.limits(), model.samples(), now, model.calendar()));
    }

    const CommandSurroundings& surroundings;
    EventLoop loop;
    LineOutput output;
    WindowlessApplication application;
    QProperty<int> ticks{0};
    ObservingUpdater<StatusTitle> title;
};

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings, const FollowOptions& options) {
    surroundings.requireHome();
    return Follower(surroundings, options.format).run();
}

} // namespace tokwatch
