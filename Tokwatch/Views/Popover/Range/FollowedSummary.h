#pragma once

#include "Tokwatch/Views/Popover/Range/ReadingSign.h"
#include "TokwatchCore/Store/UsageSummary.h"

#include <QFutureWatcher>
#include <QProperty>

#include <cstdint>
#include <optional>

namespace tokwatch {

class AppModel;

/// The summary of so many days, computed in the background when somebody begins to look, when the
/// days are others, and after each publish while somebody looks. Of the days that the model
/// publishes it is the model's own, at once. Main thread only.
class FollowedSummary {
  public:
    /// One that looks; the summary outlives it.
    class Look {
      public:
        explicit Look(FollowedSummary& summary);
        ~Look();
        Look(const Look&) = delete;
        Look& operator=(const Look&) = delete;

      private:
        FollowedSummary& followed;
    };

    /// The model outlives it.
    FollowedSummary(const AppModel& model, std::int64_t days);

    void setDays(std::int64_t days);
    /// Observable. Until the summary of other days is there, the one from before.
    const UsageSummary& value() const;
    /// Observable.
    const ReadingState& reading() const { return sign.state(); }

  private:
    bool isUsual() const;
    void read();
    void take();

    const AppModel& model;
    QProperty<std::int64_t> days;
    QProperty<std::optional<UsageSummary>> computed; ///< of other than the usual days
    QFutureWatcher<std::optional<UsageSummary>> watcher;
    bool isOutdated = false; ///< something changed since the reading began
    int looks = 0;
    QPropertyNotifier publishing;
    ReadingSign sign;
};

} // namespace tokwatch
