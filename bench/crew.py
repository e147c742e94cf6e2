"""The programs that live on one store, as bench/torture.py treats them: started, killed, and judged as they end."""
import collections
import contextlib
import dataclasses
import random
import re
import subprocess
import sys
import tempfile
import threading
import time

MOST_MEMORY = 64  # MB resident, of any process
WITH_A_WINDOW = 96  # of the desktop application, which has one ready
MOST_REPEATS = 40  # of a line in one process's log
PATIENCE = 60  # seconds, for what never comes
LONGEST_STOP = 150  # seconds that a program may stand still, stopped
RESIDENTS = ("desktop", "one", "two")
COMMANDS = [["index"]] * 5 + [
    ["summary"], ["summary", "--no-index"], ["status"], ["limits"], ["limits", "--refresh"], ["snapshot"], ["doctor"],
    ["report", "--days", "2"], ["audit"], ["refresh"], ["reread", "claude"], ["reread", "grok"], ["statusline"],
    ["preferences", "list"], ["export", "--format", "csv"]]


@dataclasses.dataclass
class Program:
    name: str
    process: subprocess.Popen
    log: object
    is_killed: bool = False


class Crew:
    """The programs over one store: started, killed at random, and looked at as they end. One at a time uses it."""

    def __init__(self, world, desktop, seed, most_kills):
        self.world, self.desktop, self.random, self.most_kills = world, desktop, random.Random(seed), most_kills
        self.living, self.residents, self.lock = [], {}, threading.RLock()
        self.counts, self.peaks, self.lines, self.faults = collections.Counter(), {}, collections.Counter(), []
        # `wrap`: what a program starts by. What a log must say where a resident may end, and where a signal may end it.
        self.wrap, self.extra, self.may_end, self.may_abort = (lambda: []), {}, None, None

    def start(self, name, *words, **options):
        log = tempfile.TemporaryFile(dir=self.world.directory)
        command = [*self.wrap(), *([self.desktop] if name == "desktop" else [self.world.program, *words])]
        with open(self.world.path("prompt.json"), "rb") as prompt:
            process = subprocess.Popen(command, env={**self.world.environment, **self.extra}, stdin=prompt, stderr=log,
                                       cwd=self.world.path("tmp"), **{"stdout": subprocess.DEVNULL, **options})
        program = Program(name, process, log)
        self.living.append(program)
        return program

    def tend(self):
        for name in RESIDENTS:
            if name not in self.residents:
                self.residents[name] = self.start(name, "status", "--follow")

    def turn(self):
        """One of many: a command begins, something is killed, what has ended is looked at."""
        with self.lock:
            self.tend()
            if len(self.living) < len(RESIDENTS) + 3:
                command = self.random.choice(COMMANDS)
                self.start(" ".join(command), *command)
                self.counts["commands"] += 1
        time.sleep(min(self.random.expovariate(20), .3))
        with self.lock:
            if self.counts["kills"] < self.most_kills:
                self.strike()
            self.reap()

    def strike(self):
        commands = [each for each in self.living if each.name not in RESIDENTS]
        victims = commands if commands and self.random.random() < .8 else list(self.residents.values())
        victim = self.random.choice(victims)
        if victim.name == "desktop" and self.random.random() < .5:
            return  # it takes longest to start, and would never get to its work
        self.measure(victim)
        if victim.process.poll() is None:
            self.kill(victim)
            self.counts["kills"] += 1

    def kill(self, program):
        program.is_killed = True
        program.process.kill()
        program.process.wait(PATIENCE)

    def reap(self):
        for program in list(self.living):
            if program.process.poll() is None:
                self.measure(program)
                continue
            self.living.remove(program)
            if self.residents.get(program.name) is program:
                del self.residents[program.name]
            self.judge(program)

    def judge(self, program):
        status, said = program.process.returncode, self.log_of(program)
        if not program.is_killed:
            self.counts["passes"] += program.name == "index" and status == 0
            is_clean = status in (0, 1)
            excuse = self.may_end if is_clean else self.may_abort
            is_excused = bool(excuse) and excuse in said
            self.counts["excused"] += is_excused
            if not is_excused and (program.name in RESIDENTS or not is_clean):
                self.faults.append("%s ended with %d: %s" % (program.name, status, said[-500:]))
        lines = collections.Counter(re.sub(r"\d+", "#", line) for line in said.splitlines())
        self.lines.update(lines)
        for line, times in lines.most_common(1):
            if times > MOST_REPEATS:
                self.faults.append("%s says %d times: %s" % (program.name, times, line))
        self.faults += ["%s: %s" % (program.name, line) for line in lines if "fatal" in line]
        program.log.close()

    @staticmethod
    def log_of(program):
        program.log.seek(0)
        return program.log.read().decode(errors="replace")

    def measure(self, program):
        with contextlib.suppress(OSError, TypeError):  # it has just ended
            with open("/proc/%d/status" % program.process.pid, encoding="utf-8") as file:
                peak = int(re.search(r"VmHWM:\s+(\d+)", file.read())[1]) / 1024
            self.peaks[program.name] = max(peak, self.peaks.get(program.name, 0))
            if peak > (WITH_A_WINDOW if program.name == "desktop" else MOST_MEMORY):
                self.faults.append("%s has had %.0f MB resident" % (program.name, peak))

    def run(self, *command, **options):
        """Waits for its end, which a killer may bring; its status."""
        with self.lock:
            program = self.start(" ".join(command), *command, **options)
        return program.process.wait(LONGEST_STOP + PATIENCE)

    def end(self):
        with self.lock:
            for program in self.living:
                self.measure(program)
                if program.process.poll() is None:
                    self.kill(program)
            self.reap()


class Background(threading.Thread):
    """Does one thing again and again, until it is told to end; holds back what went wrong."""

    def __init__(self, action):
        super().__init__(daemon=True)
        self.action, self.over, self.failure = action, threading.Event(), None
        self.start()

    def run(self):
        try:
            while not self.over.is_set():
                self.action()
        except Exception as error:  # pylint: disable=broad-except # told by `end`
            self.failure = error

    def end(self):
        self.over.set()
        self.join(LONGEST_STOP + 2 * PATIENCE)
        if self.failure or self.is_alive():
            sys.exit("FAILED: the torture itself: %r" % self.failure)


class Exports:
    """Exports again and again: no counter may fall."""

    def __init__(self, crew):
        self.crew, self.counters, self.count, self.turn = crew, {}, 0, threading.Lock()

    def take(self):
        with self.turn:
            output = self.crew.world.path("export.prom")
            if self.crew.run("export", "--host", "h", "--output", output) != 0:
                return False
            with open(output, encoding="utf-8") as file:
                now = dict(re.findall(r"^(tokwatch_\w+_total\{.*\}) (\S+)$", file.read(), re.M))
        now = {name: float(value) for name, value in now.items()}
        self.crew.faults += ["the counter %s fell from %s to %s" % (name, before, now.get(name))
                             for name, before in self.counters.items() if now.get(name, 0) < before]
        self.counters, self.count = now, self.count + 1
        return True

    def again(self):
        self.take()
        time.sleep(.4)

    def tokens(self):
        return int(sum(value for name, value in self.counters.items() if name.startswith("tokwatch_tokens_total")))
