#pragma once

#include "Platform/Seams/Scheduler.h"

#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>
#include <memory>

namespace tokwatch {

/// How far a reading is that takes its time.
struct ReadingState {
    Q_GADGET
    Q_PROPERTY(bool isShown MEMBER isShown)
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(double fraction MEMBER fraction)
  public:
    bool isShown = false; ///< it is under way, and has been for longer than `ReadingSign::patience`
    QString text;         ///< "Reading sessions: 12 MB of 300 MB"
    double fraction = 0;  ///< 0 also where nobody can tell
    friend bool operator==(const ReadingState&, const ReadingState&) = default;
};

/// Says of a reading how far it is, but not before it has taken longer than a person takes for at
/// once: what flashes up and is gone again only disturbs. Main thread only.
class ReadingSign {
  public:
    static constexpr Seconds patience{0.2};

    /// `progress` tells how far it is whenever that is shown. The scheduler outlives this.
    ReadingSign(Scheduler& scheduler, std::function<ReadingState()> progress);

    void begin();
    void end();
    /// Observable.
    const ReadingState& state() const { return shown.value(); }

  private:
    void show();

    Scheduler& scheduler;
    const std::function<ReadingState()> progress;
    QProperty<ReadingState> shown;
    std::unique_ptr<ScheduledCall> nextLook;
};

} // namespace tokwatch
