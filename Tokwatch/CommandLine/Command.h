#pragma once

#include "Tokwatch/CommandLine/Assistant/StatuslineCommand.h"
#include "Tokwatch/CommandLine/StatusLine.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Report/UsageReport.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace CLI {
class App;
}

/// What a command line may ask for. Each command is a value: what the words said, once they are
/// known to be sound, and which of our programs carries it out.
namespace tokwatch {

/// `tokwatch` alone: the windows.
struct DesktopOptions {
    static constexpr const char* program = programs::stored;
    std::vector<std::string> words; ///< to be passed on
};

/// `tokwatch status`: the title by what is stored.
struct StatusOptions {
    static constexpr const char* program = programs::stored;
    StatusFormat format = StatusFormat::text;
};

/// `tokwatch limits`: what is stored.
struct LimitsOptions {
    static constexpr const char* program = programs::stored;
    std::optional<ProviderID> provider; ///< all enabled ones when absent
};

/// `tokwatch snapshot`: as the application last wrote it.
struct SnapshotOptions {
    static constexpr const char* program = programs::stored;
};

enum class ExportFormat { prometheus, csv, json };
/// `tokwatch export`
struct ExportOptions {
    static constexpr const char* program = programs::stored;
    ExportFormat format = ExportFormat::prometheus;
    std::optional<std::string> host;   ///< the machine's name when absent
    std::optional<std::string> output; ///< a file that is replaced as a whole
};

/// `tokwatch index`
struct IndexOptions {
    static constexpr const char* program = programs::logs;
};

/// `tokwatch reread PROVIDER`
struct RereadOptions {
    static constexpr const char* program = programs::logs;
    ProviderID provider = ProviderID::claude;
};

enum class SummaryTable { tool, model, day };
/// `tokwatch summary`
struct SummaryOptions {
    static constexpr const char* program = programs::logs;
    std::int64_t days = 30;
    SummaryUnit unit = SummaryUnit::cost;
    std::optional<SummaryTable> by; ///< all three when absent
    bool skipIndex = false;
};

/// `tokwatch report`
struct ReportOptions {
    static constexpr const char* program = programs::logs;
    ReportBy by = ReportBy::project;
    std::optional<std::int64_t> days; ///< today included; 30 where neither is said
    std::optional<std::string> since; ///< day keys
    std::optional<std::string> until;
    std::optional<ProviderID> provider; ///< all when absent
    bool csv = false;
};

enum class AuditRows { differing, all };
/// `tokwatch audit`
struct AuditOptions {
    static constexpr const char* program = programs::logs;
    AuditRows rows = AuditRows::differing;
};

/// `tokwatch status --follow`
struct FollowOptions {
    static constexpr const char* program = programs::session;
    StatusFormat format = StatusFormat::text;
};

/// `tokwatch watch`
struct WatchOptions {
    static constexpr const char* program = programs::session;
};

/// `tokwatch limits --refresh`
struct FreshLimitsOptions {
    static constexpr const char* program = programs::session;
    std::optional<ProviderID> provider; ///< all enabled ones when absent
};

/// `tokwatch refresh`
struct RefreshOptions {
    static constexpr const char* program = programs::session;
};

/// `tokwatch preferences [list]`
struct ListSettingsOptions {
    static constexpr const char* program = programs::session;
};

/// `tokwatch preferences get KEY`
struct GetSettingOptions {
    static constexpr const char* program = programs::session;
    std::string name;
};

/// `tokwatch preferences set KEY VALUE`
struct SetSettingOptions {
    static constexpr const char* program = programs::session;
    std::string name;
    std::string value;
};

/// `tokwatch doctor`
struct DoctorOptions {
    static constexpr const char* program = programs::session;
    bool fix = false; ///< close to other users what they may read of the data
};

/// `tokwatch complete WORD…`: what a shell asks.
struct CompletionOptions {
    static constexpr const char* program = programs::session;
    const CLI::App* commands = nullptr;
    std::vector<std::string> words; ///< so far, the last one being typed
};

using Command =
    std::variant<DesktopOptions, StatuslineOptions, StatusOptions, LimitsOptions, SnapshotOptions,
                 ExportOptions, IndexOptions, RereadOptions, SummaryOptions, ReportOptions,
                 AuditOptions, FollowOptions, WatchOptions, FreshLimitsOptions, RefreshOptions,
                 ListSettingsOptions, GetSettingOptions, SetSettingOptions, DoctorOptions,
                 CompletionOptions>;

} // namespace tokwatch
