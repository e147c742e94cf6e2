#pragma once

#include <functional>
#include <string>

namespace tokwatch {

/// What the desktop is to show its user for a moment, beside all windows.
struct Alert {
    enum class Urgency { low, normal, critical };

    std::string subject; ///< what it is of; an alert takes the place of the one before it
    std::string title;   ///< plain text, as the next
    std::string text;    ///< may be empty
    Urgency urgency = Urgency::normal;

    friend bool operator==(const Alert&, const Alert&) = default;
};

/// Who shows alerts: the application speaks, the desktop is asked to pass it on. What others tell
/// the application is heard through SystemNotifications. Main thread; nothing here waits, and calls
/// come from the event loop for as long as this lives.
class AlertDisplay {
  public:
    virtual ~AlertDisplay() = default;

    /// Whether somebody is there to show an alert. Not known before the event loop runs.
    virtual bool isThere() const = 0;
    /// Shows the alert as far as anybody does; nobody tells whether it was seen.
    virtual void show(const Alert& alert) = 0;
    /// Takes away what is shown of the subject, if anything is.
    virtual void withdraw(const std::string& subject) = 0;
    /// What an earlier process showed of the subject counts as shown by this one, as far as it
    /// still stands there: it was `handle` to that one's `onShown`. Not before `isThere`.
    virtual void takeOver(const std::string& subject, const std::string& handle) = 0;

    /// `isThere` became true.
    std::function<void()> onArrival;
    /// An alert is shown, and will be when this process has ended: others find it by the handle.
    std::function<void(const std::string& subject, const std::string& handle)> onShown;
    /// The user asked for more, by a click. The token lets a window of ours have the keyboard;
    /// empty where the desktop gives none. To be set before the first alert: without it nothing is
    /// offered.
    std::function<void(const std::string& activationToken)> onOpen;
};

} // namespace tokwatch
