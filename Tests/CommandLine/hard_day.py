#!/usr/bin/env python3
"""hard_day.py PROGRAM DESKTOP: two minutes of what a machine does to the programs in a bad week.

A desktop application, two followers and a loop of commands share one store, while assistants stream responses line by
line, rotate and replace their logs. Programs are killed and stopped, the store is locked, its disk fills up and gets
room again, the clock is a year ahead for one start, the time zone changes. At the end the store equals that of one
undisturbed pass over the same logs, it is sound, and the services were asked as often as by one program alone. Exit
status 77 where the system does not allow the namespaces for it."""
import collections
import datetime
import json
import os
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time

from headless import DEADLINE, Network, World, check, codex_line, enter_namespaces, now, stop

DATA = "home/.local/share"
CLOCK_AHEAD = {"LD_PRELOAD": "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1", "FAKETIME": "+400d",
               "DONT_FAKE_MONOTONIC": "1"}


class Assistant(threading.Thread):
    """Writes a log as an assistant does: a line for each step of a response, the last one with the final count."""

    def __init__(self, world, seed, pause):
        super().__init__(daemon=True)
        self.random, self.pause, self.ended = random.Random(seed), pause, threading.Event()
        self.directory, self.name = world.path("home/.claude/projects/p%d" % seed), "log%d" % seed
        os.makedirs(self.directory)

    def run(self):
        number = 0
        while not self.ended.is_set():
            self.pause.acquire()
            number += 1
            self.respond("%s-%d" % (self.name, number))
            if number % 5 == 0:
                self.move(number)
            self.pause.release()
            time.sleep(0.05)

    def path(self, suffix=""):
        return os.path.join(self.directory, self.name + suffix + ".jsonl")

    def respond(self, message):
        final, steps = self.random.randint(50, 5000), self.random.randint(1, 5)
        for step in range(1, steps + 1):
            output = final if step == steps else self.random.choice([1, final * step // steps])
            with open(self.path(), "a", encoding="utf-8") as file:
                file.write(json.dumps({"type": "assistant", "timestamp": now(), "sessionId": self.name, "message": {
                    "id": message, "model": "claude-opus-4-1", "stop_reason": "end_turn" if step == steps else None,
                    "usage": {"input_tokens": 10, "output_tokens": output}}}) + "\n")
            if step < steps:
                time.sleep(self.random.uniform(0.2, 3))

    def move(self, number):
        if number % 2:
            os.rename(self.path(), self.path("-%d" % number))
        else:
            shutil.copy(self.path(), self.path() + ".new")
            os.replace(self.path() + ".new", self.path())


class Day:
    def __init__(self, world, desktop):
        self.world, self.desktop_program = world, desktop
        self.programs, self.failures, self.over = {}, [], threading.Event()

    def begin(self, name, **extra):
        environment = {**self.world.environment, "QT_QPA_PLATFORM": "offscreen", **extra}
        command = [self.desktop_program] if name == "desktop" else [self.world.program, "status", "--follow"]
        self.programs[name] = self.world.start(command, environment)

    def kill(self, name):
        self.programs[name].kill()
        self.programs.pop(name).wait(DEADLINE)

    def commands(self):
        """What scripts and bars start all day; every answer must be a clean one."""
        choice = random.Random(1)
        while not self.over.is_set():
            command = choice.choice([["summary"], ["summary", "--no-index"], ["index"], ["limits"], ["status"],
                                     ["snapshot"]])
            status = self.world.run(*command)
            if status not in (0, 1):
                self.failures.append((command, status))
            time.sleep(0.3)

    def store(self):
        return self.world.path(DATA + "/Tokwatch/usage.sqlite")

    def lock_store(self, seconds):
        with sqlite3.connect(self.store(), timeout=10, isolation_level=None) as database:
            database.execute("BEGIN IMMEDIATE")
            time.sleep(seconds)
            database.execute("ROLLBACK")
        database.close()

    def fill_disk(self, seconds):
        filler = self.world.path(DATA + "/filler")
        with open(filler, "wb", buffering=0) as file:
            try:
                while True:
                    file.write(b"x" * 4096)
            except OSError:
                pass
        time.sleep(seconds)
        os.remove(filler)


def contents(path):
    database = sqlite3.connect("file:%s?mode=ro" % path, uri=True)
    sound = database.execute("PRAGMA integrity_check").fetchone()[0]
    tables = {table: sorted(database.execute(query)) for table, query in (
        ("daily", "SELECT * FROM daily"), ("seen", "SELECT * FROM seen"), ("sessions", "SELECT * FROM sessions"))}
    database.close()
    return sound, tables


def overlay_system_settings(directory):
    """Changes below /etc stay in this mount namespace."""
    layer = os.path.join(directory, "etc")
    os.makedirs(layer)
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", layer], check=True)
    for part in ("changes", "work"):
        os.makedirs(os.path.join(layer, part))
    subprocess.run(["mount", "-t", "overlay", "overlay", "-o",
                    "lowerdir=/etc,upperdir=%s/changes,workdir=%s/work" % (layer, layer), "/etc"], check=True)
    set_zone("UTC")


def set_zone(zone):
    """As a desktop's settings do."""
    os.symlink("/usr/share/zoneinfo/" + zone, "/etc/localtime.new")
    os.replace("/etc/localtime.new", "/etc/localtime")


def other_zone():
    """A zone in which it is today now, too, and a moment whose day there is another than in UTC."""
    midnight = datetime.datetime.now(datetime.timezone.utc).replace(hour=0, minute=0, second=0)
    east = datetime.datetime.now(datetime.timezone.utc).hour < 12
    moment = midnight + datetime.timedelta(hours=-2 if east else 2)
    day = (moment + datetime.timedelta(hours=9 if east else -8)).strftime("%Y-%m-%d")
    return "Etc/GMT-9" if east else "Etc/GMT+8", moment.strftime("%Y-%m-%dT%H:%M:%SZ"), day


def live(day, network):
    world, pause = day.world, threading.Lock()
    long_ago = datetime.datetime.now(datetime.timezone.utc) - datetime.timedelta(days=60)
    world.write("home/.codex/sessions/2026/old.jsonl", codex_line("old", long_ago.strftime("%Y-%m-%dT%H:%M:%SZ")))
    assistants = [Assistant(world, seed, threading.Semaphore(1)) for seed in range(4)]
    for each in assistants:
        each.start()
    day.begin("desktop")
    for name in ("one", "two"):
        day.begin(name)
    commands = threading.Thread(target=day.commands, daemon=True)
    commands.start()
    time.sleep(12)
    for name in ("desktop", "one", "two", "desktop"):
        day.kill(name)
        time.sleep(4)
        day.begin(name)
    day.lock_store(8)
    time.sleep(3)
    day.programs["desktop"].send_signal(signal.SIGSTOP)
    time.sleep(6)
    day.programs["desktop"].send_signal(signal.SIGCONT)
    day.fill_disk(10)
    time.sleep(15)
    check("the services were asked once", asked(network) == {"api.anthropic.com": 1, "chatgpt.com": 1}, asked(network))

    for each in assistants:
        each.pause.acquire()  # between two responses
    for name in list(day.programs):
        day.kill(name)
    day.begin("ahead", **CLOCK_AHEAD)
    time.sleep(8)
    day.kill("ahead")
    for name in ("one", "two", "desktop"):
        day.begin(name)
    for each in assistants:
        each.pause.release()
    time.sleep(8)
    expected = asked(network)
    check("once more by each of the two clocks", max(expected.values()) <= 3, expected)

    zone, moment, there = other_zone()
    set_zone(zone)
    world.write("home/.codex/sessions/2026/zone.jsonl", codex_line("zone", moment))
    world.run("refresh")
    time.sleep(20)
    world.run("limits", "--refresh")
    world.run("limits", "--refresh")
    again = asked(network)
    check("a retry asks once", all(again[host] - expected[host] <= 1 for host in expected), (expected, again))
    for each in assistants:
        each.ended.set()
        each.join(DEADLINE)
    day.over.set()
    commands.join(DEADLINE)
    check("every command ended cleanly", not day.failures, day.failures)
    return there


def asked(network):
    return collections.Counter(re.search(r"^host: *([\w.]+)", request, re.M | re.I).group(1)
                               for request in network.requests)


def show(world, network, desktop):
    del world.environment["TZ"]  # the system's zone is the one that changes
    world.plant_logins()
    world.write("home/.config/Tokwatch/Tokwatch.conf", "[General]\nhasCompletedOnboarding=true\n")
    os.makedirs(world.path(DATA))
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=24m,mode=700", "tmpfs", world.path(DATA)], check=True)
    day = Day(world, desktop)
    there = live(day, network)

    check("one undisturbed pass", world.run("index", "--data-dir", world.path("fresh")) == 0)
    expected = contents(world.path("fresh/Tokwatch/usage.sqlite"))[1]
    deadline = time.monotonic() + DEADLINE
    while contents(day.store())[1] != expected and time.monotonic() < deadline:
        time.sleep(0.5)  # the last lines are on their way through the watch
    for process in day.programs.values():
        stop(process)
    sound, found = contents(day.store())
    check("the database is sound", sound == "ok", sound)
    for table, rows in expected.items():
        check("%s: %d rows as after one pass" % (table, len(rows)), found[table] == rows,
              [row for row in set(found[table]) ^ set(rows)][:4])
    check("the changed zone's days count", ("zone", there) in found["seen"], there)


def main():
    program, desktop = enter_namespaces(__file__)
    with tempfile.TemporaryDirectory() as directory:
        try:
            overlay_system_settings(directory)
        except subprocess.CalledProcessError as error:
            print("skipped: this system allows no settings of its own:", error)
            sys.exit(77)
        network = Network(directory)
        world = World(program, directory)
        try:
            show(world, network, desktop)
        finally:
            world.end()
            for mount in (world.path(DATA), "/etc/ssl/certs", "/etc/resolv.conf", "/etc", world.path("etc")):
                subprocess.run(["umount", "--lazy", mount], check=False)


if __name__ == "__main__":
    main()
