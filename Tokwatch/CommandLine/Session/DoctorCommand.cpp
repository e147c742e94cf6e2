#include "Tokwatch/CommandLine/Doctor/Examinations.h"
#include "Tokwatch/CommandLine/Session/EventLoop.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/Preferences/AllSettings.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Store/LastingCounts.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/Amounts.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <system_error>

namespace tokwatch {
namespace {

bool isReadable(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return false;
    ::close(descriptor);
    return true;
}

class Examination {
  public:
    Examination(const CommandSurroundings& given, Closing c)
        : surroundings(given), closing(c), places(given.locations()) {}

    std::vector<Finding> run() {
        for (const ProviderID provider : allCases<ProviderID>)
            for (const std::filesystem::path& root : places.logRoots(provider))
                examineRoot(provider, root);
        examineCursor();
        std::ranges::move(examineUncounted(places), std::back_inserter(findings));
        examineLogins();
        examineDatabases();
        std::ranges::move(examinePrivacy(surroundings.paths, closing),
                          std::back_inserter(findings));
        examinePrices();
        examineSettings();
        examineSnapshot();
        findings.push_back(examineWatches(roots));
        std::ranges::move(examineDesktop(), std::back_inserter(findings));
        add("Time zone", Health::good, "Days are counted in " + surroundings.calendar().zoneName());
        return std::move(findings);
    }

  private:
    void add(std::string topic, Health health, std::string text) {
        findings.push_back({std::move(topic), health, std::move(text)});
    }

    void examineRoot(ProviderID provider, const std::filesystem::path& root) {
        roots.push_back(root);
        const std::string topic(displayName(provider));
        std::error_code problem;
        const std::filesystem::file_status status = std::filesystem::status(root, problem);
        if (status.type() == std::filesystem::file_type::not_found) {
            add(topic, Health::note, root.string() + " does not exist");
            return;
        }
        if (!std::filesystem::is_directory(status)) {
            add(topic, Health::bad,
                root.string() + (problem ? ": " + problem.message() : " is not a directory"));
            return;
        }
        const LogListing listing = findLogFiles(provider, root);
        const std::vector<LogFile>& files = listing.files;
        std::int64_t bytes = 0;
        std::int64_t unreadable = 0;
        for (const LogFile& file : files) {
            bytes += file.attributes.size;
            if (!isReadable(file.path)) ++unreadable;
        }
        add(topic, Health::good,
            root.string() + ": " + counted(std::ssize(files), "file") + ", " + formatBytes(bytes));
        if (unreadable > 0)
            add(topic, Health::bad, std::to_string(unreadable) + " of them cannot be read");
        for (const LogListing::Failure& failure : listing.failures)
            add(topic, Health::bad, failure.path + " cannot be listed: " + failure.reason);
    }

    void examineCursor() {
        const bool present = places.isPresent(ProviderID::cursor);
        add("Cursor", Health::note,
            present ? places.cursorStateDB().string() + " exists (detection only)"
                    : "not installed here");
    }

    void examineLogins() {
        examineLogin("Claude login", places.claudeAuthFile());
        examineLogin("Codex login", places.codexAuthFile());
    }

    /// Only whether it is there and readable; what is in it is nobody's business here.
    void examineLogin(const std::string& topic, const std::filesystem::path& file) {
        std::error_code ignored;
        if (!std::filesystem::exists(file, ignored)) {
            add(topic, Health::note, "no " + file.string());
        } else if (!isReadable(file.string())) {
            add(topic, Health::bad, file.string() + " cannot be read");
        } else {
            add(topic, Health::good, file.string() + " is there");
        }
    }

    void examineDatabases() {
        try {
            const std::filesystem::path database = surroundings.requireDatabase();
            examineStore(database);
            examineSideFiles(countsBeside(database));
        } catch (const CommandError& error) {
            add("Store", Health::bad, error.what());
        }
    }

    void examineStore(const std::filesystem::path& file) {
        constexpr const char* remedy =
            "move it away and run tokwatch index: the logs that are still there are read again";
        findings.push_back(examineDatabase("Store", file, remedy, [&] {
            UsageStore store(file);
            store.requireSound();
            models = store.models();
            return ", " + counted(std::ssize(store.cursorTexts()), "file") + " known";
        }));
    }

    /// The databases that come into being with their first use.
    void examineSideFiles(const std::filesystem::path& counts) {
        const auto examine = [this](const char* topic, const std::filesystem::path& file,
                                    const char* remedy, const std::function<void()>& use) {
            std::error_code none;
            if (std::filesystem::exists(file, none))
                findings.push_back(examineDatabase(topic, file, remedy, [&use] {
                    use();
                    return "";
                }));
        };
        const LimitHistory& history = *surroundings.history;
        examine("Forecasts", history.path(),
                "it can be deleted: how limits were used until now is lost, and forecasts begin "
                "anew",
                [&history] { history.requireUsable(); });
        examine("Export", counts, "it can be deleted: the counters begin anew with what is stored",
                [&counts] { lastingCounts(counts, {}, PriceTable()); });
    }

    void examineSettings() {
        for (const auto& [file, faults] : AllSettings::ofNobody().faults()) {
            const bool isBad = !faults.empty() && settingsObstacle(file);
            for (const std::string& fault : faults)
                add("Settings", isBad ? Health::bad : Health::note, fault);
            if (faults.empty() && file == settingsPath())
                add("Settings", Health::good, file.string());
        }
    }

    void examineSnapshot() {
        const auto snapshot = SnapshotStore(surroundings.paths.snapshotDirectory()).read();
        if (snapshot)
            add("Snapshot", Health::good, "was written at " + formatISO8601(snapshot->generatedAt));
        else
            add("Snapshot", Health::note, "not written yet; the running application does that");
    }

    void examinePrices() {
        const PriceTable prices = PriceTable::bundled();
        if (prices.models().empty()) {
            add("Prices", Health::bad,
                "the price table that comes with the program is missing or damaged");
            return;
        }
        std::string newest;
        for (const auto& [name, price] : prices.models())
            newest = std::max(newest, price.asOf);
        add("Prices", Health::good,
            std::to_string(prices.models().size()) + " models, as of " + newest);
        for (const std::string& model : models) {
            if (prices.price(model) == nullptr)
                add("Prices", Health::note, "no published price for " + model);
        }
    }

    const CommandSurroundings& surroundings;
    const Closing closing;
    ProviderLocations places;
    std::vector<std::filesystem::path> roots;
    std::vector<std::string> models;
    std::vector<Finding> findings;
};

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings, const DoctorOptions& options) {
    surroundings.requireHome();
    const EventLoop loop;
    const Closing closing = options.fix ? Closing::apply : Closing::offer;
    const std::vector<Finding> findings = Examination(surroundings, closing).run();
    if (surroundings.json) {
        surroundings.terminal.line(jsonText(encode(findings)));
    } else {
        printFindings(surroundings.terminal, findings);
    }
    const bool broken = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.health == Health::bad;
    });
    return broken ? exitFailure : exitOk;
}

} // namespace tokwatch
