#include "Tokwatch/Desktop/StatusAreaAdvice.h"

#include <QStringList>

#include <array>

namespace tokwatch {
namespace {

struct Advice {
    const char* desktop;
    const char* sentence;
};

constexpr std::array advices{
    Advice{"GNOME", "Install and turn on the extension AppIndicator Support, and Tokwatch appears "
                    "in the top bar."},
    Advice{"XFCE", "Add the Status Tray Plugin to a panel (Panel Preferences, Items), and Tokwatch "
                   "appears in it."},
    Advice{"KDE", "Add the System Tray widget to a panel, and Tokwatch appears in it."},
    Advice{"MATE", "Add the Notification Area to a panel, and Tokwatch appears in it."},
    Advice{"LXQt", "Add the Status Notifier plugin to a panel, and Tokwatch appears in it."},
    Advice{"sway", "Start a bar with a tray, such as waybar with the module \"tray\", and Tokwatch "
                   "appears in it."},
    Advice{"Hyprland", "Start a bar with a tray, such as waybar with the module \"tray\", and "
                       "Tokwatch appears in it."},
};

} // namespace

QString statusAreaAdvice(const QString& desktop) {
    for (const QString& name : desktop.split(QLatin1Char(':')))
        for (const Advice& advice : advices)
            if (name.compare(QLatin1String(advice.desktop), Qt::CaseInsensitive) == 0)
                return QString::fromLatin1(advice.sentence);
    return QStringLiteral("Start a panel with a status notifier area (also called system tray), "
                          "and Tokwatch appears in it. Until then it lives in this window.");
}

} // namespace tokwatch
