#!/usr/bin/python3
"""The widget as a surface of a Wayland compositor's bottom layer. Runs inside script/desktop-session:

    script/desktop-session --client wayland waybar Tests/Desktop/widget_layer_test.py PROGRAM
"""

import os
import sys
from pathlib import Path

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from desktop import Picture, step, twice_the_same, wait_for

SETTINGS = os.path.join(os.environ["XDG_CONFIG_HOME"], "Tokwatch/Widget.conf")
ENVIRONMENT = {**os.environ, "WAYLAND_DISPLAY": desktop.compositor_display("wayland"), "QT_QPA_PLATFORM": "wayland"}
BAR = 30


def below_bar():
    return Picture(0, BAR, desktop.WIDTH, desktop.HEIGHT - BAR)


def bare_desktop():
    """At rest and in its own colour, which the compositor draws after it said that it is ready."""
    seen = twice_the_same(below_bar)
    return seen if seen and seen.count(lambda *pixel: pixel == (58, 74, 90)) > 0.99 * seen.width * seen.height else None


def place():
    """What is seen of the widget: left, top, width, height, from the bar's end; once it rests."""

    def look():
        box = below_bar().changed_box(EMPTY)
        return box and (box[0], box[1], box[2] - box[0] + 1, box[3] - box[1] + 1)

    return wait_for("the widget to rest", lambda: twice_the_same(look))


def rests_at(*expected):
    wait_for(f"the widget at {expected}", lambda: place() == expected)


def windows():
    return [node["name"] for node in desktop.compositor_windows() if node["name"] == "Tokwatch"]


desktop.move_away()
EMPTY = wait_for("the bare desktop", bare_desktop, 30)
with desktop.Program(sys.argv[1], environment=ENVIRONMENT):
    step("is no window, and stands below the bar")
    rests_at(1280 - 352 - 24, 24, 352, 168)
    assert not windows()
    step("follows the pointer, also there and back and beyond the edge, and stays where that lets go")
    for to in ((300, 300), (700, 500), (10, 10), (400, 250)):
        left, top, width, height = place()
        desktop.drag(left + 20, BAR + top + 20, to[0] + 20, BAR + to[1] + 20)
        desktop.move_away()
        rests_at(*to, width, height)
    desktop.save("widget-layer")
    wait_for("its place in the settings", lambda: "400 250 352 168 X11-1" in Path(SETTINGS).read_text(encoding="utf-8"))
with desktop.Program(sys.argv[1], environment=ENVIRONMENT):
    step("comes back to its place, and shows its menu where it was pressed")
    rests_at(400, 250, 352, 168)
    desktop.click(430, BAR + 280, desktop.RIGHT)
    wait_for("the menu", lambda: not windows() and place()[3] > 168)
    desktop.save("widget-layer-menu")
    desktop.click(480, BAR + 300)
    desktop.move_away()
    rests_at(400, 250, 168, 168)
