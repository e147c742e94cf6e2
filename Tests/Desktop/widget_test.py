#!/usr/bin/python3
"""The widget on a real desktop, as people use it. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/widget_test.py PROGRAM

where PROGRAM is tokwatch-widget. It is given nothing but the snapshot's file.
"""

import ctypes
import json
import os
import re
import subprocess
import sys
import time
from datetime import datetime, timedelta, timezone

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from desktop import Picture, step, until, wait_for, window_ids

PROGRAM = sys.argv[1]
SNAPSHOT = os.path.join(os.environ["XDG_DATA_HOME"], "Q7K2M9X4PL.app.tokwatch/snapshot.json")
SETTINGS = os.path.join(os.environ["XDG_CONFIG_HOME"], "Tokwatch/Widget.conf")
SMALL, MEDIUM, LARGE = (168, 168), (352, 168), (352, 352)


def text_of(used, **more):
    now = datetime.now(timezone.utc)
    date = lambda moment: moment.strftime("%Y-%m-%dT%H:%M:%SZ")
    window = {"id": "session", "label": "Session", "usedFraction": used, "duration": 18000,
              "resetsAt": date(now + timedelta(hours=3)), "source": {"live": {}}}
    provider = {"id": "claude", "windows": [window], "status": {"ok": {}}, "tokens30d": 1, "cost30dUSD": 9, "approximate": False}
    return json.dumps({"generatedAt": date(now), "providers": [provider], "costTodayUSD": 1, "cost30dUSD": 9,
                       "dailyCost30": [0.3] * 30, **more})


def replace(text):
    """As the application does it."""
    os.makedirs(os.path.dirname(SNAPSHOT), exist_ok=True)
    with open(SNAPSHOT + ".new", "w", encoding="utf-8") as file:
        file.write(text)
    os.rename(SNAPSHOT + ".new", SNAPSHOT)


def set_preferences(text):
    os.makedirs(os.path.dirname(SETTINGS), exist_ok=True)
    with open(SETTINGS + ".new", "w", encoding="utf-8") as file:
        file.write(text)
    os.rename(SETTINGS + ".new", SETTINGS)


def kept():
    with open(SETTINGS, encoding="utf-8") as file:
        return file.read()


def place(window):
    lines = desktop.run("xdotool", "getwindowgeometry", "--shell", window).decode().split()
    values = {key: int(value) for key, value in (line.split("=") for line in lines)}
    return values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]


class Widget(desktop.Program):
    def __init__(self):
        super().__init__(PROGRAM)
        self.window = wait_for("the widget", window_ids)[0]

    def place(self):
        return place(self.window)

    def picture(self):
        return Picture(*self.place())

    def is_red(self):
        return self.picture().count(desktop.is_red) > 100

    def rests_at(self, *expected):
        try:
            wait_for("the widget to be there", lambda: self.place() == expected)
        except AssertionError:
            raise AssertionError(f"it is at {self.place()}, not at {expected}; kept: {kept()}") from None


def drag(widget, by_x, by_y):
    x, y, width, height = widget.place()
    desktop.run("xdotool", "mousemove", str(x + 20), str(y + 20), "mousedown", "1")
    for part in (1, 2, 3, 4):
        desktop.run("xdotool", "mousemove", str(x + 20 + by_x * part // 4), str(y + 20 + by_y * part // 4))
        time.sleep(0.05)
    desktop.run("xdotool", "mouseup", "1")
    desktop.move_away()
    widget.rests_at(x + by_x, y + by_y, width, height)


def check_hints(widget):
    step("lies below all windows, on every workspace, in no task bar, without the keyboard, and has a name")
    hints = desktop.run("xprop", "-id", widget.window).decode()
    for hint in ("WM_STATE_BELOW", "WM_STATE_SKIP_TASKBAR", "WM_STATE_SKIP_PAGER", "WM_WINDOW_TYPE_DOCK",
                 "WM_DESKTOP(CARDINAL) = 4294967295", "Client accepts input or input focus: False"):
        assert hint in hints, f"{hint} is not in {hints}"
    script = os.path.join(os.path.dirname(os.path.abspath(desktop.__file__)), "accessible.py")
    read = lambda: subprocess.run([script, "Tokwatch", "list"], capture_output=True, text=True, timeout=20).stdout
    wait_for("its name for screen readers", lambda: "\tTokwatch" in read())


def check_libraries():
    step("loads no engine, no network and no database")
    needed = re.findall(r"NEEDED.*\[(.*?)\]", desktop.run("readelf", "-d", PROGRAM).decode())
    # Under the sanitizers a folder is one object, which brings what its other sources need.
    if not any("san.so" in name for name in needed):
        assert not [name for name in needed if re.search("Qml|Quick|Network|sqlite|QCoro", name)], needed


def check_files(widget):
    step("shows what is in the file as soon as it is replaced, and calmly nothing where that cannot be read")
    desktop.move_away()
    empty = wait_for("the empty widget to rest", lambda: desktop.twice_the_same(widget.picture))
    newer = json.loads(text_of(0.5))
    newer["providers"][0]["status"] = {"of a later version": {}}
    older = {key: value for key, value in json.loads(text_of(0.5)).items() if key != "dailyCost30"}
    deep = "[" * 500_000
    for what, text in (("older", json.dumps(older)), ("newer", json.dumps(newer)), ("torn", text_of(0.5)[:-40]),
                       ("garbage", "\0\1\2"), ("deep", deep), ("absent", None), ("gigantic", "")):
        start = time.monotonic()
        replace(text_of(0.95, more="than is known"))
        wait_for("the critical limit", widget.is_red)
        print(f"  shown {time.monotonic() - start:.2f} s after the file was replaced", flush=True)
        if text is None:
            os.rename(os.path.dirname(SNAPSHOT), SNAPSHOT[:-14] + ".gone")
        else:
            replace(text)
        if what == "gigantic":
            os.truncate(SNAPSHOT, 1 << 30)
        wait_for(f"calm after a file that is {what}", lambda: widget.picture() == empty)
    assert widget.is_running()
    replace(text_of(0.5))
    wait_for("the limit", lambda: widget.picture() != empty)
    with open(os.path.join(os.path.dirname(SETTINGS), "Desktop.conf"), "w", encoding="utf-8") as file:
        file.write("theme=dark\n")
    wait_for("the chosen tone", lambda: widget.picture().count(lambda red, green, blue: red < 60) > 20_000)


def check_corners(widget):
    step("leaves its corners out only as long as a compositing manager runs")
    corner = lambda: Picture(*widget.place()[:2], 1, 1).raw
    square = corner()
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    server = ctypes.c_void_p(x11.XOpenDisplay(None))
    manager = x11.XCreateSimpleWindow(server, x11.XDefaultRootWindow(server), 0, 0, 1, 1, 0, 0, 0)
    x11.XSetSelectionOwner(server, x11.XInternAtom(server, b"_NET_WM_CM_S0", 0), manager, 0)
    x11.XFlush(server)
    wait_for("round corners", lambda: corner() != square)
    x11.XCloseDisplay(server)
    wait_for("square corners", lambda: corner() == square)


def choose_first(widget, setting):
    """The menu's first entry. Its keys are given time: what piles up would choose once more."""
    menu = lambda: len(window_ids()) > 1

    def choose():
        if not menu():
            x, y, _, _ = widget.place()
            desktop.click(x + 30, y + 30, desktop.RIGHT)
            wait_for("the menu", menu)
            time.sleep(0.3)  # its look and the keyboard come a moment after the window
            desktop.save("widget-menu")
        desktop.run("xdotool", "key", "Down", "Return")

    until(f"the end of the menu and {setting}", choose, lambda: not menu() and setting in kept(), 5)
    desktop.move_away()


def resize_screen(mode):
    desktop.run("xrandr", "--output", "screen", "--mode", mode)


def check_places():
    step("is dragged, sized by its menu and by the settings, and comes back to its place")
    with Widget() as widget:
        first = widget.place()
        assert first[2:] == MEDIUM and first[0] > 640, first
        drag(widget, -300, 200)
        x, y = widget.place()[:2]
        wait_for("the place in the settings", lambda: f"{x} {y} 352 168 screen" in kept())
        choose_first(widget, "size=small")
        widget.rests_at(x + 352 - 168, y, *SMALL)
    set_preferences(kept().replace("size=small", "size=medium"))
    with Widget() as widget:
        widget.rests_at(x, y, *MEDIUM)
        wait_for("the size chosen meanwhile, at its place", lambda: f"{x} {y} 352 168 screen" in kept())
        set_preferences(kept().replace("size=medium", "size=large"))
        widget.rests_at(x, y, *LARGE)
        step("keeps to what is visible where the screen is smaller, and goes back")
        drag(widget, desktop.WIDTH - 352 - x, desktop.HEIGHT - 352 - y)
        desktop.run("xrandr", "--newmode", "smaller", "0", "800", "0", "0", "0", "600", "0", "0", "0")
        desktop.run("xrandr", "--addmode", "screen", "smaller")
        resize_screen("smaller")
        widget.rests_at(800 - 352, 600 - 352, *LARGE)
        resize_screen("1280x720")
        widget.rests_at(1280 - 352, 720 - 352, *LARGE)
        desktop.save("widget-large")
        step("is one, and ends when it is turned off")
        assert subprocess.run([PROGRAM], timeout=10).returncode == 0
        set_preferences("shown=false\n")
        assert widget.process.wait(timeout=10) == 0
    step("stays off where a session that was saved has it")
    assert subprocess.run([PROGRAM, "-session", "1_2_3"], timeout=10).returncode == 0
    assert "shown=false" in kept(), kept()


os.environ.pop("NO_AT_BRIDGE", None)
os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
desktop.move_away()
check_libraries()
with Widget() as shown:
    check_hints(shown)
    check_files(shown)
    check_corners(shown)
check_places()
