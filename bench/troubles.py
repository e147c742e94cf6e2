"""What bench/torture.py does to the programs: each trouble begins and ends by itself, while a `Day` goes on."""
import calendar
import contextlib
import os
import random
import resource
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time

from assistants import MODEL, Account, Assistant, Claude, Response, between_responses, claude_line
from crew import LONGEST_STOP, MOST_MEMORY, PATIENCE
from day import DATA, STATE, Day, check, difference, make_world, stored
from headless import codex_line
from make_home import filler
from system_settings import other_zone, set_zone

KINDS = ("input_tokens", "cache_read_input_tokens", "output_tokens")
STARTED = 10  # files that are open at least once a program has its event loop
# That ends a process that may open no file when a thread begins; nothing of ours could.
TOOLKITS_END = "Creating pipes for GWakeup"
FAKETIME = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1"


class Skipped(Exception):
    """Why a trouble cannot be made here."""


def kills(day):
    """nothing but SIGKILL at random moments"""
    with day.killing():
        day.nap()


def full_disk(day):
    """the disk of the store fills up to the last byte, and gets room again"""
    path = day.world.path(DATA + "/filler")
    with day.killing():
        with open(path, "wb", buffering=0) as file, contextlib.suppress(OSError):
            while True:
                file.write(b"x" * 65536)
        with open(path, "ab", buffering=0) as file, contextlib.suppress(OSError):
            while True:
                file.write(b"x" * 512)
        day.nap(.7)
        os.remove(path)
        day.nap(.3)


def read_only(day):
    """the store's disk is read-only when the programs start, and writable again while they run"""
    day.crew.end()
    subprocess.run(["mount", "-o", "remount,ro", day.world.path(DATA)], check=True)
    try:
        with day.killing():
            day.nap(.7)
            subprocess.run(["mount", "-o", "remount,rw", day.world.path(DATA)], check=True)
            day.nap(.3)
    finally:
        subprocess.run(["mount", "-o", "remount,rw", day.world.path(DATA)], check=True)


def lock(day):
    """another program holds the store's lock, longer than ours are patient"""
    with day.killing():
        day.nap(.1)
        with contextlib.closing(sqlite3.connect(day.world.path(STATE + "/usage.sqlite"), timeout=PATIENCE,
                                                isolation_level=None)) as database:
            database.execute("BEGIN IMMEDIATE")
            time.sleep(max(8, day.share * .6))
            database.execute("ROLLBACK")
        day.nap(.2)


def files(day):
    """logs are renamed, replaced, torn and cut under the reader"""
    claude = [each for each in day.assistants if isinstance(each, Claude)]
    for each in claude:
        each.moving = True
    with day.killing():
        day.nap()
    for each in claude:
        each.moving = False
    with between_responses(day.assistants):
        day.catch_up("files", True)
        for log in {each.log for each in claude}:
            log.cut(day.account)
        # What grows beyond where it was cut before anybody looks is not seen to have been cut.
        check("files: a pass sees the cut", day.crew.run("index") == 0)


def clock(day):
    """the machine's clock goes a day ahead, and back, under running programs"""
    if not os.path.exists(FAKETIME):
        raise Skipped("there is no libfaketime")
    set_clock(day, 0)
    day.crew.end()
    day.crew.extra = {"LD_PRELOAD": FAKETIME, "FAKETIME_TIMESTAMP_FILE": day.world.path("clock"),
                      "FAKETIME_CACHE_DURATION": "1", "DONT_FAKE_MONOTONIC": "1"}
    for ahead in (86400, 0):
        with day.killing():
            day.nap(.3)
        with between_responses(day.assistants):
            day.catch_up("clock, before %+d s" % ahead, True)
            set_clock(day, ahead)
    with day.killing():
        day.nap(.4)
    day.crew.end()
    day.crew.extra = {}


def set_clock(day, ahead):
    day.world.write("clock", "%+d\n" % ahead)
    Assistant.ahead = ahead
    time.sleep(2.1)  # as long as a program may believe in the clock of before: the library counts whole seconds


def descriptors(day):
    """programs that may open hardly any file, from their start or all of a sudden"""
    day.crew.may_end = "Too many open files"
    day.crew.wrap = lambda: ["prlimit", "--nofile=%d" % day.crew.random.randrange(5, 26), "--"]
    with day.killing():
        day.nap(.5)
    day.crew.wrap = lambda: []
    day.crew.end()
    day.crew.may_abort = TOOLKITS_END
    with day.killing():
        day.nap(.1)
        with day.crew.lock:
            present = {each.process.pid: len(os.listdir("/proc/%d/fd" % each.process.pid))
                       for each in day.crew.residents.values() if each.process.poll() is None}
            limited = [pid for pid, count in present.items() if count >= STARTED]
            for pid in limited:
                resource.prlimit(pid, resource.RLIMIT_NOFILE, (present[pid] + day.random.randrange(2), 4096))
        day.nap(.3)
        for pid in limited:
            with contextlib.suppress(ProcessLookupError):
                resource.prlimit(pid, resource.RLIMIT_NOFILE, (1024, 4096))
        day.nap(.1)
    with day.crew.lock:
        day.crew.end()
    day.crew.may_end = day.crew.may_abort = None


def big_home(day, directory, megabytes, count):
    """Logs of that size, most of it output of tools, and their account."""
    account, text, rng = Account(), filler(random.Random(1), 100000), random.Random(1)
    for number in range(count):
        lines, size, session = [], 0, "big-%d" % number
        while size < megabytes * 1e6 / count:
            key, moment = "msg_big_%d_%d" % (number, len(lines)), time.time() - rng.randrange(86400)
            counts = [rng.randrange(4000), rng.randrange(90000), rng.randrange(1, 3000)]
            lines += ['{"type":"user","message":{"content":"%s"}}\n' % text[:rng.randrange(4000, len(text))],
                      claude_line(session, key, dict(zip(KINDS, counts)), "end_turn", moment)]
            size += len(lines[-1]) + len(lines[-2])
            account.add(key, Response("claude", MODEL, session, int(moment * 1000) / 1000,
                                      [*counts[:2], 0, 0, counts[2], 0]))
        path = os.path.join(directory, ".claude/projects/p%d/%s.jsonl" % (number % 9, session))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.writelines(lines)
    return account


def memory(day):
    """500 MB are read by a program that has 64 MB, and is killed at it"""
    group = make_memory_group(day.world.directory)
    home, data = day.world.path("big"), day.world.path("big-data")
    if not day.big:
        day.big = big_home(day, home, 500, 50)
    shutil.rmtree(data, ignore_errors=True)
    with day.crew.lock:
        day.crew.wrap = lambda: ["sh", "-c", 'echo $$ >"$0" && exec "$@"', os.path.join(group, "cgroup.procs")]
        for seconds in [day.random.uniform(0, .8) for _ in range(5)] + [PATIENCE]:
            program = day.crew.start("index of 500 MB", "index", "--home", home, "--data-dir", data)
            measure_for(seconds, day.crew, program)
            if program.process.poll() is None:
                day.crew.kill(program)
                day.crew.counts["kills"] += 1
            day.crew.reap()
        day.crew.wrap = lambda: []
    sound, found = stored(data + "/Tokwatch/usage.sqlite")
    differs = difference(found, day.big.tables())
    check("memory: 500 MB with %d responses are in the store" % len(day.big.responses), sound == "ok" and not differs,
          (sound, differs, day.crew.faults[:3]))
    check("memory: at most %.0f MB were resident" % day.crew.peaks["index of 500 MB"], not day.crew.faults,
          day.crew.faults[:3])


def measure_for(seconds, crew, program):
    end = time.monotonic() + seconds
    while program.process.poll() is None and time.monotonic() < end:
        crew.measure(program)
        time.sleep(.02)


def memory_group(directory):
    """The place of a group below that of this process, named after the directory, and the file of its bound."""
    with open("/proc/self/cgroup", encoding="utf-8") as file:
        groups = {kinds: path.strip().lstrip("/") for _, kinds, path in (line.split(":", 2) for line in file)}
    name = os.path.basename(directory)
    if "memory" in groups:
        return os.path.join("/sys/fs/cgroup/memory", groups["memory"], name), "memory.limit_in_bytes"
    return os.path.join("/sys/fs/cgroup", groups.get("", ""), name), "memory.max"


def make_memory_group(directory):
    group, bound = memory_group(directory)
    try:
        os.makedirs(group, exist_ok=True)
        with open(os.path.join(group, bound), "w", encoding="utf-8") as file:
            file.write("%d" % (MOST_MEMORY << 20))
    except OSError as error:
        raise Skipped("no group of processes can be bounded: %s" % error) from error
    return group


def inotify(day):
    """hardly any folder can be watched, or none"""
    rng = day.crew.random
    day.crew.wrap = lambda: [
        "unshare", "--user", "--map-root-user", "sh", "-c", 'echo %d >/proc/sys/user/max_inotify_%s && exec "$@"' % (
            rng.randrange(4), rng.choice(("watches", "instances"))), "sh"]
    day.crew.end()
    with day.killing():
        day.nap()
    with between_responses(day.assistants):
        day.catch_up("inotify", False)
    day.crew.wrap = lambda: []
    day.crew.end()


def users(day):
    """another user's programs over a store of his own, which the administrator uses, too; strangers find nothing"""
    with open("/proc/self/uid_map", encoding="utf-8") as file:
        if file.read().split() != ["0", "0", "4294967295"]:
            raise Skipped("there is one user in this namespace")
    user, stranger = (["setpriv", "--reuid=%d" % number, "--regid=%d" % number, "--clear-groups", "--"]
                      for number in (12345, 12346))
    directory = tempfile.mkdtemp(dir=day.world.directory)
    world = make_world(day.world.program, directory, "unix:path=/nobody/has/one")
    other = Day(world, day.crew.desktop, day.options, day.share)
    for path in ("", "home", "home/.config", "home/.config/Tokwatch", "home/.config/Tokwatch/Tokwatch.conf", "tmp",
                 "prompt.json"):
        os.chown(world.path(path), 12345, 12345)
    if subprocess.run([*user, "test", "-x", world.program], check=False).returncode != 0:
        raise Skipped("other users may not run the programs")
    other.crew.wrap = lambda: user
    other.begin()
    try:
        check("users: the user's first pass", other.crew.run("index") == 0)
        check("users: the user's first export", other.exports.take())
        other.crew.wrap = lambda: other.crew.random.choice((user, []))
        with day.killing(), other.killing():
            day.nap()
        with other.crew.lock:
            other.crew.end()
        other.crew.wrap = lambda: user
        other.settle("users")
        other.crew.wrap = lambda: stranger
        check("users: a stranger is refused", other.crew.run("index", "--home", day.world.path("tmp"), "--data-dir",
                                                             world.path("home/.local/share")) == 1)
        foreign = [name for name in os.listdir(world.path(STATE)) if ".sqlite" in name
                   and os.stat(world.path(STATE + "/" + name)).st_uid != 12345]
        check("users: all databases are the user's", not foreign, foreign)
    finally:
        other.end()
        day.crew.counts += other.crew.counts
        day.crew.faults += other.crew.faults


def bus(day):
    """the session bus ends, and another comes at its place"""
    with day.killing():
        for _ in range(2):
            day.bus.kill()
            day.bus.wait()
            day.nap(.2)
            day.bus = start_bus(day.world)
            day.nap(.3)
    with between_responses(day.assistants):
        day.catch_up("bus", True)
    with day.crew.lock:
        day.crew.end()


def start_bus(world):
    """With a status area on it."""
    address = world.environment["DBUS_SESSION_BUS_ADDRESS"]
    with contextlib.suppress(FileNotFoundError):
        os.remove(address.split("=")[1])
    process = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address],
                               stderr=subprocess.DEVNULL)
    while not os.path.exists(address.split("=")[1]):
        time.sleep(.01)
    subprocess.Popen([os.path.join(os.path.dirname(os.path.abspath(__file__)), "status_area.py")], env=world.environment,
                     stderr=subprocess.DEVNULL)
    return process


def zone(day):
    """the time zone of the system changes, and a response of another day there is told"""
    with between_responses(day.assistants):
        day.catch_up("zone, before", True)
        name, moment, there = other_zone()
        set_zone(name)
        key = "zone-%d" % len(day.account.responses)
        day.world.write("home/.codex/sessions/2026/%s.jsonl" % key, codex_line(key, moment))
        day.account.add(key, Response("codex", "unknown", key, calendar.timegm(time.strptime(moment, "%Y-%m-%dT%H:%M:%SZ")),
                                      [7, 0, 0, 0, 5, 0], day=there))
    with day.killing():
        day.nap()
    with between_responses(day.assistants):
        day.catch_up("zone, while it is " + name, True)
        set_zone("UTC")


def suspend(day):
    """some programs are stopped, or all of them, and go on later"""
    seconds = day.random.uniform(1, LONGEST_STOP) if day.is_long else day.share * .6
    with day.killing():
        day.nap(.2)
        if day.random.random() < .5:
            with day.crew.lock:
                stopped = stop_all(day.crew.living)
                time.sleep(seconds)
        else:
            with day.crew.lock:
                stopped = stop_all(day.random.sample(day.crew.living, len(day.crew.living) // 2))
            time.sleep(seconds)
        for each in stopped:
            each.send_signal(signal.SIGCONT)
        day.nap(.2)


def stop_all(programs):
    for each in programs:
        each.process.send_signal(signal.SIGSTOP)
    return [each.process for each in programs]


TROUBLES = {each.__name__.replace("_", "-"): each for each in (
    kills, full_disk, read_only, lock, files, clock, descriptors, memory, inotify, users, bus, zone, suspend)}
# After these nobody is told that there is something to read, but for a look at all files every five minutes.
NEED_A_REFRESH = {"full-disk", "read-only", "descriptors"}
