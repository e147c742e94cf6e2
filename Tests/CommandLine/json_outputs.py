#!/usr/bin/env python3
"""json_outputs.py PROGRAM DEMO_HOME PAGE: holds what PROGRAM prints for programs against the tables of PAGE
(docs/json.md), both ways: each member that is printed has a row with its type, each row was printed, and what is absent
or null somewhere says so."""
import json
import os
import re
import sqlite3
import subprocess
import sys
import tempfile
import time

PROGRAM, DEMO_HOME, PAGE = map(os.path.abspath, sys.argv[1:])
PATTERNS = {"time": r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", "day": r"\d{4}-\d\d-\d\d", "setting": r"[a-zA-Z0-9.]+"}
PYTHON_TYPES = {"integer": int, "number": (int, float), "fraction": (int, float), "text": str, "boolean": bool,
                "value": (bool, int, float, str)}
SINCE_2001 = time.time() - 978307200
failures = set()


def check(holds, what):
    if not holds:
        failures.add(what)


class Row:
    """A row of a table with what was seen of it, or a place between rows; the members below it."""

    def __init__(self, name):
        self.name, self.type, self.missing, self.seen, self.members = name, "object", "", set(), {}

    def see(self, state, where):
        if self.missing:
            self.seen.add(state)
            check(state == "present" or state in self.missing, f"{where} is {state}, which its row does not say")
        elif state == "absent":
            for each in self.members.values():
                each.see(state, f"{where}.{each.name}")

    def check(self, value, where):
        self.see("null" if value is None else "present", where)
        if value is not None:
            self.check_type(self.type, value, where)

    def check_type(self, kind, value, where):
        if kind.startswith("list of "):
            check(isinstance(value, list), f"{where} is no list")
            below = self.members.get("[]", Row("[]"))
            for each in value:
                below.check_type(kind.removeprefix("list of "), each, where + "[]")
        elif record := re.match(r"\[(\w+)\]", kind):
            check_members(tables[record[1]].members | self.members, value, where)
        elif kind == "object":
            check_members(self.members, value, where)
        else:
            check(is_of(kind, value), f"{where} is {value!r} and no {kind}")


def is_of(kind, value):
    if kind in choices:
        return value in choices[kind]
    if kind in PATTERNS:
        return isinstance(value, str) and re.fullmatch(PATTERNS[kind], value)
    return isinstance(value, PYTHON_TYPES[kind]) and (kind in ("boolean", "value") or not isinstance(value, bool))


def check_members(rows, value, where):
    check(isinstance(value, dict), f"{where} is no object")
    kinds = [name for name in rows if name.startswith("<")]
    found = set()
    for name, each in value.items():
        row = name if name in rows else next((kind for kind in kinds if is_of(kind.strip("<>"), name)), None)
        check(row, f"{where}.{name} has no row")
        if row:
            found.add(row)
            rows[row].check(each, f"{where}.{name}")
    for name in rows.keys() - found:
        rows[name].see("absent", f"{where}.{name}")


def read_page():
    tables, choices, title = {}, {}, None
    with open(PAGE, encoding="utf-8") as page:
        for line in page:
            cells = [cell.strip(" `") for cell in line.strip("| \n").split("|")]
            if line.startswith("#"):
                title = Row(line.strip("# \n"))
            elif line.startswith("| `") and cells[1].startswith("one of "):
                choices[cells[0]] = set(re.findall("`(.+?)`", line)[1:])
            elif line.startswith("| `") and len(cells) == 4:
                tables[title.name] = place = title
                for name in cells[0].replace("[]", ".[]").strip(".").split("."):
                    place = place.members.setdefault(name, Row(name))
                place.type, place.missing = cells[1], cells[3]
    return tables, choices


class World:
    def __init__(self, root, name):
        self.home, self.root = os.path.join(root, name), os.path.join(root, name + "-data")
        os.makedirs(self.home)
        self.environment = {"PATH": os.environ["PATH"], "TZ": "UTC", "HOME": self.home, "XDG_DATA_HOME": self.root,
                            "XDG_CONFIG_HOME": self.root, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}

    def run(self, *arguments, told=""):
        return subprocess.run([PROGRAM, *arguments], env=self.environment, input=told, capture_output=True, text=True,
                              check=False).stdout

    def show(self, command, *arguments, told=""):
        """Compares what a command prints with its table."""
        shown.add(command)
        printed = json.loads(self.run(command, *arguments, "--json", told=told))
        row = tables["tokwatch " + ("index" if command == "reread" else command)]
        if isinstance(printed, list):
            check(printed, f"{command} prints nothing")
            row.check_type("list of object", printed, command)
        else:
            row.check_type("object", printed, command)

    def write(self, path, text="", size=None):
        path = os.path.join(self.home, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
            if size:
                file.truncate(size)

    def sql(self, database, statement, *values):
        with sqlite3.connect(os.path.join(self.root, "Tokwatch", database)) as connection:
            connection.execute(statement, values)
        connection.close()

    def store_limits(self, provider, status, source, **more):
        window = {"id": "session", "label": "Session", "usedFraction": 0.5, "source": source}
        limits = {"windows": [{**window, **more.pop("window", {})}], "status": {status: {}}, "fetchedAt": SINCE_2001, **more}
        self.sql("usage.sqlite", "INSERT OR REPLACE INTO limits VALUES(?, ?)", provider, json.dumps(limits))


def show_limits(world):
    resets = {"resetsAt": SINCE_2001 + 10_800, "duration": 18_000}
    credits = [{"label": "Extra", "unlimited": False}, {"label": "Extra", "balanceUSD": 1.5, "spentUSD": 2, "limitUSD": 9,
                                                        "unlimited": True}]
    world.run("preferences", "set", "claudeLiveLimits", "true")
    for outcome in choices["outcome"]:
        world.store_limits("claude", outcome, {"stale": {"asOf": SINCE_2001}}, credits=credits[0])
        world.store_limits("codex", outcome, {"local": {"asOf": SINCE_2001}}, plan="Plus")
        world.show("limits")
        world.show("export")
    world.show("status")
    for moment, used in ((3600, 0.2), (1800, 0.3), (0, 0.5)):
        world.sql("history.sqlite", "INSERT OR REPLACE INTO samples VALUES('claude', 'session', ?, ?, ?)",
                  time.time() - moment, used, time.time() + 10_800)
    world.store_limits("claude", "ok", {"live": {}}, plan="Max", credits=credits[1], window=resets)
    for format in ("limits", "status", "export"):
        world.show(format)
    with subprocess.Popen([PROGRAM, "status", "--follow", "--json"], env=world.environment, stdout=subprocess.PIPE,
                          text=True) as follower:
        line = json.loads(follower.stdout.readline())
        tables["tokwatch status"].check_type("object", line, "status --follow")
        end = time.monotonic() + 60
        while "credits" not in world.run("snapshot") and time.monotonic() < end:
            time.sleep(0.05)
        follower.terminate()
    world.show("snapshot")


def show_waybar(world):
    printed = json.loads(world.run("status", "--format", "waybar"))
    tables["tokwatch status --format waybar"].check_type("object", printed, "waybar")


def show_usage(world):
    """Of a home whose only line says little and has no price, and of one with all that there is."""
    message = {"id": "m", "model": "claude-none", "usage": {"input_tokens": 10, "output_tokens": 5}}
    moment = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())
    world.write(".claude/projects/p/a.jsonl", json.dumps({"type": "assistant", "timestamp": moment, "message": message}) + "\n")
    world.write(".grok/sessions/s/usage.json", size=2**26)
    subprocess.run([DEMO_HOME, "--quiet", "--days", "3", world.home + "-demo"], check=True)
    for home in (world.home, world.home + "-demo"):
        for by in sorted(choices["by"]):
            world.show("report", "--by", by, "--home", home)
        for command in ("audit", "index", "audit", "summary", "export"):
            world.show(command, "--home", home)
    world.show("report", "--provider", "cursor")
    world.show("reread", "codex")


def show_told(world):
    told = {"model": {"display_name": "Opus"}, "cost": {"total_cost_usd": 0.5}, "context_window": {"used_percentage": 41.9},
            "rate_limits": {"five_hour": {"used_percentage": 50, "resets_at": int(time.time()) + 7230}}}
    world.show("statusline", told=json.dumps(told))


def json_commands(world):
    commands = re.findall(r"^  (\w+)  ", world.run("--help").partition("Subcommands:")[2], re.MULTILINE)
    return {command for command in commands if "--json" in world.run(command, "--help")}


tables, choices = read_page()
shown = set()
with tempfile.TemporaryDirectory() as root:
    world = World(root, "home")
    for command in ("statusline", "status", "limits", "export"):  # of nothing
        world.show(command)
    show_waybar(world)
    show_told(world)
    show_usage(world)
    show_limits(world)
    show_waybar(world)
    world.run("preferences", "set", "menuBarStyle", "icon")
    world.show("status")
    world.show("preferences")
    check(is_of("value", json.loads(world.run("preferences", "get", "menuBarStyle", "--json"))), "a setting is no value")
    world.show("doctor")
    check(shown == json_commands(world), f"commands are not shown here: {json_commands(world) ^ shown}")


def check_rows(row, where):
    for state in ("present", "absent", "null"):
        if row.missing and (state == "present" or state in row.missing):
            check(state in row.seen, f"{where} was never {state}")
    for each in row.members.values():
        check_rows(each, f"{where} {each.name}")


for title, table in tables.items():
    check_rows(table, title)
sys.exit("\n".join(sorted(failures)) or 0)
