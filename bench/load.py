#!/usr/bin/env python3
"""load.py BUILD WORK: what homes of three sizes cost, 365 days and 200 models in each: the first pass, a pass over
unchanged files, a pass after one appended line, a summary of all days, a report of all days.

Prints a Markdown table: medians of wall time with the least, and the peak of memory. That the cost of later passes grows
with what is new, and that of the stored days not with the logs, is to be read in its columns. WORK keeps the homes, which
take 11 GB."""
import argparse
import os
import shutil
import statistics
import subprocess
import sys

from measure import machine, run

HERE = os.path.dirname(os.path.abspath(__file__))
SIZES = [("small", 100, 100), ("middle", 1000, 5000), ("large", 10000, 50000)]


class Load:
    def __init__(self, build, work, name, megabytes, files):
        self.program = os.path.join(build, "bin/tokwatch")
        self.home, self.data = os.path.join(work, "home-" + name), os.path.join(work, "data-" + name)
        subprocess.run([sys.executable, os.path.join(HERE, "make_home.py"), self.home, "--megabytes", str(megabytes),
                        "--files", str(files), "--days", "365", "--models", "200"], check=True)
        self.logs = sorted(os.path.join(d, f) for d, _, names in os.walk(self.home + "/.claude") for f in names)
        self.appended = 0

    def command(self, *words):
        return [self.program, *words, "--home", self.home, "--data-dir", self.data]

    def append(self):
        self.appended += 1
        with open(self.logs[0], "a", encoding="utf-8") as file:
            file.write('{"type":"assistant","timestamp":"2026-10-01T12:00:00Z","sessionId":"s","message":{"id":"load_%d_%d",'
                       '"model":"model-7","usage":{"output_tokens":5}}}\n' % (os.getpid(), self.appended))

    def figures(self, command, runs, before=lambda: None):
        times, peaks = [], []
        for _ in range(runs):
            before()
            seconds, megabytes = run(command)
            times.append(seconds * 1e3)
            peaks.append(megabytes)
        return "%.0f ms (%.0f), %.0f MB" % (statistics.median(times), min(times), max(peaks))

    def row(self):
        index = self.command("index")
        forget = lambda: shutil.rmtree(self.data, ignore_errors=True)
        return [self.figures(index, 3, forget), self.figures(index, 7), self.figures(index, 7, self.append),
                self.figures(self.command("summary", "--no-index", "--days", "400"), 7),
                self.figures(self.command("report", "--since", "2025-01-01", "--by", "model"), 3)]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    options = parser.parse_args()
    os.environ["TZ"] = "UTC"
    print("Machine: %s; load average at the start %.1f.\n" % (machine(), os.getloadavg()[0]))
    print("| home | first pass | nothing changed | one line appended | `summary`, 400 days | `report`, all days |")
    print("|---|---|---|---|---|---|", flush=True)
    for name, megabytes, files in SIZES:
        load = Load(options.build, options.work, name, megabytes, files)
        print("| %g GB, %s files | %s |" % (megabytes / 1000, format(files, ","), " | ".join(load.row())), flush=True)


if __name__ == "__main__":
    main()
