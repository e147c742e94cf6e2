#pragma once

#include "Tokwatch/Views/Popover/Models/ProjectUsage.h"
#include "Tokwatch/Views/Popover/Range/ReadingSign.h"

#include <QFutureWatcher>
#include <QProperty>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>

namespace tokwatch {

class AppModel;

/// What the projects used, read from the assistants' files in the background while somebody looks,
/// and again after each publish. One reading at a time; one that nobody wants any more is stopped.
/// What the files say is remembered as long as this lives. Main thread only.
class ProjectReading {
  public:
    /// The model outlives it.
    explicit ProjectReading(const AppModel& model);
    ~ProjectReading();

    /// Somebody looks at so many days, or nobody looks.
    void follow(std::optional<int> days);
    /// Observable. The last one that was read, whatever days it is of; none before.
    const std::optional<ProjectUsage>& usage() const { return usageState.value(); }
    /// Observable.
    const ReadingState& reading() const { return sign.state(); }

  private:
    struct Bytes {
        std::atomic<std::int64_t> read = 0;
        std::atomic<std::int64_t> all = 0;
    };

    void read();
    void take();
    ReadingState progress() const;

    const AppModel& model;
    /// Shared with the reading under way, of which there is never more than one.
    const std::shared_ptr<ResponseFiles> files;
    const std::shared_ptr<Bytes> bytes;
    std::optional<int> days; ///< none while nobody looks
    QProperty<std::optional<ProjectUsage>> usageState;
    QFutureWatcher<std::optional<ProjectUsage>> watcher;
    std::stop_source stop;
    bool isOutdated = false; ///< something changed since the reading began
    QPropertyNotifier publishing;
    ReadingSign sign;
};

} // namespace tokwatch
