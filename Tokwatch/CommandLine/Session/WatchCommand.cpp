#include "Tokwatch/App/BackgroundThreads.h"
#include "Tokwatch/App/MainThread.h"
#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/Logs/ReportPrinter.h"
#include "Tokwatch/CommandLine/Session/Screen.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/CommandLine/Session/WindowlessApplication.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Report/ResponseFiles.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

/// What the page tells of time counts in minutes.
constexpr Seconds pagePeriod{15};

/// What the logs say was used.
struct LogReports {
    UsageReport today;
    UsageReport blocks; ///< those that reach into today
};

class Watch {
  public:
    explicit Watch(const CommandSurroundings& given)
        : surroundings(given), application(given), files(given.locations()),
          limits([this] { return application.model().limits(); },
                 [this](const LimitsByProvider&) { show(); }),
          usage([this] { return application.model().summary(); },
                [this](const UsageSummary&) { readLogs(); }) {
        screen.onKey = [this](char key) { press(key); };
        screen.onResize = [this] { show(); };
    }

    int run() {
        const auto ticking = application.timers().every(pagePeriod, [this] { show(); });
        limits.arm();
        usage.arm();
        return application.run(loop);
    }

  private:
    void press(char key) {
        if (key == 'q' || key == 'Q') EventLoop::end(exitOk);
        if (key == 'r' || key == 'R') application.model().refresh();
    }

    /// Once more when it ends, should anything have been stored meanwhile.
    void readLogs() {
        isOutdated = std::exchange(isReading, true);
        if (isOutdated) return;
        reader.run([this] {
            auto read = std::make_shared<LogReports>(reports());
            onMainThread([this, read] {
                latest = *read;
                isReading = false;
                show();
                if (isOutdated) readLogs();
            });
        });
    }

    /// On the reader's thread.
    LogReports reports() {
        const Calendar calendar = surroundings.calendar();
        const Date now = surroundings.now();
        const Period today = dayHolding(now, calendar);
        const std::string home = surroundings.paths.home.native();
        const UsageReport::Query models{ReportBy::model, today, home};
        const UsageReport::Query blocks{ReportBy::block, today, home};
        const Period reach = UsageReport::reach(blocks);
        const LogReading reading = files.read(allCases<ProviderID>, reach.start);
        const auto report = [&](const UsageReport::Query& query, const Period& period) {
            const CountedResponses responses(reading, period.start, period.end);
            return UsageReport::make(query, responses, PriceTable::bundled(), calendar, now);
        };
        return {report(models, UsageReport::reach(models)), report(blocks, reach)};
    }

    void show() {
        const auto [rows, columns] = screen.size();
        std::vector<std::string> lines =
            surroundings.terminal.page(columns, [this](Terminal& page) { write(page); });
        std::vector<std::string> foot{
            "", surroundings.terminal.paint(Tone::dim, "q ends · r refreshes")};
        // In a low pane the numbers stay.
        constexpr std::size_t roomy = 10;
        constexpr std::size_t low = 6;
        if (rows < roomy) {
            std::erase_if(lines, [](const std::string& line) { return line.empty(); });
            foot.erase(foot.begin());
        }
        if (rows < low) {
            lines.erase(lines.begin());
            foot.clear();
        }
        lines.resize(std::min(lines.size(), rows - foot.size()));
        lines.insert(lines.end(), foot.begin(), foot.end());
        screen.show(lines);
    }

    void write(Terminal& page) {
        const CommandSurroundings here{surroundings.paths, surroundings.calendar, surroundings.now,
                                       page};
        page.line(page.paint(Tone::bold, applicationName) + "  " +
                  DayFormat::clock(surroundings.now(), surroundings.calendar()));
        page.line();
        const PlainSettings settings = application.preferences().plain();
        std::vector<ProviderID> providers = settings.enabledProviders;
        std::erase_if(providers, [](ProviderID id) { return !traits(id).publishesLimits; });
        const AppModel& model = application.model();
        const RunOuts runOuts(model.limits(), model.samples(), here.now(), here.calendar());
        printLimits(here, settings, model.limits(), providers, runOuts);
        page.line();
        if (!latest) {
            page.line(page.paint(Tone::dim, "Reading the logs…"));
        } else if (latest->today.rows.empty()) {
            page.line("No usage today");
        } else {
            printReport(here, latest->today, "Today");
            printRunningBlock(here, latest->blocks);
        }
    }

    const CommandSurroundings& surroundings;
    EventLoop loop;
    Screen screen; // before there are threads, which are not to hear of resizes
    WindowlessApplication application;
    ResponseFiles files; ///< the reader's
    std::optional<LogReports> latest;
    bool isReading = false;
    bool isOutdated = false;
    ObservingUpdater<LimitsByProvider> limits;
    ObservingUpdater<UsageSummary> usage;
    BackgroundThreads reader{1}; ///< its work uses all of the above
};

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings, const WatchOptions&) {
    surroundings.requireHome();
    if (!Screen::isPossible()) return run(surroundings, FollowOptions());
    return Screen::guarded([&] { return Watch(surroundings).run(); });
}

} // namespace tokwatch
