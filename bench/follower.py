#!/usr/bin/env python3
"""follower.py BUILD WORK HOME [--lines N] [--minutes N]: what `tokwatch status --follow` costs on a home, as Markdown.

Runs it on a session bus of its own, without logins, through its first pass; then appends single responses and adds up
the processor time of each until all is quiet again; then leaves it alone and counts how often its threads woke up.
HOME gains the appended lines; WORK holds the database."""
import argparse
import json
import os
import signal
import statistics
import sys
import time

from world import World

BUS = "TOKWATCH_BENCH_ON_BUS"


class Follower:
    def __init__(self, build, work, home):
        self.world = World(build, work, "follower", home)
        self.process = self.world.follow()
        self.pid = self.process.pid

    def cpu(self):
        """Seconds of all threads, those that have ended included: the kernel's clock of another process."""
        return time.clock_gettime((~self.pid << 3) | 2)

    def memory(self):
        values = {}
        for name in ("status", "smaps_rollup"):
            with open("/proc/%d/%s" % (self.pid, name), encoding="utf-8") as file:
                for line in file:
                    fields = line.split()
                    if fields[-1] == "kB":
                        values[fields[0].rstrip(":")] = int(fields[1]) / 1024
        return values

    def wakeups(self):
        """How often each thread has slept and gone on."""
        counts = {}
        for thread in os.listdir("/proc/%d/task" % self.pid):
            with open("/proc/%d/task/%s/status" % (self.pid, thread), encoding="utf-8") as file:
                fields = dict(line.rstrip("\n").split(":\t", 1) for line in file if ":\t" in line)
            counts[thread] = (fields["Name"], int(fields["voluntary_ctxt_switches"]))
        return counts

    def written(self):
        try:
            return os.stat(self.world.snapshot).st_mtime_ns
        except FileNotFoundError:
            return 0

    def wait_until_quiet(self, seconds=1.5):
        quiet_since, last = time.monotonic(), self.cpu()
        while time.monotonic() - quiet_since < seconds:
            time.sleep(0.1)
            now = self.cpu()
            if now - last > 0.0005:
                quiet_since = time.monotonic()
            last = now

    def append(self, number):
        if number == 0:
            logs = (os.path.join(d, f) for d, _, fs in os.walk(self.world.home + "/.claude/projects") for f in fs)
            self.log = sorted(logs)[0]
        before = self.written()
        cpu = self.cpu()
        with open(self.log, "a", encoding="utf-8") as file:
            file.write(json.dumps({
                "type": "assistant", "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime()), "sessionId": "s",
                "message": {"id": "bench_%d_%d" % (self.pid, number), "model": "claude-opus-4-1",
                            "usage": {"output_tokens": 5}}}) + "\n")
        while self.written() == before:
            time.sleep(0.02)
        self.wait_until_quiet()
        return self.cpu() - cpu


def row(what, value, target=""):
    print("| %s | %s | %s |" % (what, value, target), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("home")
    parser.add_argument("--lines", type=int, default=11)
    parser.add_argument("--minutes", type=float, default=5)
    options = parser.parse_args()
    if BUS not in os.environ:
        os.environ[BUS] = "yes"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

    files = sum(len(names) for _, _, names in os.walk(options.home))
    follower = Follower(options.build, options.work, os.path.realpath(options.home))
    try:
        start = time.monotonic()
        while follower.written() == 0:
            time.sleep(0.05)
        follower.wait_until_quiet(5)
        print("`tokwatch status --follow` on %d files.\n\n| what | figure | target |\n|---|---|---|" % files)
        row("processor time until all was read", "%.2f s" % follower.cpu())
        row("the same by the clock", "%.1f s" % (time.monotonic() - start - 5))
        memory = follower.memory()
        row("resident memory after that", "%.1f MB" % memory["VmRSS"], "40 MB")
        row("proportional share of it", "%.1f MB" % memory["Pss"])
        row("of its own", "%.1f MB" % memory["RssAnon"])
        row("peak resident memory", "%.1f MB" % memory["VmHWM"])
        costs = [follower.append(number) for number in range(options.lines)]
        row("processor time of one changed line, median of %d" % len(costs), "%.1f ms" % (
            statistics.median(costs) * 1e3), "10 ms")
        row("the least and the most", "%.1f to %.1f ms" % (min(costs) * 1e3, max(costs) * 1e3))
        cpu, before = follower.cpu(), follower.wakeups()
        time.sleep(options.minutes * 60)
        after = follower.wakeups()
        row("processor time of %g idle minutes" % options.minutes, "%.1f ms" % ((follower.cpu() - cpu) * 1e3))
        for thread, (name, count) in sorted(after.items(), key=lambda item: int(item[0])):
            row("wake-ups meanwhile, thread “%s”" % name, count - before.get(thread, (name, 0))[1])
        row("resident memory at the end", "%.1f MB" % follower.memory()["VmRSS"], "40 MB")
    finally:
        follower.process.send_signal(signal.SIGTERM)
        follower.process.wait()


if __name__ == "__main__":
    main()
