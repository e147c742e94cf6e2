#!/usr/bin/env python3
"""watch_terminal.py PROGRAM DEMO_HOME: `tokwatch watch` on terminals of its own. Shows that the page follows the
terminal's size, that q, signals and even SIGKILL leave the terminal as it was, and that without a terminal there are
lines."""
import fcntl
import os
import pty
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time

DEADLINE = 60  # seconds; what is waited for takes one


def check(what, holds, details=""):
    if not holds:
        sys.exit("FAILED: %s %r" % (what, details))
    print("ok: " + what)


class Page:
    def __init__(self, program, home):
        self.master, slave = pty.openpty()
        self.resize(24, 100)
        self.before = termios.tcgetattr(slave)
        self.slave = slave
        self.text = ""
        environment = {**os.environ, "TERM": "xterm-256color", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
        self.process = subprocess.Popen([program, "watch", "--home", home, "--data-dir", home + "/data"], stdin=slave,
                                        stdout=slave, stderr=slave, env=environment, start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))

    def resize(self, rows, columns):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def wait_until(self, what, holds):
        """Reads what is written until that holds of all of it."""
        end = time.monotonic() + DEADLINE
        while not holds(self.text) and time.monotonic() < end:
            if select.select([self.master], [], [], 0.1)[0]:
                self.text += os.read(self.master, 65536).decode(errors="replace")
        check(what, holds(self.text), self.text[-400:])

    def wait_for(self, words):
        self.wait_until("the page shows " + repr(words), lambda text: words in text)

    def child(self):
        with open("/proc/%d/task/%d/children" % (self.process.pid, self.process.pid), encoding="ascii") as file:
            return int(file.read().split()[0])

    def ends(self, what, status):
        check(what + " ends it", self.process.wait(DEADLINE) == status, self.process.returncode)
        self.wait_for("\x1b[?1049l" if status else "no session bus")
        check("the terminal is as it was", termios.tcgetattr(self.slave) == self.before)


def is_small(text):
    """Whether the last page that is whole is no higher than six lines."""
    _, begins, last = text.rpartition("q ends")[0].rpartition("\x1b[H")
    return begins != "" and last.count("\n") <= 5


def main():
    program, demo_home = map(os.path.abspath, sys.argv[1:3])
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as home:
        os.environ["XDG_CONFIG_HOME"] = home + "/config"
        subprocess.run([sys.executable, demo_home, home], check=True, stdout=subprocess.DEVNULL)
        for what, status, end in (("q", 0, lambda page: os.write(page.master, b"q")),
                                  ("a typed interrupt", 0, lambda page: os.write(page.master, b"\x03")),
                                  ("SIGINT", 0, lambda page: page.process.send_signal(signal.SIGINT)),
                                  ("SIGQUIT", 1, lambda page: page.process.send_signal(signal.SIGQUIT)),
                                  ("SIGTERM", 0, lambda page: page.process.terminate()),
                                  ("SIGKILL", 1, lambda page: os.kill(page.child(), signal.SIGKILL))):
            page = Page(program, home)
            page.wait_for("oday")  # "Today  $4.20", or soon after midnight "No usage today"
            check("what is logged spoils no page", "session bus" not in page.text, page.text)
            page.resize(6, 40)
            page.wait_until("a small page is one", is_small)
            page.text = ""
            os.write(page.master, b"\x1a")
            page.wait_until("the shell's lines are back while it is suspended",
                            lambda text: "\x1b[?1049l" in text and text.rindex("\x1b[?1049h") > text.index("\x1b[?1049l"))
            page.wait_until("a small page is one again", is_small)
            page.resize(3, 40)
            page.wait_until("a lower one has no title", lambda text: text.rpartition("\x1b[H")[2].startswith("\x1b[1mClaude"))
            page.text = ""
            end(page)
            page.ends(what, status)

        lines = subprocess.Popen([program, "watch", "--home", home, "--data-dir", home + "/data"],
                                 stdout=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)
        first = lines.stdout.readline()
        lines.terminate()
        check("without a terminal there are lines", first.strip() != "" and "\x1b" not in first, first)
        check("they end", lines.wait(DEADLINE) == 0, lines.returncode)


if __name__ == "__main__":
    main()
