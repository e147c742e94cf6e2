#!/usr/bin/env python3
"""latency.py BUILD WORK [--writes N] [--rate BYTES]: how long a response takes from its line in a Claude session file
to the snapshot, while another log grows by RATE bytes a second. Prints seconds."""
import argparse
import json
import os
import random
import signal
import statistics
import threading
import time

from world import World

CHUNKS_PER_SECOND = 20


def claude_line(message):
    return json.dumps({"type": "assistant", "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime()),
                       "sessionId": "s", "message": {"id": message, "model": "claude-opus-4-1",
                                                     "usage": {"output_tokens": 1}}}) + "\n"


class SecondWriter(threading.Thread):
    """Appends tool output to a Codex log, as a session at work does."""

    def __init__(self, path, rate):
        super().__init__(daemon=True)
        self.path, self.rate, self.ended, self.written = path, rate, False, 0

    def run(self):
        line = json.dumps({"timestamp": "2026-11-25T12:00:00Z", "type": "response_item", "payload": {
            "type": "function_call_output", "output": "x" * (self.rate // CHUNKS_PER_SECOND - 120)}}) + "\n"
        due = time.monotonic()
        with open(self.path, "a", encoding="utf-8") as log:
            while not self.ended:
                log.write(line)
                log.flush()
                self.written += len(line)
                due += 1 / CHUNKS_PER_SECOND
                time.sleep(max(0, due - time.monotonic()))


def counted(snapshot):
    try:
        with open(snapshot, encoding="utf-8") as file:
            return sum(p["tokens30d"] for p in json.load(file)["providers"] if p["id"] == "claude")
    except FileNotFoundError:
        return -1


def wait_for(snapshot, tokens):
    while counted(snapshot) < tokens:
        time.sleep(0.005)
    return time.monotonic()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("--writes", type=int, default=50)
    parser.add_argument("--rate", type=int, default=1_000_000)
    options = parser.parse_args()
    world = World(options.build, options.work, "latency")
    claude, codex = world.home + "/.claude/projects/p/a.jsonl", world.home + "/.codex/sessions/2026/11/25/b.jsonl"
    for log in (claude, codex):
        os.makedirs(os.path.dirname(log))
    with open(claude, "w", encoding="utf-8") as file:
        file.write(claude_line("first"))
    follower = world.follow()
    writer = SecondWriter(codex, options.rate)
    chance, latencies = random.Random(1), []
    try:
        wait_for(world.snapshot, 1)
        writer.start()
        begin = time.monotonic()
        for number in range(options.writes):
            # At no fixed moment of the watcher's own rhythm.
            time.sleep(chance.uniform(0.2, 3))
            with open(claude, "a", encoding="utf-8") as file:
                file.write(claude_line("write-%d" % number))
            written = time.monotonic()
            latencies.append(wait_for(world.snapshot, number + 2) - written)
        seconds = time.monotonic() - begin
    finally:
        writer.ended = True
        follower.send_signal(signal.SIGTERM)
        follower.wait()
    latencies.sort()
    print("%d writes, another log growing by %.2f MB/s: median %.2f s, least %.2f s, most %.2f s, nine of ten within "
          "%.2f s" % (len(latencies), writer.written / seconds / 1e6, statistics.median(latencies), latencies[0],
                      latencies[-1], latencies[len(latencies) * 9 // 10 - 1]))


if __name__ == "__main__":
    main()
