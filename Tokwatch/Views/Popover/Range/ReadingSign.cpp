#include "Tokwatch/Views/Popover/Range/ReadingSign.h"

#include <utility>

namespace tokwatch {
namespace {

/// Often enough for a bar that seems to grow.
constexpr Seconds betweenLooks{0.1};

} // namespace

ReadingSign::ReadingSign(Scheduler& timers, std::function<ReadingState()> told)
    : scheduler(timers), progress(std::move(told)) {}

void ReadingSign::begin() {
    nextLook = scheduler.after(patience, [this] {
        show();
        nextLook = scheduler.every(betweenLooks, [this] { show(); });
    });
}

void ReadingSign::end() {
    nextLook.reset();
    shown.setValue({});
}

void ReadingSign::show() {
    ReadingState state = progress();
    state.isShown = true;
    shown.setValue(std::move(state));
}

} // namespace tokwatch

#include "moc_ReadingSign.cpp"
