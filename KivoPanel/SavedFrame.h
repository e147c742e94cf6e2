#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QStringView>

#include <vector>

namespace kivo {

/// Where a window was left on one screen. The rectangle counts from the corner of that screen, so
/// that it means the same place however the screens are arranged.
struct SavedFrame {
    QString screen; ///< its name, which is that of its socket: "HDMI-1"
    QRect frame;
    friend bool operator==(const SavedFrame&, const SavedFrame&) = default;
};

/// Where one window was left: the latest first, each screen once.
using SavedFrames = std::vector<SavedFrame>;

/// A screen that is there, in the coordinates that all screens share.
struct ScreenArea {
    QString name;
    QRect whole;
    QRect visible; ///< less its bars
};

/// The screens at present, the primary one first. Main thread.
QList<ScreenArea> presentScreens();

/// Where the window goes, in the coordinates of all screens: where it was left last of all places
/// whose screen is there. Where none is, it goes to the first screen, to the same place as far as
/// that has it. It lies on the visible part with all of it, and is made smaller where that is
/// smaller. Null where it was left nowhere, or there is no screen.
QRect visiblePlace(const SavedFrames& frames, const QList<ScreenArea>& screens);

/// The frames after the window was left at the place: on the screen that has the most of it, in
/// place of what was remembered of that screen.
SavedFrames remembering(SavedFrames frames, const QRect& place, const QList<ScreenArea>& screens);

/// As settings keep them, a line for each: "1200 30 260 140 HDMI-1".
QString textOf(const SavedFrames& frames);
/// Lines that are none are left out.
SavedFrames savedFramesFrom(QStringView text);

} // namespace kivo
