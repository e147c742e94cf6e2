#!/usr/bin/env python3
"""measure.py BUILD WORK [--home DIR] [--quick]: whole-process times of the commands, each beside its baseline.

Every figure is the median of several runs that alternate with the baseline's, so that a machine whose speed drifts
slows both. Prints a Markdown table. WORK holds the homes and databases; --home measures the first pass on a home of
your own in place of the made one."""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def run(command):
    """Seconds and peak megabytes of one process."""
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - start
    if status != 0:
        sys.exit("failed: " + " ".join(command))
    return seconds, usage.ru_maxrss / 1024


class Bench:
    def __init__(self, build, work):
        self.tokwatch, self.scan = os.path.join(build, "bin/tokwatch"), os.path.join(build, "bin/bare-scan")
        self.work = work

    def home(self, name, megabytes, files):
        path = os.path.join(self.work, name)
        subprocess.run([sys.executable, os.path.join(HERE, "make_home.py"), path, "--megabytes", str(megabytes),
                        "--files", str(files)], check=True)
        return path

    def paired(self, command, baseline, before=lambda: None, runs=5):
        run(baseline)
        before()
        run(command)
        pairs = []
        for _ in range(runs):
            base = run(baseline)[0]
            before()
            seconds, memory = run(command)
            pairs.append((seconds, base, memory))
        return (statistics.median(p[0] for p in pairs), statistics.median(p[1] for p in pairs),
                statistics.median(p[0] / p[1] for p in pairs), max(p[2] for p in pairs), runs)

    @staticmethod
    def row(what, result, target):
        seconds, base, ratio, memory, runs = result
        print("| %s | %.1f ms | %.1f ms | %.2f | %.1f MB | %s | %d |" % (
            what, seconds * 1e3, base * 1e3, ratio, memory, target, runs), flush=True)

    def first_pass(self, name, home, target):
        data = os.path.join(self.work, "data-first")
        self.row("first pass, " + name,
                 self.paired([self.tokwatch, "index", "--home", home, "--data-dir", data], [self.scan, home],
                             before=lambda: shutil.rmtree(data, ignore_errors=True)), target)

    def steady(self, name, home, target):
        data = os.path.join(self.work, "data-steady-" + os.path.basename(home))
        index = [self.tokwatch, "index", "--home", home, "--data-dir", data]
        run(index)
        walk = ["find", home, "-type", "f", "-printf", "%i %s\\n"]
        self.row("pass with nothing changed, " + name, self.paired(index, walk, runs=11), target)
        return data

    def appended(self, home, data, target):
        log = sorted(os.path.join(d, f) for d, _, fs in os.walk(home + "/.claude/projects") for f in fs)[0]
        number = [0]

        def append():
            number[0] += 1
            with open(log, "a", encoding="utf-8") as file:
                file.write('{"type":"assistant","timestamp":"2026-10-01T12:00:00Z","sessionId":"s","message":{"id":'
                           '"bench_%d_%d","model":"claude-opus-4-1","usage":{"output_tokens":5}}}\n' % (os.getpid(), number[0]))

        self.row("one response appended to one of 2,000 files: seen, stored, summarised",
                 self.paired([self.tokwatch, "summary", "--home", home, "--data-dir", data], ["true"], before=append,
                             runs=11), target)

    def summary(self, target):
        home, data = os.path.join(self.work, "summary-home"), os.path.join(self.work, "summary-data")
        path = os.path.join(home, ".claude/projects/p/a.jsonl")
        os.makedirs(os.path.dirname(path), exist_ok=True)
        today = time.time()
        with open(path, "w", encoding="utf-8") as file:
            for day in range(90):
                for model in range(30):
                    file.write('{"type":"assistant","timestamp":"%s","sessionId":"s%d","message":{"id":"m%d_%d","model":"model-%d",'
                               '"usage":{"input_tokens":1000,"output_tokens":500}}}\n' % (
                                   time.strftime("%Y-%m-%dT12:00:00Z", time.gmtime(today - day * 86400)), day, day, model, model))
        run([self.tokwatch, "index", "--home", home, "--data-dir", data])
        self.row("summary --no-index over 90 days of 30 models",
                 self.paired([self.tokwatch, "summary", "--no-index", "--days", "90", "--home", home, "--data-dir", data],
                             ["true"], runs=21), target)


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), "unknown")
    memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2**30
    return "%s, %d cores, %.0f GiB, Linux %s" % (model, os.cpu_count(), memory, os.uname().release)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("work")
    parser.add_argument("--home")
    parser.add_argument("--quick", action="store_true", help="100 MB only")
    options = parser.parse_args()
    os.environ["TZ"] = "UTC"
    bench = Bench(options.build, options.work)
    print("Machine: %s. Page cache warm; medians of pairs; the ratio is the median of the pairs' ratios.\n" % machine())
    print("| what | time | baseline | ratio | peak memory | target | runs |")
    print("|---|---|---|---|---|---|---|", flush=True)
    if options.home:
        bench.first_pass(options.home, options.home, "2.0 × bare scan, 64 MB")
        return
    bench.first_pass("100 MB, 200 files", bench.home("home-100", 100, 200), "2.0 × bare scan, 64 MB")
    if not options.quick:
        bench.first_pass("1 GB, 2,000 files", bench.home("home-1000", 1000, 2000), "2.0 × bare scan, 64 MB")
        bench.first_pass("3 GB, 6,000 files", bench.home("home-3000", 3000, 6000), "2.0 × bare scan, 64 MB")
        large = bench.home("home-1000", 1000, 2000)
        data = bench.steady("2,000 files", large, "25 ms")
        bench.appended(large, data, "30 ms")
        bench.steady("20,000 files", bench.home("home-many", 40, 20000), "200 ms")
    bench.summary("25 ms")


if __name__ == "__main__":
    main()
