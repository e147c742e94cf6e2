#!/usr/bin/python3
"""The status item in a real status area, as people see and use it. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/status_item_test.py PROGRAM

where PROGRAM is StatusItemDemo.
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from desktop import HOST, LEFT, MIDDLE, RIGHT, TONE, WHEEL_DOWN, Picture, Program, StatusItem, step, until, wait_for

PROGRAM = sys.argv[1]
OPENS_MENU_ON_LEFT = HOST == "xfce-indicator"
SHOWS_LABEL = HOST == "xfce-indicator"
NUMBER = "claude 42% · 3h 5m"
FORWARDS_SCROLL = HOST != "xfce-systray"

TINTS = {"orange": lambda r, g, b: r > 130 and r - g > 50 and g - b > 50, "red": desktop.is_red}


def find_item(program):
    """Of its picture where it has a label: what turns red."""
    return desktop.item_columns(
        lambda: program.say(f"title critical {NUMBER}"), lambda: program.say(f"title normal {NUMBER}")
    )


def item_picture(columns):
    return Picture(columns[0], 0, columns[1] - columns[0] + 1, desktop.PANEL_HEIGHT)


def middle_of(columns):
    return (columns[0] + columns[1]) // 2, desktop.PANEL_HEIGHT // 2 - 1


def click_entry(columns, at_bottom=False):
    """The first or the last entry of the menu."""
    left, top, right, bottom = desktop.open_menu(*middle_of(columns), LEFT if OPENS_MENU_ON_LEFT else RIGHT)
    desktop.click((left + right) // 2, bottom - 16 if at_bottom else top + 18)


def check_looks(program, item, columns):
    step("shows the number once, in the panel's colours")
    assert item.label == ("42% · 3h 5m" if SHOWS_LABEL else ""), item.label
    widths = {width > height for width, height in item.picture_sizes()}
    assert widths == ({True} if HOST == "waybar" else set() if SHOWS_LABEL else {False}), widths
    picture = item_picture(columns)
    is_ink = (lambda r, g, b: min(r, g, b) > 200) if TONE == "dark" else (lambda r, g, b: max(r, g, b) < 90)
    assert picture.count(is_ink) > 30, f"{picture.count(is_ink)} pixels of ink"
    for tint, present in TINTS.items():
        assert picture.count(present) == 0, f"{tint} without a reason"
    assert "Claude · Session 42% left" in item.tooltip and "&lt;8%&gt; &amp; more" in item.tooltip, item.tooltip

    step("is tinted by severity")
    for severity, tint in (("warning", "orange"), ("critical", "red")):
        program.say(f"title {severity} {NUMBER}")
        wait_for(tint, lambda: item_picture(columns).count(TINTS[tint]) > 30)
        desktop.save(severity, x=desktop.WIDTH - 300, width=300, height=desktop.PANEL_HEIGHT)
    program.say(f"title normal {NUMBER}")
    wait_for("no tint", lambda: not any(item_picture(columns).count(tint) for tint in TINTS.values()))


def check_mouse(program, item, columns):
    x, y = middle_of(columns)
    if not OPENS_MENU_ON_LEFT:
        step("hears a left click")
        desktop.click(x, y, LEFT)
        heard = [int(word) for word in program.hear(r"click -?\d+ -?\d+").split()[1:]]
        # waybar tells coordinates of the item's own.
        assert HOST == "waybar" or abs(heard[0] - x) < 40 and 0 <= heard[1] < 80, heard
    step("hears a middle click")
    desktop.click(x, y, MIDDLE)
    program.hear("refresh")

    step("runs an entry of its menu")
    click_entry(columns)
    program.hear(r"click -?\d+ -?\d+" if OPENS_MENU_ON_LEFT else "refresh")

    if not FORWARDS_SCROLL:
        return desktop.move_away()
    step("steps down through the limits on scrolling down, and returns")
    shown = lambda: item.label or str(item.get("IconAccessibleDesc"))
    usual = shown()
    # It stays for five seconds.
    until("the next limit", lambda: desktop.click(x, y, WHEEL_DOWN), lambda: "Weekly 66%" in shown(), 6)
    wait_for("the usual one", lambda: shown() == usual)
    desktop.move_away()


def check_return(program):
    step("is back after the panel was")
    desktop.stop_panel()
    program.hear("no host")
    desktop.start_panel()
    program.hear("host", 20)
    wait_for("the registration", StatusItem().is_registered)


desktop.move_away()
with Program(PROGRAM) as program:
    program.hear("host", 20)
    columns = find_item(program)
    desktop.save("item", x=desktop.WIDTH - 300, width=300, height=desktop.PANEL_HEIGHT)
    check_looks(program, StatusItem(), columns)
    check_mouse(program, StatusItem(), columns)
    check_return(program)
    step("ends by its menu, and is gone with its program")
    columns = find_item(program)
    program.say(f"title critical {NUMBER}")
    wait_for("the item in red", lambda: desktop.panel().count(desktop.is_red) > 30)
    click_entry(columns, at_bottom=True)
    program.hear("menu quit")
    assert program.process.wait(timeout=10) == 0
wait_for("the item to leave", lambda: not desktop.panel().count(desktop.is_red))
