#!/usr/bin/env python3
"""statusline.py PROGRAM: plays Claude Code, which runs PROGRAM for its status line, beside a running application.

Shows that the program loads nothing of the toolkit, asks nobody, prints a line also where the pipe stays open, and that
a follower without any login shows what the assistant told of its limits."""
import json
import os
import subprocess
import sys
import tempfile
import time

PROGRAM = os.path.abspath(sys.argv[1])
NOTICED = 30  # seconds within which an application is to show what was told


def check(what, holds, details=""):
    if not holds:
        sys.exit("FAILED: %s %s" % (what, details))
    print("ok: " + what)


def told(percent):
    return json.dumps({"model": {"id": "claude-opus-4-5", "display_name": "Opus 4.5"}, "cost": {"total_cost_usd": 0.5},
                       "context_window": {"used_percentage": 41.9},
                       "rate_limits": {"five_hour": {"used_percentage": percent, "resets_at": int(time.time()) + 7230},
                                       "seven_day": None}})


def show_open_pipe(world):
    known = "Session 42% left (2h 0m)\n"
    for text, expected in (("", "Tokwatch\n"), (told(58), "Opus 4.5 · context 41% · $0.50 · " + known),
                           ('{"model":', "Tokwatch · " + known)):
        # Written before the program starts, whose patience with the pipe is half a second.
        pipe, told_by = os.pipe()
        os.write(told_by, text.encode())
        line = subprocess.run([PROGRAM, "statusline"], env={**world, "NO_COLOR": "1"}, text=True, stdin=pipe,
                              stdout=subprocess.PIPE, timeout=NOTICED, check=False).stdout
        check("a line comes though the pipe stays open", line == expected, line)
        os.close(told_by)
        os.close(pipe)


def libraries(program):
    needed = subprocess.check_output(["readelf", "-d", program], text=True)
    return {line.split("[")[1].rstrip("]\n") for line in needed.splitlines() if "(NEEDED)" in line}


def show_surroundings(world):
    names = libraries(PROGRAM)
    # Under the sanitizers a folder is one object, which brings what its other sources need.
    if not any("san.so" in name for name in names):
        check("only the system's own libraries are loaded", all(
            name.startswith(("libc.", "libm.", "ld-linux", "libstdc++", "libgcc_s")) for name in names), names)
        names = libraries(PROGRAM + "-logs")
        check("and none of the toolkit to read logs", not any(name.startswith("libQt") for name in names), names)
    trace = os.path.join(world["HOME"], "trace")
    subprocess.run(["strace", "-f", "-qq", "-e", "trace=network,openat", "-o", trace, PROGRAM, "statusline"], env={
        **world, "ASAN_OPTIONS": "detect_leaks=0"}, input=told(58).encode(), stdout=subprocess.DEVNULL, check=True)
    with open(trace, encoding="utf-8", errors="replace") as file:
        calls = [call for call in file if "openat" not in call or "credentials" in call]
    check("nobody is asked and no login is read", not [call for call in calls if "exited" not in call], calls)


def show_follower(world):
    with subprocess.Popen([PROGRAM, "status", "--follow"], env=world, stdout=subprocess.PIPE, text=True) as follower:
        def shown(start, what):
            deadline, line = time.monotonic() + NOTICED, ""
            while not line.startswith(start) and time.monotonic() < deadline:
                line = follower.stdout.readline()
            check(what, line.startswith(start), line)

        line = follower.stdout.readline()
        check("the application shows at first what was told before", line.startswith("42% · "), line)
        subprocess.run([PROGRAM, "statusline"], env=world, input=told(77), text=True, stdout=subprocess.DEVNULL, check=True)
        shown("23% · ", "and what is told while it runs")
        follower.terminate()


with tempfile.TemporaryDirectory() as home:
    surroundings = {"PATH": "/usr/bin:/bin", "TZ": "UTC", "HOME": home,
                    "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
    os.makedirs(os.path.join(home, ".claude/projects"))
    show_open_pipe(surroundings)
    show_surroundings(surroundings)
    show_follower(surroundings)
