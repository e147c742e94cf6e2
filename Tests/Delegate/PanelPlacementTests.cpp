#include "KivoPanel/PanelPlacement.h"

#include "Tokwatch/Desktop/StatusAreaPlace.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

TEST(PanelPlacement, PutsAPanelAtWhatOpenedItAndInsideTheVisibleFrame) {
    struct Case {
        const char* what;
        QPoint anchor;
        QRect visibleFrame;
        QPoint topLeft;
    };
    const QSize size(420, 600);
    const QRect belowAPanel(0, 30, 1920, 1050);
    const QRect aboveAPanel(0, 0, 1920, 1050);
    const QRect secondScreen(1920, 30, 1280, 994);
    const Case cases[]{
        {"centred below an upper panel", {1000, 10}, belowAPanel, {790, 38}},
        {"centred above a lower panel", {1000, 1070}, aboveAPanel, {790, 442}},
        {"not beyond the right edge", {1910, 10}, belowAPanel, {1492, 38}},
        {"not beyond the left edge", {3, 10}, belowAPanel, {8, 38}},
        {"on the screen of the anchor", {3190, 10}, secondScreen, {2772, 38}},
        {"its upper left corner visible on a screen too small",
         {100, 390},
         {0, 0, 400, 400},
         {8, 8}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(panelRect(size, each.anchor, each.visibleFrame), QRect(each.topLeft, size))
            << each.what;
}

TEST(PanelPlacement, GuessesTheStatusAreaAtTheEndOfThePanel) {
    const QRect screen(0, 0, 1920, 1080);
    const QRect belowAPanel(0, 30, 1920, 1050);
    const QRect aboveAPanel(0, 0, 1920, 1050);
    EXPECT_EQ(tokwatch::likelyStatusArea(screen, belowAPanel, false), QPoint(1919, 0));
    EXPECT_EQ(tokwatch::likelyStatusArea(screen, aboveAPanel, false), QPoint(1919, 1079));
    EXPECT_EQ(tokwatch::likelyStatusArea(screen, aboveAPanel, true), QPoint(0, 1079));
    EXPECT_EQ(tokwatch::likelyStatusArea(screen, screen, false), QPoint(1919, 0));
}

} // namespace
} // namespace kivo
