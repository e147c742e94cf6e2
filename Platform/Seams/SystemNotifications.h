#pragma once

#include <functional>

namespace tokwatch {

/// What other processes tell the application. Main thread; calls come from its event loop for as
/// long as this lives.
class SystemNotifications {
  public:
    virtual ~SystemNotifications() = default;

    /// "app.tokwatch.refresh", posted by any process.
    virtual void onRefreshRequest(std::function<void()> call) = 0;
    /// The session resumed from sleep, during which neither timers nor files moved.
    virtual void onResume(std::function<void()> call) = 0;
    /// The machine's time zone may have been changed.
    virtual void onTimeZoneChange(std::function<void()> call) = 0;
    /// The machine is connected to the network again. May never come: who waits for it also waits
    /// for a time.
    virtual void onNetworkBack(std::function<void()> call) = 0;
};

} // namespace tokwatch
