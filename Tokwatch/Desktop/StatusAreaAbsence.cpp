#include "Tokwatch/Desktop/StatusAreaAbsence.h"

#include <utility>

namespace tokwatch {

StatusAreaAbsence::StatusAreaAbsence(std::function<Sight()> lookAtArea, Clock clock)
    : look(std::move(lookAtArea)), now(std::move(clock)) {}

bool StatusAreaAbsence::isCertain() const {
    const Sight area = look();
    return area.isKnown && !area.isThere;
}

/// An area that went comes back, with its panel, as long as there is a bus to tell of it.
bool StatusAreaAbsence::isForGood() const {
    return isCertain() && (!had || !look().hasBus);
}

StatusAreaAbsence::Demand StatusAreaAbsence::changed(bool isAnyWindowShown) {
    const Sight area = look();
    had |= area.isThere;
    // Once: an area that goes later goes with its panel, or with the session.
    const bool isFirstLook = !std::exchange(hasLooked, true);
    // The panel of a session that just began comes up beside us. Later the window has its user.
    constexpr Seconds sessionStart{60};
    return {.givesWay = isFirstLook && isCertain(),
            .opens = isCertain() && (isFirstLook || (!area.hasBus && !isAnyWindowShown)),
            .closes = openedAt && area.isThere && now() - *openedAt < sessionStart};
}

} // namespace tokwatch
