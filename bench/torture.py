#!/usr/bin/env python3
"""torture.py BUILD [--minutes 2] [--kills 1000] [--seed S] [--only NAME …] [--list]: does anything get lost when the
programs are killed time and again, and all that a machine can do to them is done?

Assistants write logs and keep an account of each response that they finished. A desktop application, two followers, an
exporter and all kinds of commands live on one store of these, are killed at random moments by SIGKILL and started again,
while one trouble after the other comes over them (--list). After each, the store must equal the account and one
undisturbed pass of the same logs, the databases must be sound, and what was exported must add up to the same. No counter
may ever have fallen, no program may have ended by itself in any other way than with the status 0 or 1, taken more than
64 MB (96 with windows), or repeated itself in its log. The first thing that differs ends it with 1.

Everything happens in namespaces of its own, which the programs and mounts vanish with, however it ends. Troubles that the
system does not allow are told as skipped. The same seed does the same things; when they happen is up to the machine."""
import argparse
import contextlib
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import system_settings
from day import DATA, Day, make_world
from headless import Network, in_namespaces
from troubles import NEED_A_REFRESH, TROUBLES, Skipped, memory_group, start_bus


def inflict(day, options):
    """Each trouble once, or again and again until the time is over."""
    names, end = options.only or list(TROUBLES), time.monotonic() + options.minutes * 60
    while time.monotonic() < end and names:
        for name in sorted(names, key=lambda name: (name != "kills", day.random.random())):
            if time.monotonic() >= end:
                break
            try:
                TROUBLES[name](day)
                day.settle(name, name not in NEED_A_REFRESH)
                day.done[name] += 1
            except Skipped as reason:
                print("skipped: %s: %s" % (name, reason), flush=True)
                names = [other for other in names if other != name]
    missed = [name for name in names if not day.done[name]]
    if missed:
        print("not done, for want of time: " + ", ".join(missed))


def report(day, begin):
    counts, crew = day.crew.counts, day.crew
    print("%d kills, %d commands, %d passes that ended, %d exports, %d responses, %d troubles in %.1f minutes" % (
        counts["kills"], counts["commands"], counts["passes"], day.exports.count, len(day.account.responses),
        sum(day.done.values()), (time.monotonic() - begin) / 60))
    print("troubles: " + ", ".join("%s %d" % each for each in sorted(day.done.items())))
    print("read: " + ", ".join("%s %d" % each for each in day.settled.items()))
    print("MB resident at most: " + ", ".join("%s %.0f" % each for each in sorted(
        crew.peaks.items(), key=lambda item: -item[1])[:8]))
    print("ended for want of descriptors: %d" % counts["excused"])
    print("said most often: " + "; ".join("%d times %s" % (times, line[:150]) for line, times in crew.lines.most_common(5)))


def torture(options, directory):
    program, desktop = (os.path.join(os.path.realpath(options.build), "bin", name) for name in ("tokwatch", "tokwatch-desktop"))
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/dev/shm"], check=True)  # where the clock's library leaves things
    try:
        system_settings.overlay(directory)
    except subprocess.CalledProcessError as error:
        print("skipped: everything: this system allows no settings of its own:", error)
        return 77
    Network(directory)
    world = make_world(program, directory, "unix:path=" + os.path.join(directory, "bus"))
    world.plant_logins()
    os.makedirs(world.path(DATA))
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64m,mode=700", "tmpfs", world.path(DATA)], check=True)
    troubles, rounds = len(options.only or TROUBLES), max(1, round(options.minutes / 3))
    day = Day(world, desktop, options, max(2, options.minutes * 60 / troubles / rounds - 5))
    day.bus, begin = start_bus(world), time.monotonic()
    day.begin()
    try:
        inflict(day, options)
        day.end()
    finally:
        report(day, begin)
    return 0


def end_by_signal(number, _):
    sys.exit(128 + number)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--minutes", type=float, default=2, help="how long, 2 where absent")
    parser.add_argument("--kills", type=int, default=1000, help="how many at most")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10 ** 6))
    parser.add_argument("--only", nargs="+", choices=TROUBLES, metavar="NAME", help="these troubles alone")
    parser.add_argument("--list", action="store_true", help="tells the troubles, and does nothing")
    parser.add_argument("--inside", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.list:
        for name, trouble in TROUBLES.items():
            print("%-12s %s" % (name, trouble.__doc__))
        return 0
    if options.inside:
        signal.signal(signal.SIGINT, signal.SIG_IGN)  # the process outside ends this one
        return torture(options, options.inside)
    print("seed %d" % options.seed, flush=True)
    signal.signal(signal.SIGTERM, end_by_signal)
    directory = tempfile.mkdtemp(prefix="tokwatch-torture-")
    again = [sys.executable, os.path.realpath(__file__), *sys.argv[1:], "--seed", str(options.seed), "--inside", directory]
    try:
        return in_namespaces(again, "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc")
    except KeyboardInterrupt:
        return 130
    finally:
        clean_up(directory)


def clean_up(directory):
    group, end = memory_group(directory)[0], time.monotonic() + 5
    while os.path.exists(group) and time.monotonic() < end:
        with contextlib.suppress(OSError):  # its processes are on their way out
            os.rmdir(group)
        time.sleep(.05)
    shutil.rmtree(directory, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
