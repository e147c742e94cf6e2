#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

namespace kivo {

/// What a status area makes of an item's picture and text.
enum class StatusAreaKind {
    none,   ///< there is no status area
    square, ///< squeezes every picture into a square and shows no text
    wide,   ///< keeps a picture's proportions and shows no text
    label,  ///< shows the item's label as live text beside the picture
};

/// What says whether a status area is dark.
enum class ToneSource {
    desktop,    ///< the desktop as a whole
    habit,      ///< nothing: it is dark unless its owner styled it otherwise
    styleSheet, ///< one of its own; where that says nothing, habit
    xfce,       ///< the xfce settings
    plasma,     ///< the files of Plasma's settings
};

/// What is known of a status area.
struct StatusArea {
    StatusAreaKind kind = StatusAreaKind::none;
    bool namesOnly = false; ///< takes icons by name and ignores pixels
    bool opensMenu = false; ///< opens the menu on a left click too, and the item hears nothing
    ToneSource tone = ToneSource::desktop;
    int wheelNotch = 0; ///< what it sends for one notch down; 0 where nobody knows

    friend bool operator==(const StatusArea&, const StatusArea&) = default;
};

/// The status area of a host whose process has this name (as in /proc/PID/comm, so at most 15
/// characters). Unknown ones count as square: a square picture is right everywhere.
StatusArea statusAreaOf(QStringView processName);

/// Follows which status area the desktop has at the moment. Where several hosts disagree the area
/// counts as square. Main thread only.
class StatusAreaHost : public QObject {
    Q_OBJECT
  public:
    using ProcessName = std::function<QString(uint pid)>;

    explicit StatusAreaHost(QDBusConnection bus, QObject* parent = nullptr,
                            ProcessName processName = systemProcessName);

    const StatusArea& area() const { return current; }
    /// The number of the host's process; 0 when there is none, or several.
    uint process() const { return currentProcess; }

    /// From /proc; empty when there is no such process.
    static QString systemProcessName(uint pid);

  signals:
    void changed();

  private slots:
    void look();
    void busClosed();

  private:
    void conclude();
    void assign(const StatusArea& next, uint process = 0);
    QStringList hostServices() const;
    uint processOf(const QString& service) const;

    QDBusConnection bus;
    ProcessName processName;
    QDBusServiceWatcher* watched = nullptr;
    StatusArea current;
    uint currentProcess = 0;
    QDBusPendingCallWatcher* question = nullptr; ///< to the watcher, which has yet to answer
    bool mustLookAgain = false;
};

} // namespace kivo
