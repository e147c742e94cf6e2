#pragma once

#include <QPropertyNotifier>
#include <QStringList>

#include <filesystem>

namespace tokwatch {

class WidgetPreferences;

/// Starts the desktop widget: with the application where it was on, and when it is turned on. The
/// widget, a process of its own, follows the same settings and ends by itself when it is turned
/// off; where one runs already, another ends at once. Where it cannot be started, a switch that was
/// just turned on in this process goes back; what is in the file stays, as the program may be there
/// again at the next start, after an upgrade.
///
/// It has no entry of its own among what the desktop starts at login. Its numbers come from the
/// application, so that it comes with it, and one switch decides about both. Main thread only.
class WidgetStarter {
  public:
    /// The preferences outlive it. The places are the application's, which a click opens with them.
    WidgetStarter(WidgetPreferences& preferences, const std::filesystem::path& dataHome,
                  const std::filesystem::path& home);

  private:
    /// False where it could not be started.
    bool startIfWanted();

    WidgetPreferences& preferences;
    const QStringList arguments;
    QPropertyNotifier shownNotifier;
};

} // namespace tokwatch
