#!/usr/bin/env python3
"""plain_reader.py PROGRAM [--homes N] [--seed N]: holds what PROGRAM stores and reports of made homes, whose logs grow
and are damaged at random, against a reader as plain as can be. Another seed makes other homes; each difference is printed
with its own, and `--homes 1 --seed` that one shows it again."""
import argparse
import collections
import datetime as dt
import json
import math
import os
import pathlib
import random
import re
import sqlite3
import subprocess
import sys
import tempfile
import time
import zoneinfo

COUNTERS = ("uncachedInput", "cacheRead", "cacheWrite5m", "cacheWrite1h", "output", "reasoning")
MOMENT = re.compile(r"(\d{4}-\d\d-\d\dT\d\d:\d\d):([0-5]\d|60)(\.\d+)?(?:Z|([+-])([01]\d|2[0-3]):?([0-5]\d))", re.ASCII)
STILL_WRITTEN, LAST_STILL_WRITTEN = 60, 900  # seconds that an unfinished response is waited for
WINDOW = 60  # days that are reported
Event = collections.namedtuple("Event", "model session key time counts cost unfinished", defaults=(None, False))


def part(holder, name, kind=dict):
    value = holder.get(name) if isinstance(holder, dict) else None
    value = value if isinstance(value, kind) and not isinstance(value, bool) else None
    return value.encode(errors="backslashreplace").decode() if kind is str and value is not None else value


def count(holder, name):
    value = part(holder, name, (int, float)) or 0
    return int(value) if -2**63 <= value < 2**63 else 0


def moment(holder, name):
    match = MOMENT.fullmatch(part(holder, name, str) or "")
    try:
        minute, second, fraction, sign, hours, minutes = match.groups()
        east = dt.timedelta(hours=int(hours or 0), minutes=int(minutes or 0)) * (-1 if sign == "-" else 1)
        return dt.datetime.fromisoformat(minute + "+00:00") + dt.timedelta(seconds=int(second) + float(fraction or 0)) - east
    except (AttributeError, ValueError, OverflowError):
        return None


def parsed(data):
    try:
        return json.loads(data.decode(), parse_constant=int)  # NaN is no JSON
    except (ValueError, RecursionError):
        return None


def claude_event(line, _):
    message = part(line, "message")
    usage, when = part(message, "usage"), moment(line, "timestamp")
    key = part(message, "id", str)
    key = part(line, "requestId", str) if key is None else key
    model = part(message, "model", str)
    if part(line, "type", str) != "assistant" or None in (usage, key, when) or model == "<synthetic>":
        return None
    writes = part(usage, "cache_creation")
    counts = (count(usage, "input_tokens"), count(usage, "cache_read_input_tokens"),
              count(usage, "cache_creation_input_tokens") if writes is None else count(writes, "ephemeral_5m_input_tokens"),
              count(writes, "ephemeral_1h_input_tokens"), count(usage, "output_tokens"),
              count(part(usage, "output_tokens_details"), "thinking_tokens"))
    return sum(counts[:5]) > 0 and Event("unknown" if model is None else model, part(line, "sessionId", str) or "", key, when,
                                         counts, unfinished=message.get("stop_reason", "") is None)


def codex_event(line, context):
    kind, payload = part(line, "type", str), part(line, "payload")
    for told, name in (("session_meta", "id"), ("turn_context", "model")):
        if kind == told and part(payload, name, str) is not None:
            context[kind] = part(payload, name, str)
    key, usage, when = part(payload, "response_id", str), part(payload, "usage"), moment(line, "timestamp")
    if kind != "token_usage_record" or None in (key, usage, when):
        return None
    session = context.get("session_meta", part(payload, "session_id", str) or "")
    cached = count(usage, "cached_input_tokens")
    return Event(context.get("turn_context", "unknown"), session, key, when, (
        max(count(usage, "input_tokens") - cached, 0), cached, count(usage, "cache_write_input_tokens"), 0,
        count(usage, "output_tokens"), count(usage, "reasoning_output_tokens")))


def grok_events(document):
    session = part(document, "sessionId", str)
    for turn in part(document, "turns", list) or () if session is not None else ():
        number, when = part(turn, "turnNumber", (int, float)), moment(turn, "endedAt")
        whole = number is not None and -2**63 <= number < 2**63 and number == int(number)
        for name, usage in (part(turn, "modelUsage") or {}).items() if whole and when else ():
            if isinstance(usage, dict):
                cached, ticks = count(usage, "cachedReadTokens"), part(usage, "costUsdTicks", (int, float))
                name = name.encode(errors="backslashreplace").decode()
                yield Event(name, session, f"{session}#{int(number)}#{name}", when, (
                    max(count(usage, "inputTokens") - cached, 0), cached, count(usage, "cacheCreationTokens"), 0,
                    count(usage, "outputTokens"), count(usage, "reasoningTokens")), None if ticks is None else ticks * 1e-10)


class Reader:
    """What must be stored after the passes so far. A log is read on where the last pass stopped, and from its start where
    it became another file; the last line of a response is the one that counts, and it counts once, from the first file."""

    def __init__(self, home, zone):
        self.home, self.zone, self.places, self.seen = home, zone, {}, {}

    def read(self, waits=True):
        """The events of a pass: provider and event, in the order in which they are counted."""
        for provider, root, parse in (("claude", ".claude/projects", claude_event), ("codex", ".codex/sessions", codex_event),
                                      ("codex", ".codex/archived_sessions", codex_event)):
            for path in sorted((self.home / root).rglob("*.jsonl"), key=str):
                yield from ((provider, event) for event in self.new_events(path, parse, waits))
        for path in sorted((self.home / ".grok/sessions").rglob("usage.json"), key=str):
            turns = {}
            for event in grok_events(parsed(path.read_bytes())):
                turns.setdefault(event.key, event)
            yield from (("grok", event) for event in turns.values())

    def new_events(self, path, parse, waits):
        text, inode = path.read_bytes(), path.stat().st_ino
        offset, context, was = self.places.get(path, (0, {}, inode))
        offset, context = (0, {}) if was != inode or len(text) < offset else (offset, context)
        newest, first = {}, {}
        for line in text[offset:text.rfind(b"\n") + 1].split(b"\n")[:-1]:
            if event := parse(parsed(line), context):
                newest[event.key] = event
                first.setdefault(event.key, offset)
            offset += len(line) + 1
        for key, event in list(newest.items()):
            patience = LAST_STILL_WRITTEN if event is list(newest.values())[-1] else STILL_WRITTEN
            if waits and event.unfinished and time.time() - event.time.timestamp() < patience:
                offset = min(offset, first[key])
                del newest[key]
        self.places[path] = offset, context, inode
        return newest.values()

    def index(self):
        for provider, event in self.read():
            self.seen.setdefault(event.key, (provider, event))

    def day(self, event):
        return event.time.astimezone(self.zone).strftime("%Y-%m-%d").zfill(10)

    def stored(self):
        """Tokens by provider, model and day, what was paid for them, and the day of each session."""
        daily, costs, sessions = collections.defaultdict(lambda: (0,) * 6), collections.defaultdict(float), {}
        for provider, event in self.seen.values():
            row, session = (provider, event.model, self.day(event)), (provider, event.session)
            daily[row] = tuple(map(sum, zip(daily[row], event.counts)))
            sessions[session] = min(row[2], sessions.get(session, row[2]))
            if event.cost is not None:
                costs[row] += event.cost
        return daily, costs, sessions

    def report(self):
        """Tokens by provider and model, and how many responses, of whole files. Of several files that tell of a response
        those count which say that it is finished, then that with the latest line, then the last."""
        best, models, today = {}, collections.defaultdict(lambda: (0,) * 7), dt.datetime.now(self.zone).date()
        for provider, event in Reader(self.home, self.zone).read(waits=False):
            worth = (not event.unfinished, event.time)
            if event.key not in best or worth >= best[event.key][0]:
                best[event.key] = worth, provider, event
        for _, provider, event in best.values():
            if str(today - dt.timedelta(days=WINDOW - 1)) <= self.day(event) <= str(today):
                models[provider, event.model] = tuple(map(sum, zip(models[provider, event.model], (*event.counts, 1))))
        return models


STRANGE = (None, True, "12", "", -5, 1.9, 12e2, 10**30, -10**30, [], {}, "<synthetic>", "\ud800", "a\0b",
           "2026-11-20T10:00:60Z", "2026-11-20T10:00:00", "2026-11-20T10:00:00.5+0530", "2026-11-20T24:00:00Z", "2026-11-31T10:00:00Z")
DEEP = (b"[" * 99 + b"]" * 99, b"[" * 5000 + b"]" * 5000)
CODEX = ("input_tokens", "cached_input_tokens", "cache_write_input_tokens", "output_tokens", "reasoning_output_tokens")
GROK = ("inputTokens", "cachedReadTokens", "cacheCreationTokens", "outputTokens", "reasoningTokens", "costUsdTicks")
PLACES = ((".claude/projects/p/%d.jsonl", ".claude/projects/p-q/%d/subagents/a.jsonl", ".claude/projects/p.%d.jsonl"),
          (".codex/sessions/2026/11/r-%d.jsonl", ".codex/archived_sessions/r-%d.jsonl"), (".grok/sessions/%d/usage.json",))


class Assistants:
    """What assistants write: documents, with keys, sessions and models that come again in other files."""

    def __init__(self, rng):
        self.rng, self.days, self.keys = rng, rng.choice((0, 80)), rng.randrange(3, 40)

    def odd(self, value):
        return self.rng.choice(STRANGE) if self.rng.random() < 0.05 else value

    def key(self):
        return self.odd("k%d" % self.rng.randrange(self.keys))

    def session(self):
        return self.odd("s%d" % self.rng.randrange(5))

    def stamp(self):
        """Seconds ago, or minutes, where responses are being written, else days."""
        zone = dt.timezone(dt.timedelta(hours=self.rng.choice((0, 0, 2, -7))))
        ago = self.rng.uniform(*self.rng.choice(((1, 10), (100, 800)))) + self.rng.random() * self.days * 86400
        form = self.rng.choice(("seconds", "milliseconds", "microseconds"))
        return self.odd(dt.datetime.fromtimestamp(time.time() - ago, zone).isoformat(timespec=form).replace("+00:00", "Z"))

    def counts(self, *names):
        return {name: self.odd(self.rng.randrange(10**self.rng.randrange(1, 7))) for name in names if self.rng.random() < 0.8}

    def claude(self):
        rng = self.rng
        for _ in range(rng.randrange(1, 12)):
            usage = self.counts("input_tokens", "cache_read_input_tokens", "cache_creation_input_tokens")
            if rng.random() < 0.5:
                usage["cache_creation"] = self.counts("ephemeral_5m_input_tokens", "ephemeral_1h_input_tokens")
            message = {"id": self.key(), "model": self.odd(rng.choice(("m-1", "m-2", "m-3")))}
            line = {"type": "assistant", "sessionId": self.session(), "requestId": self.key(), "timestamp": self.stamp()}
            outputs = sorted(rng.choices(range(1, 3000), k=rng.randrange(1, 4)))
            for output in outputs:
                told = {**usage, "output_tokens": output, "output_tokens_details": self.counts("thinking_tokens")}
                reason = "end_turn" if output == outputs[-1] and rng.random() < 0.8 else None
                yield {**line, "message": {**message, "stop_reason": reason, "usage": told}}
            yield {"type": "user", "timestamp": self.stamp(), "message": {"content": 'type":"assistant'}}

    def codex(self):
        rng = self.rng
        for _ in range(rng.randrange(1, 16)):
            kind, payload = rng.choice((
                ("session_meta", {"id": self.session()}), ("turn_context", {"model": self.odd(rng.choice(("g-1", "g-2")))}),
                ("event_msg", {"type": "token_count", "info": {"total_token_usage": self.counts(*CODEX)}}),
                *[("token_usage_record", {"response_id": self.key(), "session_id": "own", "usage": self.counts(*CODEX)})] * 3))
            yield {"timestamp": self.stamp(), "type": kind, "payload": payload}

    def grok(self):
        turns = [{"turnNumber": self.odd(number), "endedAt": self.stamp(), "modelUsage": {
            model: self.counts(*GROK) for model in self.rng.sample(("x-1", "x-2", "x-3"), self.rng.randrange(3))}}
            for number in range(self.rng.randrange(9))]
        yield {"sessionId": self.session(), "turns": turns}

    def change(self, value):
        """Drops or replaces one value somewhere below."""
        while isinstance(value, (dict, list)) and value:
            key = self.rng.choice(list(value) if isinstance(value, dict) else range(len(value)))
            if self.rng.random() < 0.3 or not isinstance(value[key], (dict, list)):
                value[key] = self.rng.choice(STRANGE)
                return self.rng.random() < 0.3 and value.pop(key)
            value = value[key]

    def damage(self, lines):
        rng, place = self.rng, self.rng.randrange(len(lines))
        line = lines.pop(place)
        where = rng.randrange(len(line) + 1)
        if rng.random() < 0.2:
            place = rng.randrange(len(lines) + 1)  # moved
        lines[place:place] = rng.choice((
            [line[:where] + bytes([rng.randrange(256)]) + line[where + 1:]], [line[:where] + line[where + rng.randrange(200):]],
            [line, line], [], [line + rng.choice((b"\r", b" \t", b"\0", b"\xff", b"\r\r", b"}", line))],
            [rng.choice((b"\xef\xbb\xbf", b" ", b"\n\n", b"\r", b"[]\n")) + line],
            [line.replace(b"{", b'{"deep": ' + rng.choice(DEEP) + b", ", 1)], [re.sub(rb"\d+", b"%d" % where, line, count=1)],
            [re.sub(rb'("\w+_tokens"): \d+', rb'\g<0>, \1: %d' % where, line, count=rng.randrange(1, 3))])) or [b""]

    def text(self, documents):
        documents = list(documents)
        for _ in range(self.rng.choice((0, 1, 4, 12))):
            self.change(documents)
        lines = [json.dumps(document).encode() for document in documents] or [b""]
        for _ in range(self.rng.choice((0, 1, 5, 20))):
            self.damage(lines)
        return b"\n".join(lines) + self.rng.choice((b"", b"\n", b"\n", b"\r\n"))

    def versions(self, passes):
        """Each file as it is at each pass: logs grow anywhere within their lines, documents are written anew."""
        for places, documents in zip(PLACES, (self.claude, self.codex, self.grok)):
            for number in range(self.rng.randrange(4)):
                text = self.text(documents())
                ends = sorted(self.rng.randrange(len(text) + 1) for _ in range(passes - 1)) + [len(text)]
                yield self.rng.choice(places) % number, [
                    self.text(documents()) if documents == self.grok else text[:end] for end in ends]


def differences(program, seed):
    rng = random.Random(seed)
    zone = rng.choice(("UTC", "Asia/Kolkata", "America/New_York", "Pacific/Apia"))
    with tempfile.TemporaryDirectory() as root:
        home = pathlib.Path(root, "home")
        home.mkdir()
        environment = {"PATH": os.environ["PATH"], "TZ": zone, "HOME": str(home), "XDG_DATA_HOME": root, "XDG_CONFIG_HOME": root}

        def run(*arguments):
            return json.loads(subprocess.run([program, *arguments, "--json"], env=environment, stdout=subprocess.PIPE).stdout)

        passes, reader = rng.choice((1, 2, 5)), Reader(home, zoneinfo.ZoneInfo(zone))
        files = list(Assistants(rng).versions(passes))
        for number in range(passes):
            for name, texts in files:
                path = home / name
                path.parent.mkdir(parents=True, exist_ok=True)
                if rng.random() < 0.1 and path.exists():  # kept, so that its number is another
                    path.rename(path.with_name("old%d" % number))
                path.write_bytes(texts[number])
            run("index")
            reader.index()
        with sqlite3.connect(home.parent / "Tokwatch/usage.sqlite") as store:
            rows, sessions = (list(store.execute("SELECT * FROM " + table)) for table in ("daily", "sessions"))
        store.close()
        told = [{row[:3]: row[3:9] for row in rows}, {row[:3]: row[9] for row in rows if row[9] is not None},
                {row[:2]: row[2] for row in sessions}, {
                    (row["provider"], row["model"]): (*(row["tokens"][name] for name in COUNTERS), row["responses"])
                    for row in run("report", "--by", "model", "--days", str(WINDOW))["rows"]}]
        expected = [*reader.stored(), reader.report()]
        return [f"{row}: {a.get(row)}, not {b.get(row)}" for a, b in zip(told, expected) for row in a.keys() | b.keys()
                if not same(a.get(row), b.get(row))]


def same(told, expected):
    return told == expected or (isinstance(told, float) and isinstance(expected, float) and math.isclose(told, expected))


arguments = argparse.ArgumentParser(description=__doc__)
arguments.add_argument("program", type=os.path.abspath)
arguments.add_argument("--homes", type=int, default=40)
arguments.add_argument("--seed", type=int, default=1)
chosen = arguments.parse_args()
status = 0
for seed in range(chosen.seed, chosen.seed + chosen.homes):
    for difference in differences(chosen.program, seed):
        status = 1
        print(f"seed {seed}: {difference}", flush=True)
sys.exit(status)
