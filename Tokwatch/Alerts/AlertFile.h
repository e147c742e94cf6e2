#pragma once

#include "Tokwatch/Alerts/AlertRule.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tokwatch {

/// What all processes over one data directory have told, across restarts, in its "alerts.json"
/// under the lock "alerts.lock":
///
///     [{"provider": "claude", "window": "session", "kind": "critical", "toldAt": 812345678.5,
///       "resetsAt": 812346000, "isLeft": false, "handle": "…"}, …]
///
/// Moments are in seconds since 2001; the handle is AlertDisplay's. A file that is not a small
/// regular one of this form counts as empty; who keeps the lock longer than `patience` is not
/// waited for. What cannot be kept there is kept in memory until it can, with a line in the log.
/// Usable from any thread, and may wait: not on the main one.
class AlertFile {
  public:
    /// Without a directory everything is kept in memory.
    explicit AlertFile(std::optional<std::filesystem::path> directory,
                       std::chrono::milliseconds patience = std::chrono::seconds(1));

    /// Reads, edits and keeps what was told, with nobody in between. Never fails.
    void edit(const std::function<void(ToldAlerts& told)>& edit);

  private:
    const std::optional<std::filesystem::path> directory;
    const std::chrono::milliseconds patience;
    std::mutex mutex; ///< within the process
    ToldAlerts kept;  ///< in memory, for as long as there is no file that takes it
};

/// The file beside this database; in memory without any.
std::shared_ptr<AlertFile> alertFileBeside(const std::optional<std::filesystem::path>& database);

} // namespace tokwatch
