#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/CommandLine/StatusLine.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Report/UsageReport.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What each command does once its arguments are known to be sound. All return the status that the
/// process ends with; CommandError tells what kept them from their work.
namespace tokwatch {

/// `tokwatch` alone: becomes the desktop application, `tokwatch-desktop`, with
/// the same options. Returns only by CommandError: without a display, or where the desktop part is
/// not installed.
int runDesktop(const std::vector<std::string>& options);

/// `tokwatch index`
int runIndex(const CommandSurroundings& surroundings);
/// `tokwatch reread PROVIDER`
int runReread(const CommandSurroundings& surroundings, ProviderID provider);

enum class SummaryTable { tool, model, day };
struct SummaryOptions {
    std::int64_t days = 30;
    SummaryUnit unit = SummaryUnit::cost;
    std::optional<SummaryTable> by; ///< all three when absent
    bool skipIndex = false;
};
/// `tokwatch summary`
int runSummary(const CommandSurroundings& surroundings, const SummaryOptions& options);

struct LimitsOptions {
    bool refresh = false;
    std::optional<ProviderID> provider; ///< all enabled ones when absent
};
/// `tokwatch limits`: what is stored, without any use of the network. With `refresh` the providers'
/// services are asked first, those of enabled assistants that are present here; CommandError when
/// afterwards there is nothing to show of any of them.
int runLimits(const CommandSurroundings& surroundings, const LimitsOptions& options);

struct StatusOptions {
    StatusFormat format = StatusFormat::text;
    bool follow = false;
};
/// `tokwatch status`: the title by what is stored, without a look at logs or network. With `follow`
/// the whole application without its windows, until a signal ends it (status 0) or nobody reads its
/// output any more (status 1): it indexes, watches, fetches, publishes, and writes the title's line
/// at once and at each change. Of several followers over one data directory one does the work, and
/// the others show what it stores; when it ends, another takes over.
int runStatus(const CommandSurroundings& surroundings, const StatusOptions& options);

/// `tokwatch watch`: the same on one page of the terminal, kept up to date, with today's usage and
/// the running block; until q or a signal ends it. Where there is no terminal, `status --follow`.
int runWatch(const CommandSurroundings& surroundings);

/// `tokwatch refresh`: asks the applications of this session to refresh.
int runRefresh(const CommandSurroundings& surroundings);

/// `tokwatch snapshot`: the widgets' snapshot as the application last wrote it, as JSON.
int runSnapshot(const CommandSurroundings& surroundings);

/// The names of all settings, in their order.
std::vector<std::string> settingNames();
/// `tokwatch preferences list`: in JSON an object, numbers and truth values as such, all else as
/// text that `set` takes.
int runPreferencesList(const CommandSurroundings& surroundings);
/// `tokwatch preferences get KEY`
int runPreferencesGet(const CommandSurroundings& surroundings, const std::string& name);
/// `tokwatch preferences set KEY VALUE`. A value that the setting does not take is a usage error.
int runPreferencesSet(const CommandSurroundings& surroundings, const std::string& name,
                      const std::string& value);

struct ReportOptions {
    ReportBy by = ReportBy::project;
    std::optional<std::int64_t> days; ///< today included; 30 where neither is said
    std::optional<std::string> since; ///< day keys
    std::optional<std::string> until;
    std::optional<ProviderID> provider; ///< all when absent
    bool csv = false;
};
/// `tokwatch report`: reads the files that were touched in the window, and the store not at all.
/// Status 1 when some of them could not be read; the rest is shown.
int runReport(const CommandSurroundings& surroundings, const ReportOptions& options);

enum class AuditRows { differing, all };
/// `tokwatch audit`: what the files hold, line by line, and the store's sums beside theirs, with
/// the reason of each difference. Reads all files and writes nothing. Status 1 when a difference
/// has no reason, or something could not be read.
int runAudit(const CommandSurroundings& surroundings, AuditRows which);

enum class ExportFormat { prometheus, csv, json };
struct ExportOptions {
    ExportFormat format = ExportFormat::prometheus;
    std::optional<std::string> host;   ///< the machine's name when absent
    std::optional<std::string> output; ///< a file that is replaced as a whole
};
/// `tokwatch export`: what is stored, for collectors and sheets, without a look at logs or network.
/// CommandError where counters could not be kept from falling.
int runExport(const CommandSurroundings& surroundings, const ExportOptions& options);

struct DoctorOptions {
    bool fix = false; ///< close to other users what they may read of the data
};
/// `tokwatch doctor`: what was found where and what of it works. Status 1 when something is broken.
int runDoctor(const CommandSurroundings& surroundings, const DoctorOptions& options);

} // namespace tokwatch
