"""What a person does on the desktop of script/desktop-session: look, click, and ask over the bus."""

import glob
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time

import dbus

ITEM = "org.kde.StatusNotifierItem"
WATCHER = "org.kde.StatusNotifierWatcher"

PICTURES = os.environ["DESKTOP_PICTURES"]
HOST = os.environ["DESKTOP_HOST"]
TONE = os.environ["DESKTOP_TONE"]
CLIENT = os.environ["DESKTOP_CLIENT"]
COMPOSITOR = os.path.join(os.environ["DESKTOP_ROOT"], "compositor")

LEFT, MIDDLE, RIGHT, WHEEL_UP, WHEEL_DOWN = 1, 2, 3, 4, 5
WIDTH, HEIGHT, PANEL_HEIGHT = 1280, 720, 32
MENU_HEIGHT = 400  # the highest, and above where the pointer waits


def step(name):
    print(f"{HOST} {TONE}: {name}", flush=True)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout


def wait_for(what, condition, seconds=15.0, every=0.05):
    """The condition's first true value; each wait is bounded, none is fixed."""
    deadline = time.monotonic() + seconds
    while True:
        late = time.monotonic() > deadline
        value = condition()
        if value:
            return value
        if late:
            raise AssertionError(f"waited {seconds:g} s in vain for {what}")
        time.sleep(every)


def until(what, act, holds, pause=1.0):
    """Acts again where that came to nothing: a window takes keys and presses only a moment after it is there."""

    def acted():
        act()
        try:
            return wait_for(what, holds, pause)
        except AssertionError:
            return None

    return wait_for(what, acted, 20)


class Picture:
    """A part of the screen: rows of (red, green, blue)."""

    def __init__(self, x, y, width, height):
        raw = run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "-depth", "8", "rgb:-")
        assert len(raw) == width * height * 3, f"{len(raw)} bytes for {width} x {height}"
        self.width, self.height, self.raw = width, height, raw

    def pixels(self):
        raw = self.raw
        return zip(raw[0::3], raw[1::3], raw[2::3])

    def changed_box(self, other):
        """Left, top, right and bottom of what differs from the other picture, or none."""
        stride = 3 * self.width
        rows = [y for y in range(self.height) if self._row(y) != other._row(y)]
        if not rows:
            return None
        columns = set()
        for y in rows:
            mine, others = self._row(y), other._row(y)
            columns.update(at // 3 for at in range(stride) if mine[at] != others[at])
        return min(columns), rows[0], max(columns), rows[-1]

    def columns(self, predicate):
        """The first and the last column with a pixel of this kind, or none."""
        found = {at % self.width for at, pixel in enumerate(self.pixels()) if predicate(*pixel)}
        return (min(found), max(found)) if found else None

    def _row(self, y):
        return self.raw[3 * self.width * y : 3 * self.width * (y + 1)]

    def __eq__(self, other):
        return self.raw == other.raw

    def count(self, predicate):
        return sum(1 for pixel in self.pixels() if predicate(*pixel))


def panel():
    return Picture(0, 0, WIDTH, PANEL_HEIGHT)


def save(name, x=0, y=0, width=WIDTH, height=HEIGHT):
    """Keeps a picture for people to look at."""
    path = os.path.join(PICTURES, "-".join([HOST, *[CLIENT] * (CLIENT != "x11"), TONE, f"{name}.png"]))
    run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", path)


def twice_the_same(look, seconds=0.2):
    """What two looks a little apart agree on, or none: hosts draw some time after they were told."""
    first = look()
    time.sleep(seconds)
    return first if look() == first else None


def settled_panel():
    return wait_for("the panel to come to rest", lambda: twice_the_same(panel))


def is_red(red, green, blue):
    """As no text, panel or background is, but an item whose limit is critical."""
    return red > 150 and red - green > 90 and abs(green - blue) < 40


def item_columns(redden, restore):
    """The first and the last column of the item on the panel, told by its turning red."""
    is_shown = lambda: panel().count(is_red) > 30
    redden()
    try:
        wait_for("the item in red", is_shown, 30)
    except AssertionError:
        if not StatusItem().is_red():
            raise
        # A panel that has just started may miss a signal, once in some forty sessions.
        print("the item is red, and the panel does not show it; once more", file=sys.stderr)
        restore()
        redden()
        wait_for("the item in red", is_shown, 30)
    columns = settled_panel().columns(is_red)
    restore()
    wait_for("the item's usual colour", lambda: not panel().count(is_red))
    return columns


def click(x, y, button=LEFT):
    run("xdotool", "mousemove", str(x), str(y))
    time.sleep(0.1)  # some hosts take a press only after they noticed the pointer
    run("xdotool", "click", str(button))


def drag(x, y, to_x, to_y):
    run("xdotool", "mousemove", str(x), str(y), "mousedown", "1")
    for part in range(1, 11):
        run("xdotool", "mousemove", str(x + (to_x - x) * part // 10), str(y + (to_y - y) * part // 10))
        time.sleep(0.02)
    time.sleep(0.1)
    run("xdotool", "mouseup", "1")


def open_menu(x, y, button):
    """The box of what a click on the panel opens: left, top, right, bottom."""
    top = 0 if HOST == "waybar" else PANEL_HEIGHT  # waybar opens menus at the pointer, others below the panel
    move_away()
    before = Picture(0, top, WIDTH, MENU_HEIGHT)
    click(x, y, button)

    def box():
        changed = Picture(0, top, WIDTH, MENU_HEIGHT).changed_box(before)
        if not changed:
            return None
        left, upper, right, lower = changed
        # The pointer and what it lights up are smaller.
        return changed if right - left > 80 and lower - upper > 60 else None

    left, upper, right, lower = wait_for("the menu to open and rest", lambda: twice_the_same(box))
    return left, upper + top, right, lower + top


def key(name):
    run("xdotool", "key", name)


def move_away():
    run("xdotool", "mousemove", "200", "600")


def window_ids(name="Tokwatch", environment=None):
    command = ["xdotool", "search", "--onlyvisible", "--name", f"^{name}$"]
    # It fails where a window, whosever, went while it looked, and where there is none.
    for _ in range(50):
        found = subprocess.run(command, capture_output=True, text=True, env=environment)
        if not found.stderr:
            return found.stdout.split()
    raise AssertionError(f"no windows can be looked for: {found.stderr}")


def start_panel():
    run(os.environ["DESKTOP_PANEL"], "start")


def stop_panel():
    run(os.environ["DESKTOP_PANEL"], "stop")


def compositor_display(kind):
    """The compositor's own display, "wayland" or "x11", as its clients' environment names it."""
    with open(os.path.join(COMPOSITOR, f"{kind}-name"), encoding="ascii") as file:
        name = file.read().strip()
    return os.path.join(COMPOSITOR, name) if kind == "wayland" else name


def compositor_windows():
    """The leaves of the compositor's tree: workspaces hold containers hold windows."""

    def leaves(node):
        below = node["nodes"] + node["floating_nodes"]
        return [leaf for child in below for leaf in leaves(child)] if below else [node]

    socket = glob.glob(os.path.join(COMPOSITOR, "sway-ipc.*.sock"))[0]
    return leaves(json.loads(run("swaymsg", "-s", socket, "-t", "get_tree")))


def end_bus():
    """Ends the session's message bus, as when the desktop breaks down."""
    bus = dbus.SessionBus()
    bus.set_exit_on_disconnect(False)
    daemon = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus")
    process = int(daemon.GetConnectionUnixProcessID("org.freedesktop.DBus", dbus_interface="org.freedesktop.DBus"))
    os.kill(process, signal.SIGTERM)
    wait_for("the bus to end", lambda: not os.path.exists(f"/proc/{process}/exe"))


class StatusItem:
    """The one status item on the bus, as a host sees it."""

    def __init__(self, every=0.05):
        self.bus = dbus.SessionBus()
        self.service = wait_for("a status item on the bus", self._find, every=every)

    def _find(self):
        names = [str(n) for n in self.bus.list_names() if str(n).startswith("org.kde.StatusNotifierItem-")]
        return names[0] if names else None

    def _properties(self, path):
        return dbus.Interface(self.bus.get_object(self.service, path), "org.freedesktop.DBus.Properties")

    def get(self, name, seconds=25):
        return self._properties("/StatusNotifierItem").Get(ITEM, name, timeout=seconds)

    def call(self, method, x, y):
        dbus.Interface(self.bus.get_object(self.service, "/StatusNotifierItem"), ITEM).get_dbus_method(method)(x, y)

    @property
    def label(self):
        return str(self.get("XAyatanaLabel"))

    @property
    def tooltip(self):
        return str(self.get("ToolTip")[3])

    def picture_sizes(self):
        return [(int(width), int(height)) for width, height, _ in self.get("IconPixmap")]

    def is_red(self):
        """Whether it gives red pictures, whatever the panel makes of them."""
        for _, _, pixels in self.get("IconPixmap"):
            data = bytes(pixels)
            if any(data[at] > 200 and is_red(*data[at + 1:at + 4]) for at in range(0, len(data), 4)):
                return True
        return False

    def is_registered(self):
        try:
            watcher = dbus.Interface(
                self.bus.get_object(WATCHER, "/StatusNotifierWatcher"), "org.freedesktop.DBus.Properties"
            )
            items = watcher.Get(WATCHER, "RegisteredStatusNotifierItems")
            unique = str(self.bus.get_name_owner(self.service))
        except dbus.DBusException:
            return False
        return any(self.service in str(item) or unique in str(item) for item in items)


class Program:
    """A program under test whose output is read as it comes."""

    def __init__(self, *command, environment=None):
        self.output = tempfile.NamedTemporaryFile(mode="r", suffix=".out")
        with open(self.output.name, "w") as sink:
            self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=sink, text=True, env=environment)
        self.lines = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def say(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        self.hear("done")

    def hear(self, pattern, seconds=8.0):
        """Waits for the next line that matches the pattern; lines before it are skipped."""

        def next_match():
            self.lines += self.output.read().splitlines()
            while self.lines:
                line = self.lines.pop(0)
                if re.fullmatch(pattern, line):
                    return line
            return None

        return wait_for(f"the program to say {pattern!r}", next_match, seconds)

    def is_running(self):
        return self.process.poll() is None

    def end(self):
        if self.is_running():
            self.process.terminate()
        return self.process.wait(timeout=10)
