"""A day in the life of a store, as bench/torture.py makes it: who writes, who reads, and how it must come out."""
import collections
import contextlib
import json
import os
import random
import shutil
import sqlite3
import sys
import time

from assistants import Account, between_responses, team
from crew import PATIENCE, Background, Crew, Exports

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Tests/CommandLine"))
from headless import World, check

DATA = "home/.local/share"
STATE = DATA + "/Tokwatch"


def make_world(program, directory, bus_address):
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus_address
    os.chmod(directory, 0o711)
    world = World(program, directory)
    del world.environment["TZ"]  # the system's zone is the one that changes
    world.environment.update(QT_QPA_PLATFORM="offscreen", QT_QUICK_BACKEND="software", XDG_RUNTIME_DIR=world.path("tmp"))
    os.chmod(world.path("tmp"), 0o700)
    world.write("home/.config/Tokwatch/Tokwatch.conf", "[General]\nhasCompletedOnboarding=true\n")
    world.write("prompt.json", json.dumps({"session_id": "s", "model": {"display_name": "Opus"}, "rate_limits": {
        "five_hour": {"used_percentage": 23.5, "resets_at": int(time.time()) + 9000}}}))
    return world


class Day:
    """The world, who lives in it, and what one trouble may take: `share` seconds."""

    def __init__(self, world, desktop, options, share):
        self.world, self.share, self.random = world, share, random.Random(options.seed)
        self.account, self.is_long, self.settled = Account(), options.minutes >= 20, collections.Counter()
        self.crew = Crew(world, desktop, options.seed, options.kills)
        self.exports = Exports(self.crew)
        self.assistants = team(world.path("home"), self.account, options.seed)
        self.options, self.big, self.bus, self.done = options, None, None, collections.Counter()

    def begin(self):
        for each in self.assistants:
            each.start()

    def end(self):
        for each in self.assistants:
            each.ended.set()
        for each in self.assistants:
            each.join(PATIENCE)
        self.crew.end()

    def nap(self, part=1.0):
        time.sleep(self.share * part)

    @contextlib.contextmanager
    def killing(self):
        killers = [Background(self.crew.turn), Background(self.exports.again)]
        try:
            yield
        finally:
            for each in killers:
                each.end()

    def still_differs(self):
        """What the store has else than the account, in words; empty when nothing."""
        try:
            sound, found = stored(self.world.path(STATE + "/usage.sqlite"))
        except sqlite3.OperationalError as error:
            return str(error)
        return difference(found, self.account.tables()) if sound == "ok" else sound

    def wait_for_store(self, seconds=PATIENCE):
        end = time.monotonic() + seconds
        while self.still_differs() and time.monotonic() < end:
            time.sleep(.1)
        return not self.still_differs()

    def catch_up(self, what, by_themselves):
        """Once nobody writes and nobody kills, the store has all of the account."""
        with self.crew.lock:
            self.crew.reap()
            self.crew.tend()
        for how, act in (("by themselves", lambda: None), ("after a refresh", lambda: self.crew.run("refresh")),
                         ("after a pass", lambda: self.crew.run("index"))):
            act()
            if self.wait_for_store(PATIENCE if how == "after a pass" or by_themselves else PATIENCE / 3):
                self.settled[how] += 1
                print("ok: %s: %d responses are stored, each once, %s" % (what, len(self.account.responses), how), flush=True)
                return
            if by_themselves:
                break
        check(what + ": the store is the account", False, self.still_differs())

    def settle(self, what, by_themselves=True):
        with between_responses(self.assistants):
            check(what + ": the assistants are well", not [each.failure for each in self.assistants if each.failure],
                  [each.failure for each in self.assistants])
            self.catch_up(what, by_themselves)
            self.compare(what)
        with self.crew.lock:
            self.crew.reap()
            check(what + ": every program ended well, was small and quiet, no counter fell", not self.crew.faults,
                  "\n".join(self.crew.faults[:5]))

    def compare(self, what):
        check(what + ": an export is made", self.exports.take())
        counted = sum(sum(row[3:8]) for row in self.account.tables()["daily"])
        check(what + ": %d tokens are exported" % counted, self.exports.tokens() == counted, self.exports.tokens())
        fresh = self.world.path("fresh")
        shutil.rmtree(fresh, ignore_errors=True)
        wrap, self.crew.wrap = self.crew.wrap, lambda: []
        check(what + ": one undisturbed pass", self.crew.run("index", "--data-dir", fresh) == 0)
        self.crew.wrap = wrap
        found = stored(fresh + "/Tokwatch/usage.sqlite")[1]
        expected = self.account.tables(with_gone=False, zone_counts=False)
        check(what + ": it finds the same", not difference(found, expected), difference(found, expected))
        for name in ("history", "counts"):
            with contextlib.closing(sqlite3.connect("file:%s?mode=ro" % self.world.path(STATE + "/%s.sqlite" % name),
                                                    uri=True, timeout=PATIENCE)) as database:
                sound = database.execute("PRAGMA integrity_check").fetchone()[0]
            check("%s: %s.sqlite is sound" % (what, name), sound == "ok", sound)


def stored(path):
    """Whether a store is sound, and its tables as an account has them."""
    with contextlib.closing(sqlite3.connect("file:%s?mode=ro" % path, uri=True)) as database:
        sound = database.execute("PRAGMA integrity_check").fetchone()[0]
        tables = {table: sorted(database.execute(query)) for table, query in (
            ("daily", "SELECT * FROM daily"), ("seen", "SELECT * FROM seen"), ("sessions", "SELECT * FROM sessions"))}
    tables["daily"] = [(*row[:-1], row[-1] if row[-1] is None else round(row[-1], 6)) for row in tables["daily"]]
    return sound, tables


def difference(found, expected):
    for table, rows in expected.items():
        extra, missing = set(found[table]) - set(rows), set(rows) - set(found[table])
        if extra or missing or len(found[table]) != len(rows):
            return "%s has %d rows of %d: not %s, but %s" % (
                table, len(found[table]), len(rows), sorted(missing, key=str)[:3], sorted(extra, key=str)[:3])
    return ""
