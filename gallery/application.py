"""The whole application on the desktop of script/desktop-session: starts it, finds its windows, reads and presses what a
screen reader would. The first argument of the script that uses this is tokwatch-desktop, with tokwatch beside it.
"""

import json
import os
import re
import subprocess
import sys
import time
from datetime import datetime, timezone

import desktop
from desktop import wait_for

PROGRAM = sys.argv[1]
COMMAND = os.path.join(os.path.dirname(PROGRAM), "tokwatch")
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
HOME = os.path.join(os.environ["HOME"], "demo")
RESET = int(time.time()) + 9000

# The session keeps accessibility from the panel, which it slows down.
os.environ.pop("NO_AT_BRIDGE", None)
os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"


def tokwatch(*arguments):
    return subprocess.run([COMMAND, *arguments], check=True, capture_output=True, text=True).stdout


def preference(key):
    return tokwatch("preferences", "get", key).strip()


class Application:
    def __init__(self, environment=None):
        self.environment = environment
        self.errors = open(os.path.join(os.environ["HOME"], "errors"), "w")
        self.start()

    def start(self):
        self.process = subprocess.Popen([PROGRAM, "--home", HOME], stderr=self.errors, env=self.environment)

    def restart(self):
        self.end()
        self.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()
        print(self.complaints(), file=sys.stderr)

    def is_running(self):
        return self.process.poll() is None

    def complaints(self):
        # Not by the program's own description of the file, whose place in it is where the program writes.
        with open(self.errors.name, encoding="utf-8") as file:
            return file.read()

    def end(self):
        self.process.terminate()
        status = self.process.wait(timeout=10)
        assert status == 0, f"a signal ended it with {status}: {self.complaints()}"


def windows(name="Tokwatch", environment=None):
    found = desktop.window_ids(name, environment)
    return [window for window in found if geometry(window, environment).get("WIDTH", 0) > 10]


def geometry(window, environment=None):
    """On the screen, without what a window manager puts around it; empty where the window has gone."""
    told = subprocess.run(["xwininfo", "-id", window], capture_output=True, text=True, env=environment).stdout
    found = re.findall(r"^ *(?:Absolute upper-left )?(X|Y|Width|Height): +(-?\d+)$", told, re.MULTILINE)
    return {key.upper(): int(value) for key, value in found}


def accessible(*arguments, application="Tokwatch"):
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "accessible.py")
    return subprocess.run([script, application, *arguments], capture_output=True, text=True, timeout=20)


def names(application="Tokwatch"):
    """What a screen reader would read."""
    return [line.partition("\t")[2] for line in accessible("list", application=application).stdout.splitlines()]


def press(name):
    pressing = lambda: accessible("press", name)
    try:
        wait_for(f"{name!r} to press", lambda: pressing().returncode == 0)
    except AssertionError:
        print(pressing().stderr, names(), file=sys.stderr)
        raise


def set_thresholds(warning, critical):
    tokwatch("preferences", "set", "warningThreshold", str(warning))
    tokwatch("preferences", "set", "criticalThreshold", str(critical))


def find_item():
    """The middle of the item on the panel."""
    try:
        left, right = desktop.item_columns(lambda: set_thresholds(1, 0.95), lambda: set_thresholds(0.25, 0.1))
    except AssertionError:
        print(tokwatch("status", "--format", "json", "--home", HOME), tokwatch("preferences", "list"), file=sys.stderr)
        raise
    return (left + right) // 2, desktop.PANEL_HEIGHT // 2 - 1


def report_limits(session, weekly):
    """What Codex writes as it learns that so many percent are used."""
    limits = {"primary": {"used_percent": session, "window_minutes": 300, "resets_at": RESET},
              "secondary": {"used_percent": weekly, "window_minutes": 10080, "resets_at": RESET + 400000}}
    with open(os.path.join(HOME, ".codex/sessions/now.jsonl"), "a", encoding="utf-8") as file:
        # To the millisecond: of two reports in one second the second is no newer otherwise.
        moment = datetime.now(timezone.utc).isoformat(timespec="milliseconds")
        file.write(json.dumps({"timestamp": moment, "type": "event_msg",
                               "payload": {"type": "token_count", "rate_limits": limits}}) + "\n")


def set_notifications(settings):
    path = os.path.join(os.environ["XDG_CONFIG_HOME"], "Tokwatch/Notifications.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write(settings)


def prepare():
    """A home with something to show, its usage stored. Its limits are of this minute: older ones fade."""
    subprocess.run([os.path.join(ROOT, "script/demo-home"), "--quiet", HOME], check=True)
    report_limits(40, 20)
    tokwatch("index", "--home", HOME)
    tokwatch("preferences", "set", "pinnedProvider", "codex")
    # Nothing comes between the pointer and what is looked for.
    set_notifications("usedUp=false\ncritical=false\n")
