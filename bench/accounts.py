#!/usr/bin/env python3
"""accounts.py BUILD WORK [--megabytes N] [--seed N]: holds `tokwatch report` and `tokwatch audit` against sums that
are known: those of a made home with all that real logs hold (lines that grow, cut and glued lines, copied histories,
agents' files, worktrees, old forms), read whole, half, changed, moved and pruned. Says what it found, and fails where a
sum is wrong by a token or a difference has no reason."""
import argparse
import collections
import datetime as dt
import json
import os
import random
import shutil
import sqlite3
import subprocess
import sys

from world import World, database

COUNTERS = ("uncachedInput", "cacheRead", "cacheWrite5m", "cacheWrite1h", "output", "reasoning")
NOW = dt.datetime.now(dt.timezone.utc).replace(microsecond=0)
DAYS = 120


def stamp(moment):
    return moment.strftime("%Y-%m-%dT%H:%M:%SZ")


class Home:
    """Writes logs and adds up what a correct reader must find in them."""

    def __init__(self, directory, rng):
        self.directory, self.rng, self.keys = directory, rng, set()
        self.sums = {by: collections.defaultdict(lambda: [0] * 6) for by in ("day", "model", "project", "session", "row")}

    def moment(self):
        return NOW - dt.timedelta(seconds=self.rng.randrange(60, DAYS * 86400))

    def count(self, provider, model, session, project, key, moment, counts):
        if key in self.keys:
            return
        self.keys.add(key)
        day = moment.strftime("%Y-%m-%d")
        for by, name in (("day", day), ("model", provider + "/" + model), ("project", project),
                         ("session", provider + "/" + session), ("row", (provider, model, day))):
            self.sums[by][name] = [a + b for a, b in zip(self.sums[by][name], counts)]

    def write(self, path, text, mode="w"):
        path = os.path.join(self.directory, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, mode, encoding="utf-8", newline="") as file:
            file.write(text)
        return path

    def response(self, session, moment, directory, project):
        """The lines of one response; the last has the final counts."""
        rng, key = self.rng, "msg_%024x" % self.rng.getrandbits(96)
        model = rng.choice(("claude-opus-4-1-20250805", "claude-haiku-4-5-20251001", "claude-unheard-of"))
        counts = [rng.randrange(4000), rng.randrange(90000), rng.randrange(900), rng.randrange(900),
                  rng.randrange(9, 3000), rng.randrange(9)]
        lines, parts = [], rng.choice((1, 1, 2, 3))
        for part in range(parts):
            last = part == parts - 1
            usage = {"input_tokens": counts[0], "cache_read_input_tokens": counts[1],
                     "cache_creation": {"ephemeral_5m_input_tokens": counts[2], "ephemeral_1h_input_tokens": counts[3]},
                     "output_tokens": counts[4] if last else part + 1,
                     "output_tokens_details": {"thinking_tokens": counts[5] if last else 0}}
            lines.append(json.dumps({
                "cwd": directory, "sessionId": session, "message": {
                    "model": model, "id": key, "content": [{"text": "x" * int(rng.paretovariate(1) * 100 % 9000)}],
                    "stop_reason": "end_turn" if last else None, "usage": usage},
                "type": "assistant", "timestamp": stamp(moment)}))
        self.count("claude", model, session, project, key, moment, counts)
        return lines

    def noise(self, moment):
        whole = self.rng.choice((
            '{"type":"assistant","sessionId":"s","timestamp":"%s","message":{"id":"bad_%d","model":"<synthetic>",'
            '"usage":{"output_tokens":7}}}', '{"type":"user","timestamp":"%s","message":{"content":"\\"usage\\" %d"}}',
            '{"type":"assistant","timestamp":"%s","message":{"ident":%d,"usage":{"output_tokens":7}}}',
            '{"type":"assistant","time":"%s","message":{"id":"bad_%d","usage":{"output_tokens":7}}}',
            '{"type":"assistant","timestamp":"%s","message":{"id":"bad_%d","usage":{"output_tokens":0}}}',
            '["%s",%d,{"usage":{}}]')) % (stamp(moment), self.rng.getrandbits(40))
        kind = self.rng.randrange(4)
        if kind == 0:
            return whole[:self.rng.randrange(1, len(whole) - 1)]
        return whole[:self.rng.randrange(20, len(whole) - 20)] + whole if kind == 1 else whole

    def claude(self, number, size):
        rng, session, moment = self.rng, "%08x-%024x" % (number, self.rng.getrandbits(96)), self.moment()
        project = "/src/p%d" % (number % 5)
        directory = project + rng.choice(("", "", "/.claude/worktrees/w%d" % number, "/.worktrees/x"))
        lines, agent = [], []
        while sum(map(len, lines)) < size:
            moment = min(moment + dt.timedelta(seconds=rng.randrange(1, 90)), NOW)
            if rng.random() < .2:
                agent += self.response(session, moment, "/tmp/agent-%d" % number, project)
            lines += self.response(session, moment, directory, project) if rng.random() < .5 or not lines else [self.noise(moment)]
        end = rng.choice(("\n", "\n", "\r\n"))
        folder = ".claude/projects/-src-p%d/" % (number % 5)
        self.write(folder + session + ".jsonl", end.join(lines) + end)
        if agent:
            self.write(folder + session + "/subagents/agent-%d.jsonl" % number, "\n".join(agent) + "\n")
        if rng.random() < .3:  # resumed: the history stands in both files
            self.write(folder + "resumed-%d.jsonl" % number, "\n".join(lines[:len(lines) // 2]) + "\n")

    def codex(self, number, size):
        rng, session, moment = self.rng, "%032x" % self.rng.getrandbits(128), self.moment()
        project, model, got = "/src/p%d" % (number % 5), rng.choice(("gpt-5-codex", "gpt-5.1")), 0
        lines = [{"type": "session_meta", "payload": {"id": session, "cwd": project}},
                 {"type": "turn_context", "payload": {"model": model}}]
        while got < size:
            moment = min(moment + dt.timedelta(seconds=rng.randrange(1, 90)), NOW)
            cached, key = rng.randrange(50000), "resp_%024x" % rng.getrandbits(96)
            counts = [rng.randrange(5000), cached, 0, 0, rng.randrange(2000), rng.randrange(900)]
            lines.append({"timestamp": stamp(moment), "type": "event_msg", "payload": {
                "type": "token_count", "info": {"total_token_usage": {"output_tokens": 9}}}})
            if number % 4 > 0:  # the others are of an older version, which wrote nothing but the totals
                lines.append({"timestamp": stamp(moment), "type": "token_usage_record", "payload": {
                    "response_id": key, "usage": {"input_tokens": counts[0] + cached, "cached_input_tokens": cached,
                                                  "output_tokens": counts[4], "reasoning_output_tokens": counts[5]}}})
                self.count("codex", model, session, project, key, moment, counts)
            got += 400
        root = rng.choice((".codex/sessions/2026/01/01/", ".codex/archived_sessions/"))
        self.write(root + "rollout-%s.jsonl" % session, "\n".join(map(json.dumps, lines)) + "\n")

    def grok(self, number):
        rng, session, moment, turns = self.rng, "grok-%d" % number, self.moment(), []
        for turn in range(1, rng.randrange(3, 30)):
            moment = min(moment + dt.timedelta(seconds=rng.randrange(1, 300)), NOW)
            counts = [rng.randrange(9000), rng.randrange(9000), rng.randrange(90), 0, rng.randrange(4000), 0]
            turns.append({"turnNumber": turn, "modelUsage": {"grok-4": {
                "inputTokens": counts[0] + counts[1], "cachedReadTokens": counts[1], "cacheCreationTokens": counts[2],
                "outputTokens": counts[4], "costUsdTicks": rng.randrange(10 ** 9)}}})
            if rng.random() < .9:
                turns[-1]["endedAt"] = stamp(moment)
                self.count("grok", "grok-4", session, None, "%s#%d" % (session, turn), moment, counts)
        self.write(".grok/sessions/%s/usage.json" % session, json.dumps({"sessionId": session, "turns": turns}))


class Trial:
    def __init__(self, world):
        self.world, self.failures = world, 0

    def run(self, *arguments, zone="UTC"):
        return subprocess.run([self.world.program, *arguments, "--home", self.world.home, "--data-dir", self.world.data],
                              check=False, capture_output=True, text=True, env={**self.world.environment, "TZ": zone})

    def check(self, what, holds, detail=""):
        self.failures += not holds
        print("%-76s %s" % (what, "yes" if holds else "NO " + str(detail)[:300]), flush=True)

    def report(self, *arguments):
        result = self.run("report", "--json", "--days", str(DAYS + 2), *arguments)
        return json.loads(result.stdout)

    def index(self):
        self.run("index")

    def audit(self, what, reasons, zone="UTC"):
        result = self.run("audit", "--json", zone=zone)
        audit = json.loads(result.stdout)
        found = {reason for row in audit["rows"] for reason in row["differences"]}
        adds_up = all(row["stored"][c] - row["inFiles"][c] == sum(d[c] for d in row["differences"].values())
                      for row in audit["rows"] for c in COUNTERS)
        self.check("audit: " + what, audit["explained"] and result.returncode == 0 and found == reasons and adds_up,
                   (found, adds_up, result.stderr))
        return audit

    def sql(self, *statements):
        with sqlite3.connect(database(self.world.data)) as connection:
            for statement in statements:
                connection.execute(statement)
        connection.close()


def check_reports(trial, home):
    for by, name in (("day", lambda row: row["start"][:10]), ("model", lambda row: row["provider"] + "/" + row["model"]),
                     ("project", lambda row: row["project"]), ("session", lambda row: row["provider"] + "/" + row["session"])):
        report = trial.report("--by", by)
        got = {name(row): [row["tokens"][c] for c in COUNTERS] for row in report["rows"]}
        trial.check("report by %s: %d rows, each to the token" % (by, len(got)), got == dict(home.sums[by]))
    whole = [sum(column) for column in zip(*home.sums["day"].values())]
    for by in ("hour", "week", "month", "block"):
        report = trial.report("--by", by)
        got = [sum(row["tokens"][c] for row in report["rows"]) for c in COUNTERS]
        trial.check("report by %s: %d rows add up to the same" % (by, len(report["rows"])),
                    got == whole and report["total"]["responses"] == len(home.keys))


def check_audits(trial, home):
    audit = trial.audit("nothing is stored yet", {"notReadYet"})
    files = {(row["provider"], row["model"], row["day"]): [row["inFiles"][c] for c in COUNTERS] for row in audit["rows"]}
    trial.check("audit: the files' sums of each day and model, to the token", files == dict(home.sums["row"]))
    trial.check("audit: old Codex logs are told", any(group["cumulativeOnlyFiles"] for group in audit["groups"]))
    trial.check("audit: every kind of skipped line is told", all(any(group[kind] for group in audit["groups"]) for kind in (
        "noUsage", "noTime", "unknownForm", "synthetic", "cut")))
    trial.index()
    trial.audit("all is read", set())

    log = ".claude/projects/-src-p0/late.jsonl"
    moment = NOW - dt.timedelta(hours=1)
    responses = [home.response("late", moment, "/src/p0", "/src/p0") for _ in range(40)]
    halves = ["\n".join(lines[:1]) + "\n" for lines in responses]
    path = home.write(log, "".join(halves))
    trial.index()
    home.write(log, "".join("\n".join(lines[1:] or lines) + "\n" for lines in responses), "a")
    trial.audit("responses that were read half written, and new lines", {"earlierLine"})
    trial.index()
    trial.audit("the same once they are read to the end", {"earlierLine"})
    size = os.path.getsize(path)
    home.write(log, "\n".join(home.response("late", moment, "/src/p0", "/src/p0")) + "\n", "a")
    trial.audit("a response that nobody read yet", {"earlierLine", "notReadYet"})
    os.truncate(path, size + 20)
    trial.audit("cut within that", {"earlierLine"})

    shutil.rmtree(os.path.join(trial.world.home, ".claude/projects/-src-p1"))
    trial.audit("a project that was deleted", {"earlierLine", "gone"})
    audit = trial.audit("in another time zone", {"earlierLine", "gone", "otherDay"}, zone="Asia/Tokyo")
    limit = max(row["day"] for row in audit["rows"] if any(row["stored"].values()))
    limit = (dt.date.fromisoformat(limit) - dt.timedelta(days=90)).isoformat()
    trial.sql(*("DELETE FROM %s WHERE day < '%s'" % (table, limit) for table in ("daily", "sessions", "seen")))
    trial.audit("days that the store has dropped", {"earlierLine", "gone", "deleted"})
    trial.sql("UPDATE daily SET output = output + 1 WHERE model LIKE 'gpt%' AND day >= '" + limit + "'")
    result = trial.run("audit", "--json")
    trial.check("audit: a token too many has no reason", result.returncode == 1 and not json.loads(result.stdout)["explained"])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("--megabytes", type=float, default=4)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    trial = Trial(World(options.build, options.work, "accounts"))
    home = Home(trial.world.home, random.Random(options.seed))
    for number in range(40):
        home.claude(number, options.megabytes * 1e6 / 50)
        home.codex(number, options.megabytes * 1e6 / 200)
        home.grok(number)
    check_reports(trial, home)
    check_audits(trial, home)
    return 1 if trial.failures else 0


if __name__ == "__main__":
    sys.exit(main())
