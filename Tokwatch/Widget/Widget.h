#pragma once

#include "KivoLooks/DesktopAppearance.h"
#include "KivoPanel/Compositing.h"
#include "KivoPanel/SavedFrame.h"
#include "Platform/Seams/FileEventStream.h"
#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Widget/WidgetWindow.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QList>
#include <QObject>
#include <QPropertyNotifier>
#include <QRect>
#include <QTimer>

#include <filesystem>
#include <memory>
#include <optional>

namespace tokwatch {

class WidgetMenu;
class WidgetPreferences;

/// What the widget takes from outside.
struct WidgetSurroundings {
    std::optional<std::filesystem::path> snapshotDirectory; ///< none without a data home
    /// Of the Preferences, which have the levels; that of the windows, which has their tone, is
    /// beside it.
    std::filesystem::path settingsFile;
    OpenFileEventStream openFileEvents;
    Clock now;
    CalendarSource calendar;
    std::function<void()> openTokwatch; ///< shows the application's popover
};

/// The widget at work. It reads the snapshot's file, and nothing else of the application's: again
/// when it is replaced, and at each full minute, when the times on it change. Where it stands and
/// how large it is goes to its settings, for each screen. Main thread only.
class Widget : public QObject {
    Q_OBJECT
  public:
    /// References outlive it.
    Widget(WidgetPreferences& preferences, Scheduler& timers,
           const kivo::DesktopAppearance& appearance, WidgetSurroundings surroundings);
    ~Widget() override;

    /// Shows it; called once.
    void open();

  private:
    void look();
    void lookAtNextMinute();
    void followFiles();
    WidgetLooks looksNow() const;
    void followScreens();
    QRect placeLeft(const QList<kivo::ScreenArea>& screens) const;
    void screensChanged();
    void sizeChanged();
    void remember();
    void openMenu(QPoint at);

    WidgetPreferences& preferences;
    Scheduler& scheduler;
    const kivo::DesktopAppearance& appearance;
    const WidgetSurroundings surroundings;
    const SnapshotStore snapshots;
    const kivo::TypeScale type;
    kivo::Compositing compositing;
    WidgetWindow window;
    std::unique_ptr<WidgetMenu> menu; ///< while it is open
    std::unique_ptr<ScheduledCall> nextMinute;
    QTimer screensSettling;
    QPropertyNotifier sizeNotifier;
    std::unique_ptr<FileEventStream> files; ///< last, as its thread calls
};

} // namespace tokwatch
