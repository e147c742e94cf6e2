#!/usr/bin/env python3
"""stream.py BUILD WORK [--minutes 2] [--sessions 4] [--seed 1]: does `tokwatch status --follow` lose tokens of
responses that it meets half written, and how long does a response take from its last line to the snapshot?

Sessions write responses of 1 to 5 lines, 0.2 to 3 s apart, as the assistant does while it streams: lines before the last
have a null stop reason, and either a placeholder or a growing count of output tokens. Two write into each log, as agents
do side by side, and half of them have tool output and whole responses of others between those lines. At the end the
follower's store must equal that of one pass; exits with 1 when it does not. Latencies are those of responses whose last
line names a reason."""
import argparse
import os
import random
import signal
import sqlite3
import statistics
import subprocess
import sys
import threading
import time

from assistants import claude_line
from world import World, database


class Session(threading.Thread):
    """One log and its writer. `ended` holds the keys of finished responses, the moment of their last line and the lines."""

    def __init__(self, number, path, seconds, seed):
        super().__init__()
        self.number, self.path, self.until = number, path, time.monotonic() + seconds
        self.random = random.Random(seed)
        self.placeholder, self.mixed = number % 2 == 0, number // 2 % 2 == 1
        self.count, self.ended = 0, {}

    def line(self, key, output, reason, sidechain=False):
        return claude_line("s%d" % self.number, key, {"input_tokens": 10, "output_tokens": output}, reason,
                           text="x" * self.random.randrange(2000), sidechain=sidechain)

    def between(self):
        """What others write between a response's lines."""
        self.count += 1
        key = "agent_%d_%d" % (self.number, self.count)
        self.write(self.line(key, 3, None, True))
        self.write('{"type":"user","message":{"content":"%s"}}\n' % ("y" * self.random.randrange(50000)))
        self.write(self.line(key, 300, "end_turn", True))

    def write(self, text):
        with open(self.path, "a", encoding="utf-8") as file:
            file.write(text)

    def run(self):
        while time.monotonic() < self.until:
            self.count += 1
            key, lines, final = "msg_%d_%d" % (self.number, self.count), self.random.randint(1, 5), self.random.randint(100, 3000)
            for n in range(1, lines + 1):
                output = final if n == lines else 2 if self.placeholder else final * n // lines
                self.write(self.line(key, output, "tool_use" if n == lines else None))
                if n == lines:
                    self.ended[key] = (time.time(), lines)
                elif self.mixed and self.random.random() < .3:
                    self.between()
                time.sleep(self.random.uniform(.2, 3))


class Watch(threading.Thread):
    """Notes when each key appears in the store, twenty times a second."""

    def __init__(self, path):
        super().__init__(daemon=True)
        self.path, self.seen, self.stop = path, {}, False

    def run(self):
        connection = sqlite3.connect("file:%s?mode=ro" % self.path, uri=True, timeout=5)
        while not self.stop:
            now = time.time()
            for (key,) in connection.execute("SELECT key FROM seen"):
                self.seen.setdefault(key, now)
            time.sleep(.05)
        connection.close()


def sums(data):
    connection = sqlite3.connect(database(data))
    rows = connection.execute("SELECT * FROM daily ORDER BY 1, 2, 3").fetchall()
    connection.close()
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("--minutes", type=float, default=2)
    parser.add_argument("--sessions", type=int, default=4)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    world = World(options.build, options.work, "stream")
    os.makedirs(world.home + "/.claude/projects/p")
    once = world.path("once")
    follower = world.follow()
    try:
        while not os.path.exists(database(world.data)):
            time.sleep(.05)
        time.sleep(2)
        watch = Watch(database(world.data))
        watch.start()
        sessions = [Session(n, "%s/.claude/projects/p/%d.jsonl" % (world.home, n // 2), options.minutes * 60, options.seed * 100 + n)
                    for n in range(options.sessions)]
        for session in sessions:
            session.start()
        for session in sessions:
            session.join()
        time.sleep(6)
        watch.stop = True
        watch.join()
    finally:
        follower.send_signal(signal.SIGTERM)
        follower.wait()
    subprocess.run([world.program, "index", "--data-dir", once], env=world.environment, check=True,
                   stdout=subprocess.DEVNULL)
    ended = {key: moment for session in sessions for key, moment in session.ended.items()}
    never = len(set(ended) - set(watch.seen))
    output = [sum(row[7] for row in sums(path)) for path in (world.data, once)]
    print("%d responses in %d sessions: %d of %d output tokens counted, %d lost" % (
        len(ended), len(sessions), output[0], output[1], output[1] - output[0]))
    for what, least, most in (("one line", 1, 1), ("several lines", 2, 5)):
        delays = sorted(watch.seen[key] - moment for key, (moment, lines) in ended.items()
                        if least <= lines <= most and key in watch.seen)
        print("%s: %d responses, from the last line to the store median %.2f s, nine of ten within %.2f s, most %.2f s" % (
            what, len(delays), statistics.median(delays), delays[len(delays) * 9 // 10], delays[-1]))
    print("%d responses were not in the store at the end" % never)
    sys.exit(sums(world.data) != sums(once))


if __name__ == "__main__":
    main()
