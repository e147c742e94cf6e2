#pragma once

#include "TokwatchCore/Support/Date.h"

#include <QProperty>

#include <utility>

namespace tokwatch {

/// The moment that the windows show, as an observable: what is computed with it is computed again
/// when it is advanced. Main thread only.
class ViewClock {
  public:
    explicit ViewClock(Clock realClock) : clock(std::move(realClock)), moment(clock()) {}

    Date now() const { return moment.value(); }
    /// To be called when a window opens, and now and then while it is open.
    void advance() { moment.setValue(clock()); }

  private:
    Clock clock;
    QProperty<Date> moment;
};

} // namespace tokwatch
