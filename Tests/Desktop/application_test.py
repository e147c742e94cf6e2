#!/usr/bin/python3
"""The whole application on a real desktop, as people use it. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/application_test.py PROGRAM

where PROGRAM is tokwatch-desktop, with tokwatch beside it.
"""

import json
import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from application import (HOME, PROGRAM, Application, accessible, find_item, geometry, names, preference, prepare, press,
                         tokwatch, windows)
from desktop import HOST, StatusItem, step, until, wait_for

POPOVER_WIDTH = 420


def open_by_click(place):
    time.sleep(0.4)  # beyond the guard against the click that closed it
    desktop.click(*place)
    return wait_for("the popover", windows)[0]


def is_closed():
    return not windows()


def escape():
    until("the end", lambda: desktop.key("Escape"), is_closed)


def check_popover(place, item):
    step("opens at the item, at its width, and shows the stored usage")
    box = geometry(open_by_click(place))
    assert box["WIDTH"] == POPOVER_WIDTH, box
    # waybar tells coordinates of the item's own, and the compositor would place a window of its kind anyway.
    if HOST != "waybar":
        assert box["Y"] >= desktop.PANEL_HEIGHT - 4 and box["X"] + POPOVER_WIDTH <= desktop.WIDTH, box
    assert box["HEIGHT"] <= 0.8 * 720, box
    summary = json.loads(tokwatch("summary", "--no-index", "--json", "--home", HOME))
    headline = f"Last 30 days: ${summary['totalCostUSD']:,.0f} · API estimate"
    wait_for(headline, lambda: any(headline in name for name in names()))
    desktop.save("popover")

    step("switches tabs by keys and keeps the tab")
    desktop.key("Right")
    wait_for("the tab", lambda: preference("popoverTab") == "stats")
    desktop.key("Left")
    wait_for("the tab", lambda: preference("popoverTab") == "usage")

    step("closes by Escape, by a press outside, and by the item")
    desktop.key("Escape")
    wait_for("the end by Escape", is_closed)
    open_by_click(place)
    until("the end by a press outside", lambda: desktop.click(640, 690), is_closed)
    open_by_click(place)
    item.get("Id")  # which it answers only when it is through with the click
    time.sleep(0.6)  # beyond a double click, which leaves it open
    desktop.click(*place)
    wait_for("the end by the item", is_closed)
    time.sleep(0.3)
    assert is_closed(), "the click that closed it opened it again"


def check_second_start():
    step("a second start opens the first one's popover")
    assert subprocess.run([PROGRAM], timeout=10).returncode == 0
    wait_for("the popover", windows)
    escape()


def check_restored_start():
    step("asks no other to open where a session that was saved has it")
    bus = desktop.dbus.SessionBus()
    bus.request_name("app.tokwatch")  # and never answers
    assert subprocess.run([PROGRAM, "-session", "1_2_3"], timeout=10).returncode == 0
    bus.release_name("app.tokwatch")


def check_own_menu(item):
    step("draws the menu itself where it is asked to")
    item.call("ContextMenu", 600, 300)
    menu = wait_for("the menu", windows)[0]
    assert geometry(menu)["WIDTH"] == 220
    desktop.save("own-menu")
    escape()


def check_pinned_panel(item_place, application):
    step("pins the limits to a panel that is dragged, stays above, and comes back where it was left")
    panel = lambda: windows("Tokwatch Limits")
    open_by_click(item_place)
    desktop.move_away()  # the item's tooltip would lie above the panel
    press("Pin the limits")
    pinned = wait_for("the panel", panel)[0]
    wait_for("the end of the popover", is_closed)
    at = lambda: (geometry(pinned)["X"], geometry(pinned)["Y"])
    for x, y in (300, 350), (700, 500):
        left, top = at()
        desktop.drag(left + 40, top + 20, x + 40, y + 20)
        wait_for("the move", lambda: at() == (x, y))
    left, top = at()
    flick = ("mousemove_relative", "30", "10") * 2
    desktop.run("xdotool", "mousemove", str(left + 40), str(top + 20), "mousedown", "1", *flick, "mouseup", "1")
    # The pointer stays until then: a press that the window manager holds back to raise the window holds the release back,
    # too, and the server reports that where the pointer is by the time it lets go.
    flicked = (left + 60, top + 20)
    wait_for("a quick hand's move", lambda: at() == flicked)
    desktop.move_away()
    desktop.save("pinned")
    place = wait_for("it to rest", lambda: desktop.twice_the_same(at, 0.5))
    assert place == flicked, f"at {place}, behind the pointer"
    frame = "panelFrames={} {} ".format(*place)
    wait_for(f"its place in the settings, {frame}", lambda: frame in desktop_settings().replace('"', ""))
    application.restart()
    pinned = wait_for("the panel again", panel, 30)[0]
    wait_for("its place", lambda: at() == place)
    desktop.click(place[0] + 40, place[1] + 20)
    desktop.key("Escape")
    wait_for("its end", lambda: not panel())
    wait_for("the setting", lambda: "pinned=false" in desktop_settings())


def desktop_settings():
    with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "Tokwatch/Desktop.conf"), encoding="utf-8") as file:
        return file.read()


def check_settings(place, item):
    step("opens the settings from the popover, and they act at once")
    open_by_click(place)
    press("Settings")
    settings = wait_for("the settings window", lambda: windows("Tokwatch Settings"))
    wait_for("the end of the popover", is_closed)
    desktop.save("settings")
    press("Panel")
    press("Icon only")
    wait_for("the icon alone", lambda: "%" not in str(item.get("IconAccessibleDesc")))
    wait_for("the preference", lambda: preference("menuBarStyle") == "icon")
    press("Limit left")
    wait_for("the number again", lambda: "%" in str(item.get("IconAccessibleDesc")))
    press("Codex")
    wait_for("the list", lambda: "list item" in accessible("list").stdout)
    desktop.key("Escape")
    wait_for("its end alone", lambda: (left := accessible("list")).returncode == 0 and "list item" not in left.stdout)
    press("Codex")
    press("Weekly")
    wait_for("the preference", lambda: "weekly" in preference("menuBarWindows"))
    tint = preference("tintEnabled")
    press("Tint the item when a limit runs low")
    wait_for("the preference", lambda: preference("tintEnabled") != tint)
    tokwatch("preferences", "set", "tintEnabled", "true")
    desktop.run("xdotool", "windowfocus", "--sync", settings[0])
    desktop.key("Escape")
    wait_for("the end of the settings", lambda: not windows("Tokwatch Settings"))


def test_with_host():
    check_restored_start()
    step("ends well where it is told to while it starts")
    with Application():
        StatusItem(every=0)  # the earliest sign of it
    with Application() as application:
        item = StatusItem()
        wait_for("the registration", item.is_registered, 30)
        place = find_item()
        check_popover(place, item)
        check_second_start()
        check_own_menu(item)
        check_settings(place, item)
        if HOST != "waybar":
            check_pinned_panel(place, application)
        step("outlives the bus")
        desktop.end_bus()
        time.sleep(1)
        assert application.is_running(), application.complaints()
        complaints = [line for line in application.complaints().splitlines() if "qml" in line.lower()]
        assert not complaints, complaints


def test_without_host():
    step("welcomes once")
    with Application():
        wait_for("the welcome", lambda: windows("Welcome to Tokwatch"), 20)
        desktop.save("welcome")
        press("Start Using Tokwatch")
        wait_for("its end", lambda: not windows("Welcome to Tokwatch"))
        wait_for("the window that it leads to", windows)
        wait_for("the preference", lambda: preference("hasCompletedOnboarding") == "true")
    step("opens as an ordinary window and says how to get a status area")
    with Application():
        wait_for("the window", windows, 20)
        wait_for("the advice", lambda: "No status area was found" in names())
        desktop.save("without-host")


prepare()
desktop.move_away()
if HOST == "none":
    test_without_host()
else:
    tokwatch("preferences", "set", "hasCompletedOnboarding", "true")
    test_with_host()
