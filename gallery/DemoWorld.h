#pragma once

#include "Tests/App/ModelWorld.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Popover/Range/ShownRange.h"

#include <initializer_list>
#include <string>

namespace tokwatch::testing {

/// A model with the demo home's usage at a fixed moment, and whatever limits a picture wants.
class DemoWorld : public ModelWorld {
  public:
    enum class Home { demo, empty };

    explicit DemoWorld(Home kind = Home::demo);

    /// Limits as a good day has them.
    void showUsualLimits();
    ProviderLimits claudeLimits() const;
    ProviderLimits codexLimits() const;
    LimitWindow window(const std::string& id, const std::string& label, double used,
                       Seconds duration, Seconds untilReset) const;

    ViewClock clock;
    ShownRange range;
};

} // namespace tokwatch::testing
