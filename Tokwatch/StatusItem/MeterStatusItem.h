#pragma once

#include "DBusMenu.h"
#include "Date.h"
#include "NamedIcons.h"
#include "PanelTone.h"
#include "Scheduler.h"
#include "ScrollStepper.h"
#include "StatusAreaHost.h"
#include "StatusItemSource.h"
#include "StatusNotifierItem.h"
#include "StatusPictures.h"
#include "StatusTitle.h"

#include <QDBusConnection>
#include <QObject>
#include <QPoint>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tokwatch {

/// What the status item stands on. References outlive it.
struct StatusItemSurroundings {
    QDBusConnection bus;
    Scheduler& scheduler;
    Clock now;
    std::filesystem::path iconDirectory; ///< of our own, for hosts that take icons by name
    kivo::StatusAreaHost::ProcessName processName = kivo::StatusAreaHost::systemProcessName;
};

/// The meter in the desktop's status area. How it is drawn follows the host: live text beside the
/// mark, mark and text in one wide picture, or the number inside a square one; never two of them.
/// Main thread only.
class MeterStatusItem {
  public:
    /// How long a limit that was scrolled to is shown.
    static constexpr Seconds choiceTime{5};

    MeterStatusItem(StatusItemSurroundings surroundings, StatusItemSource& source,
                    std::function<void(QPoint)> onClick, kivo::DBusMenu::Builder menu);

    /// Shows the title; nothing is drawn or sent when it equals the one shown.
    void apply(const StatusTitle& title);
    const std::optional<StatusTitle>& current() const { return currentTitle; }

    /// What the desktop's own tone is, for panels that follow it.
    void setDesktopDark(bool isDark) { tone.setDesktopDark(isDark); }

    /// Whether there is a status area at present. Becomes known only some time after the start.
    bool hasHost() const { return host.area().kind != kivo::StatusAreaKind::none; }
    /// Called when a status area appears, vanishes or gives way to another one.
    std::function<void()> onHostChanged;
    /// Called on a right click at a host that does not draw menus itself.
    std::function<void(QPoint)> onContextMenu;

  private:
    /// All that the drawing depends on.
    struct Face {
        StatusTitle title;
        std::string prefix; ///< names the limit while it was chosen by scrolling
        kivo::StatusArea area;
        bool onDarkPanel = false;

        friend bool operator==(const Face&, const Face&) = default;
    };

    std::vector<kivo::MenuEntry> menuEntries() const;
    void scroll(int delta);
    void choose(int steps);
    void update();
    Face face() const;
    void draw(const Face& face);
    kivo::StatusIcon markIcon(const Face& face, const Ink& ink);

    StatusItemSource& source;
    Scheduler& scheduler;
    Clock now;
    std::function<void(QPoint)> onClick;
    kivo::DBusMenu::Builder buildMenu;

    kivo::StatusAreaHost host;
    kivo::PanelTone tone;
    kivo::StatusNotifierItem item;
    kivo::DBusMenu menu;
    NamedIcons icons;

    std::optional<StatusTitle> currentTitle;
    std::optional<Face> drawn;
    kivo::ScrollStepper stepper;
    std::optional<WindowChoice> choice;
    std::unique_ptr<ScheduledCall> choiceEnd;
};

} // namespace tokwatch
