#include "Follower.h"

#include "Application.h"
#include "DesktopBus.h"
#include "EventLoop.h"
#include "ObservingUpdater.h"
#include "Preferences.h"
#include "StoredLimits.h"
#include "TerminationSignals.h"
#include "WorkLease.h"

#include <QFile>
#include <QFileSystemWatcher>
#include <QProperty>
#include <QSettings>
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

/// The application without its windows. Where another follower does the work, only what that one
/// stores is shown, until it ends.
class Follower {
  public:
    Follower(const CommandEnvironment& e, StatusFormat format)
        : environment(e), output(e.terminal), lease(directoryOf(e.paths.database())),
          title([this] { return report(); },
                [this, format](const StatusReport& report) {
                    output.show(statusLine(report, format));
                }) {}

    int run() {
        preferences.followFile();
        if (!takeOver()) {
            bus.onRefreshRequest([this] { later = timers.after(Seconds(0), [this] { look(); }); });
            // Whoever works replaces the snapshot after each change of the limits.
            QObject::connect(&snapshots, &QFileSystemWatcher::directoryChanged, &snapshots,
                             [this] { readStored(); });
            readStored();
        }
        const auto ticking = timers.every(titlePeriod, [this] { look(); });
        title.arm();
        return loop.run();
    }

  private:
    static std::optional<std::filesystem::path>
    directoryOf(const std::optional<std::filesystem::path>& file) {
        if (!file) return std::nullopt;
        return file->parent_path();
    }

    StatusReport report() {
        ticks.value(); // time is read, too
        const LimitsByProvider& limits =
            application ? application->model().limits() : stored.value();
        return statusReport(preferences, limits, environment.now());
    }

    void look() {
        if (!application && !takeOver()) readStored();
        ticks.setValue(ticks.value() + 1);
    }

    /// Begins to do the work; false when another follower does it.
    bool takeOver() {
        // The database's directory, which the lease lies in, is made with it.
        std::shared_ptr<UsageStore> opened = storeIfAny();
        if (!lease.take()) {
            store = std::move(opened);
            return false;
        }
        store.reset();
        snapshots.removePaths(snapshots.directories());
        Surroundings world = Surroundings::real(environment.paths);
        world.calendar = environment.calendar;
        world.now = environment.now;
        application.emplace(std::move(world), preferences, bus);
        application->model().start(); // shows what is stored, which makes the first line right
        return true;
    }

    std::shared_ptr<UsageStore> storeIfAny() const {
        if (store) return store;
        try {
            return environment.openStore();
        } catch (const CommandError&) {
            return nullptr; // who does the work has a line for it in the log
        }
    }

    void readStored() {
        if (const auto directory = environment.paths.snapshotDirectory();
            directory && snapshots.directories().isEmpty())
            snapshots.addPath(QFile::decodeName(directory->c_str()));
        try {
            if (store) stored.setValue(storedLimits(*store, allProviders));
        } catch (const CommandError&) {
            // What was known stays to be seen.
        }
    }

    const CommandEnvironment& environment;
    EventLoop loop;
    TerminationSignals termination{[] { EventLoop::end(exitOk); }};
    LineOutput output;
    std::unique_ptr<QSettings> settings = userSettings();
    Preferences preferences{*settings};
    DesktopBus bus{QDBusConnection::sessionBus(), QDBusConnection::systemBus()};
    QtScheduler timers;
    WorkLease lease;
    QFileSystemWatcher snapshots;
    std::shared_ptr<UsageStore> store;  ///< while another works
    QProperty<LimitsByProvider> stored; ///< likewise
    QProperty<int> ticks{0};
    std::unique_ptr<ScheduledCall> later;
    std::optional<Application> application; ///< none while another works
    ObservingUpdater<StatusReport> title;
};

} // namespace

int follow(const CommandEnvironment& environment, StatusFormat format) {
    return Follower(environment, format).run();
}

} // namespace tokwatch
