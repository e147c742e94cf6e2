#pragma once

#include "KivoMenuBar/DBusMenu.h"
#include "KivoMenuBar/PanelTone.h"
#include "KivoMenuBar/ScrollStepper.h"
#include "KivoMenuBar/StatusAreaHost.h"
#include "KivoMenuBar/StatusNotifierItem.h"
#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Display/StatusTitle.h"
#include "Tokwatch/Pictures/StatusPictures.h"
#include "Tokwatch/StatusItem/NamedIcons.h"
#include "TokwatchCore/Support/Date.h"

#include <QDBusConnection>
#include <QObject>
#include <QPoint>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tokwatch {

/// What the status item takes from outside. References outlive it.
struct StatusItemSurroundings {
    QDBusConnection bus;
    Scheduler& scheduler;
    Clock now;
    std::filesystem::path iconDirectory; ///< for hosts that take icons by name; empty for none
    kivo::StatusAreaHost::ProcessName processName = kivo::StatusAreaHost::systemProcessName;
    kivo::PanelTone::TextColour panelTextColour = kivo::PanelTone::systemTextColour;
};

/// What is asked of the application.
struct StatusActions {
    std::function<void(QPoint)> open; ///< a click, and where
    std::function<void()> refresh;
    std::function<void()> openSettings;
    std::function<void()> quit;
    /// Whether there is somebody to ask for updates at present; without it there never is.
    std::function<bool()> canCheckForUpdates{};
    std::function<void()> checkForUpdates{};
    std::function<void()> openMakersPage{}; ///< none where no such page was configured
};

/// The context menu, and on every host at least a part of it.
std::vector<kivo::MenuEntry> statusMenu(const StatusActions& actions);

/// The meter in the desktop's status area. How it is drawn follows the host: live text beside the
/// mark, mark and text in one wide picture, or the number inside a square one; never two of them.
/// Main thread only.
class MeterStatusItem {
  public:
    /// How long a limit that was scrolled to is shown.
    static constexpr Seconds choiceTime{5};
    /// How long after the start a status area may come up without being missed: the panel and the
    /// programs of a session start side by side.
    static constexpr Seconds hostGrace{3};

    MeterStatusItem(StatusItemSurroundings surroundings, StatusActions actions);

    /// Shows the title, or the limit that was scrolled to; nothing is drawn or sent when that
    /// equals what is shown.
    void apply(const StatusContent& content);

    /// While it is open, there is no tooltip.
    void setPopoverOpen(bool isOpen);
    /// What the menu offers is something else.
    void menuChanged() { menu.rebuild(); }
    /// What the desktop's own tone is, for panels that follow it.
    void setDesktopDark(bool isDark) { tone.setDesktopDark(isDark); }

    /// Whether there is a status area at present.
    bool hasHost() const { return host.area().kind != kivo::StatusAreaKind::none; }
    /// Whether that is certain: true once one was found, or none within `hostGrace`, or without a
    /// bus from the first turn of the event loop on.
    bool isHostKnown() const { return hostKnown; }
    /// Called when it becomes known whether there is a status area, once and never from within the
    /// constructor; then whenever one appears, vanishes or gives way to another one.
    std::function<void()> onHostChanged;
    /// Called on a right click at a host that does not draw menus itself: `statusMenu` belongs
    /// there.
    std::function<void(QPoint)> onContextMenu;
    /// Called when a host that draws menus itself is about to.
    std::function<void()> onMenuShown;
    /// The menu for a host that draws it, as it should be at this moment.
    std::vector<kivo::MenuEntry> menuEntries() const;

  private:
    /// All that the drawing depends on.
    struct Face {
        StatusTitle title;
        kivo::StatusArea area;
        bool onDarkPanel = false;
        bool toneIsGuess = false;
        bool isPopoverOpen = false;

        friend bool operator==(const Face&, const Face&) = default;
    };

    void hostChanged();
    void tellHost();
    void scroll(int delta);
    void choose(std::int64_t steps);
    /// The limit that was scrolled to; null for none, and once it is gone.
    const LimitStep* chosen() const;
    void update();
    Face face() const;
    /// What of the face the pictures show.
    static Face pictured(Face face);
    void draw(const Face& face);
    kivo::StatusIcon iconOf(const Face& face);
    kivo::StatusIcon markIcon(const Face& face, const InkChoice& ink);

    Scheduler& scheduler;
    Clock now;
    StatusActions actions;

    kivo::StatusAreaHost host;
    kivo::PanelTone tone;
    kivo::StatusNotifierItem item;
    kivo::DBusMenu menu;
    NamedIcons icons;

    bool hostKnown = false;
    bool popoverOpen = false;
    std::unique_ptr<ScheduledCall> hostMissed;
    std::optional<StatusContent> content;
    std::optional<Face> drawn;
    std::optional<Face> drawnPictures;
    kivo::ScrollStepper stepper;
    std::optional<std::int64_t>
        stepsAhead;                  ///< scrolled in this turn of the event loop, and not drawn yet
    std::optional<LimitStep> choice; ///< as it was when it was scrolled to
    std::unique_ptr<ScheduledCall> choiceEnd;
};

} // namespace tokwatch
