#!/usr/bin/env python3
"""measure.py BUILD WORK [--home DIR] [--quick] [--patience SECONDS]: whole-process times of the commands, each beside its baseline.

Runs alternate with the baseline's, so that a machine whose speed drifts slows both, and each pair waits for a moment
in which little else runs. The ratio is the median of the pairs' ratios; beside the median time stands the least, which
other work disturbs the least. Prints a Markdown table. WORK holds the homes and databases; --home measures the first
pass on a home of your own in place of the made one."""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def run(command, told=os.devnull):
    """Seconds and peak megabytes of one process that is told what the file holds."""
    with open(told, encoding="utf-8") as file:
        start = time.monotonic()
        process = subprocess.Popen(command, stdin=file, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.monotonic() - start
    if status != 0:
        sys.exit("failed: " + " ".join(command))
    return seconds, usage.ru_maxrss / 1024


def busy_share(seconds):
    """How much of all cores was at work during this time, 0 to 1."""
    def times():
        with open("/proc/stat", encoding="utf-8") as file:
            fields = [int(field) for field in file.readline().split()[1:]]
        return sum(fields), fields[3] + fields[4]

    total, idle = times()
    time.sleep(seconds)
    later_total, later_idle = times()
    return 1 - (later_idle - idle) / max(1, later_total - total)


def wait_for_quiet(patience):
    """Until little else runs, for so many seconds at most; what is measured beside other work says little."""
    deadline = time.monotonic() + patience
    while busy_share(0.1) > 0.1:
        if time.monotonic() > deadline:
            return False
    return True


class Figures:
    """What a series of paired runs came to, in seconds and megabytes."""

    def __init__(self, pairs):
        times, bases = [p[0] for p in pairs], [p[1] for p in pairs]
        self.runs = len(pairs)
        self.median, self.least = statistics.median(times), min(times)
        self.base, self.least_base = statistics.median(bases), min(bases)
        self.ratio = statistics.median(p[0] / p[1] for p in pairs)
        self.memory = max(p[2] for p in pairs)


class Bench:
    def __init__(self, build, work, patience):
        self.tokwatch, self.scan = os.path.join(build, "bin/tokwatch"), os.path.join(build, "bin/bare-scan")
        self.work, self.patience, self.disturbed = work, patience, 0

    def home(self, name, megabytes, files):
        path = os.path.join(self.work, name)
        subprocess.run([sys.executable, os.path.join(HERE, "make_home.py"), path, "--megabytes", str(megabytes),
                        "--files", str(files)], check=True)
        return path

    def paired(self, command, baseline, before=lambda: None, runs=7, told=os.devnull):
        run(baseline)
        before()
        run(command, told)
        pairs = []
        for _ in range(runs):
            self.disturbed += not wait_for_quiet(self.patience)
            base = run(baseline)[0]
            before()
            seconds, memory = run(command, told)
            pairs.append((seconds, base, memory))
        return Figures(pairs)

    @staticmethod
    def row(what, figures, target):
        print("| %s | %.1f ms | %.1f ms | %.1f ms | %.1f ms | %.2f | %.2f | %.1f MB | %s | %d |" % (
            what, figures.median * 1e3, figures.least * 1e3, figures.base * 1e3, figures.least_base * 1e3, figures.ratio,
            figures.least / figures.least_base, figures.memory, target, figures.runs), flush=True)

    def first_pass(self, name, home, target, runs=7):
        data = os.path.join(self.work, "data-first")
        figures = self.paired([self.tokwatch, "index", "--home", home, "--data-dir", data], [self.scan, home],
                              before=lambda: shutil.rmtree(data, ignore_errors=True), runs=runs)
        self.row("first pass, " + name, figures, target)
        return figures

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

    def report(self, name, home, baseline, target, runs=11):
        command = [self.tokwatch, "report", "--since", "2026-01-01", "--home", home]
        self.row("report, " + name, self.paired(command, baseline, runs=runs), target)

    def short_ones(self, summary_target, line_target):
        home, data = os.path.join(self.work, "summary-home"), os.path.join(self.work, "summary-data")
        shutil.rmtree(data, ignore_errors=True)
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
                             ["true"], runs=21), summary_target)
        told = os.path.join(self.work, "told.json")
        with open(told, "w", encoding="utf-8") as file:
            json.dump({"model": {"display_name": "Opus 4.5"}, "context_window": {"used_percentage": 42},
                       "cost": {"total_cost_usd": 1.23}, "rate_limits": {
                           window: {"used_percentage": 58, "resets_at": int(today) + 9000}
                           for window in ("five_hour", "seven_day")}}, file)
        self.row("statusline over the same days",
                 self.paired([self.tokwatch, "statusline", "--home", home, "--data-dir", data], ["true"], runs=21, told=told),
                 line_target)

    def closing(self):
        print("\nPairs that began beside other work: %d. Load average at the end %.1f." % (
            self.disturbed, os.getloadavg()[0]))


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
    parser.add_argument("--patience", type=float, default=20, metavar="SECONDS",
                        help="how long each pair waits for a quiet moment")
    parser.add_argument("--quick", action="store_true", help="100 MB only")
    options = parser.parse_args()
    os.environ["TZ"] = "UTC"
    bench = Bench(options.build, options.work, options.patience)
    print("Machine: %s; load average at the start %.1f. Page cache warm.\n" % (machine(), os.getloadavg()[0]))
    print("| what | median | least | baseline, median | baseline, least | ratio, median of pairs | ratio of the least | "
          "peak memory | target | pairs |")
    print("|---|---|---|---|---|---|---|---|---|---|", flush=True)
    if options.home:
        bench.first_pass(options.home, options.home, "2.0 × baseline, 64 MB", runs=11)
        bench.closing()
        return
    bound = "2.0 × baseline, 64 MB"
    passes = {0.1: bench.first_pass("100 MB, 200 files", bench.home("home-100", 100, 200), bound, runs=15)}
    bench.report("20 MB, 40 files", bench.home("home-20", 20, 40), ["true"], "40 ms")
    if not options.quick:
        large = bench.home("home-1000", 1000, 2000)
        passes[1] = bench.first_pass("1 GB, 2,000 files", large, "1.15 × baseline, 64 MB", runs=11)
        bench.report("1 GB, 2,000 files", large, [bench.scan, large], "1.2 × baseline, 96 MB")
        passes[3] = bench.first_pass("3 GB, 6,000 files", bench.home("home-3000", 3000, 6000), bound, runs=5)
        data = bench.steady("2,000 files", large, "25 ms")
        bench.appended(large, data, "30 ms")
        bench.steady("20,000 files", bench.home("home-many", 40, 20000), "60 ms")
    bench.short_ones("25 ms", "8 ms")
    print("\nFirst pass by size: " + ", ".join("%g GB %.2f s/GB with %.0f MB" % (size, figures.least / size, figures.memory)
                                             for size, figures in passes.items()) + ".")
    bench.closing()


if __name__ == "__main__":
    main()
