#!/usr/bin/python3
"""Notifications on a real desktop, read back from the service that shows them. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/notifications_test.py PROGRAM

where PROGRAM is tokwatch-desktop, with tokwatch beside it. The service is dunst, which keeps a history.
"""

import json
import os
import signal
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from application import COMMAND, HOME, Application, prepare, report_limits, set_notifications, tokwatch, windows
from desktop import StatusItem, step, wait_for


def dunst(*command):
    return subprocess.run(["dunstctl", *command], check=True, capture_output=True, text=True).stdout


def shown():
    return int(dunst("count", "displayed"))


def take():
    """The titles of what was shown so far and not replaced, the last first."""
    dunst("close-all")
    wait_for("the end of what is shown", lambda: shown() == 0)
    return [entry["summary"]["data"] for entry in json.loads(dunst("history"))["data"][0]]


def finding():
    run = subprocess.run([COMMAND, "doctor", "--json", "--home", HOME], capture_output=True, text=True)
    return next(each["text"] for each in json.loads(run.stdout) if each["topic"] == "Notifications")


def test_first_start():
    step("tells what is critical, replaces it by what is graver, and opens at a click")
    with Application(), desktop.Program("dbus-monitor", "member='Notify'") as monitor:
        monitor.hear(".*member=NameLost", 20)  # from here on it hears what others are sent
        wait_for("the registration", StatusItem().is_registered, 30)
        report_limits(92, 20)
        wait_for("the notification", lambda: shown() == 1, 20)
        desktop.save("notification")
        report_limits(100, 20)
        monitor.hear(".*is used up.*", 20)  # which the service is told before what follows
        dunst("action")
        wait_for("the popover", windows)
        assert take() == ["Codex · Session is used up"], take()


def test_second_start(service):
    step("tells nothing twice, and does not wait for a service that was started anew and hangs")
    with Application():
        item = StatusItem()
        wait_for("the registration", item.is_registered, 30)
        report_limits(100, 95)
        wait_for("the notification", lambda: shown() == 1, 20)
        assert take() == ["Codex · Weekly 5% left", "Codex · Session is used up"], take()
        service.end()
        with running_service() as another:
            another.process.send_signal(signal.SIGSTOP)
            report_limits(100, 100)
            wait_for("what was told", lambda: '"weekly","kind":"usedUp"' in noted(), 20)
            assert item.label is not None and finding() == "the service that shows them does not answer"
            another.process.send_signal(signal.SIGCONT)
            wait_for("it to be shown late", lambda: shown() == 1)


def running_service():
    service = desktop.Program("dunst")
    wait_for("the service", lambda: finding() == "dunst shows them")
    return service


def noted():
    with open(os.path.join(os.environ["XDG_DATA_HOME"], "Tokwatch/alerts.json"), encoding="utf-8") as file:
        return file.read()


prepare()
set_notifications("")
tokwatch("preferences", "set", "hasCompletedOnboarding", "true")
with running_service() as service:
    test_first_start()
    test_second_start(service)
