#!/usr/bin/env python3
"""headless.py PROGRAM: the application without windows as others meet it, as real processes.

It runs in namespaces of its own, where the whole network is a name server and a TLS server of this script's: what is
looked up, and who is called by which name, is all there is. Shows that the refresh signal is heard, that only the two
usage services are contacted and nobody when they are off, and that a login turns up nowhere. Exit status 77 where the
system does not allow such namespaces."""
import datetime
import fcntl
import json
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

HOSTS = {"api.anthropic.com", "chatgpt.com"}
SECRETS = ["sk-ant-PLANTED-1", "rt-PLANTED-2", "PLANTED-3.e30.PLANTED-4"]
DEADLINE = 30  # seconds; nothing here takes more than two


def wait_for(what, condition):
    end = time.monotonic() + DEADLINE
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    sys.exit("FAILED: " + what)


def check(what, holds, details=""):
    if not holds:
        sys.exit("FAILED: %s %s" % (what, details))
    print("ok: " + what)


def children(process):
    with open("/proc/%d/task/%d/children" % (process.pid, process.pid), encoding="ascii") as file:
        return [int(pid) for pid in file.read().split()]


class Network:
    """Answers every name with this machine's address, and every caller with nothing."""

    def __init__(self, directory):
        interface = bytearray(struct.pack("16sh", b"lo", 1))  # up
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
            fcntl.ioctl(control, 0x8914, interface)
        resolv = os.path.join(directory, "resolv.conf")
        with open(resolv, "w", encoding="utf-8") as file:
            file.write("nameserver 127.0.0.1\n")
        subprocess.run(["mount", "--bind", resolv, "/etc/resolv.conf"], check=True)
        self.names, self.greeted, self.received = set(), set(), b""
        self.lookups = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.lookups.bind(("127.0.0.1", 53))
        self.calls = socket.create_server(("127.0.0.1", 443))
        for serve in (self.answer, self.listen):
            threading.Thread(target=serve, daemon=True).start()

    def answer(self):
        while True:
            query, sender = self.lookups.recvfrom(4096)
            labels, at = [], 12
            while query[at]:
                labels.append(query[at + 1:at + 1 + query[at]].decode())
                at += 1 + query[at]
            question = query[12:at + 5]
            self.names.add(".".join(labels))
            is_ipv4 = question[-4:-2] == b"\0\1"
            reply = query[:2] + b"\x81\x80\0\1" + (b"\0\1" if is_ipv4 else b"\0\0") + b"\0\0\0\0" + question
            if is_ipv4:
                reply += b"\xc0\x0c\0\1\0\1\0\0\0\x3c\0\4\x7f\0\0\1"
            self.lookups.sendto(reply, sender)

    def listen(self):
        while True:
            with self.calls.accept()[0] as caller:
                hello = caller.recv(65536)
                self.received += hello
                # The server's name stands in plain text at the front of a TLS conversation.
                self.greeted.update(host for host in re.findall(rb"[a-z0-9.-]+\.[a-z]{2,}", hello))


class World:
    def __init__(self, program, directory):
        self.program, self.directory = program, directory
        self.environment = {"PATH": "/usr/bin:/bin", "TZ": "UTC", "HOME": self.path("home"), "TMPDIR": self.path("tmp"),
                            "DBUS_SESSION_BUS_ADDRESS": os.environ["DBUS_SESSION_BUS_ADDRESS"]}
        os.makedirs(self.path("tmp"))
        self.output = open(self.path("output"), "ab")
        self.command_lines = b""
        self.spawned = []

    def path(self, relative):
        return os.path.join(self.directory, relative)

    def write(self, relative, text):
        os.makedirs(os.path.dirname(self.path(relative)), exist_ok=True)
        with open(self.path(relative), "w", encoding="utf-8") as file:
            file.write(text)

    def plant_logins(self):
        access, refresh, codex = SECRETS
        self.write("home/.claude/.credentials.json", json.dumps({"claudeAiOauth": {
            "accessToken": access, "refreshToken": refresh, "expiresAt": 4102444800000, "subscriptionType": "max"}}))
        self.write("home/.codex/auth.json", json.dumps({"tokens": {"access_token": codex, "account_id": "account"}}))

    def spawn(self, *arguments, trace=None):
        command, environment = [self.program, *arguments], self.environment
        if trace:
            command = ["strace", "-f", "-qq", "-e", "trace=network", "-o", self.path(trace), *command]
            # The address sanitizer's search for leaks needs to be the tracer itself.
            environment = {**environment, "ASAN_OPTIONS": "detect_leaks=0"}
        process = subprocess.Popen(command, env=environment, cwd=self.path("tmp"), stdout=self.output,
                                   stderr=self.output)
        self.spawned.append(process)
        return process

    def end(self):
        for process in self.spawned:
            if process.poll() is None:
                for pid in [*children(process), process.pid]:
                    os.kill(pid, signal.SIGKILL)
                process.wait()

    def run(self, *arguments, trace=None):
        return self.spawn(*arguments, trace=trace).wait(DEADLINE)

    def follow(self, trace=None):
        """A follower that has printed its first line."""
        before = os.path.getsize(self.path("output"))
        process = self.spawn("status", "--follow", "--format", "json", trace=trace)
        wait_for("a first line", lambda: b'"tooltip"' in self.printed()[before:])
        with open("/proc/%d/cmdline" % process.pid, "rb") as file:
            self.command_lines += file.read()
        return process

    def printed(self):
        with open(self.path("output"), "rb") as file:
            return file.read()

    def snapshot(self):
        try:
            with open(self.path("home/.local/share/Q7K2M9X4PL.app.tokwatch/snapshot.json"), encoding="utf-8") as file:
                return json.load(file)
        except FileNotFoundError:
            return {"providers": []}

    def tokens(self, provider):
        return sum(each["tokens30d"] for each in self.snapshot()["providers"] if each["id"] == provider)

    def internet(self, trace):
        """The ports and addresses that anything of a trace was connected or sent to, but for local sockets."""
        found = set()
        with open(self.path(trace), encoding="utf-8", errors="replace") as file:
            for line in file:
                if re.match(r"\d+ +(connect|send\w+)\(", line):
                    found.update(re.findall(r"AF_INET6?, .*?port=htons\((\d+)\).*?\"([^\"]+)\"", line))
        return found


def stop(process):
    # Below a tracer it is the tracer's child that is to end.
    for pid in children(process) or [process.pid]:
        os.kill(pid, signal.SIGTERM)
    check("a signal ends the follower cleanly", process.wait(DEADLINE) == 0)


def now():
    return datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def claude_line(message):
    return json.dumps({"type": "assistant", "timestamp": now(), "sessionId": "s", "message": {
        "id": message, "model": "claude-opus-4-1", "usage": {"input_tokens": 10, "output_tokens": 5}}}) + "\n"


def show_contacts(world, network):
    world.plant_logins()
    world.write("home/.claude/projects/p/a.jsonl", claude_line("one"))
    follower = world.follow(trace="trace-on")
    wait_for("both services are called", lambda: len(network.greeted) >= 2)
    stop(follower)
    check("limits --refresh has nothing to show", world.run("limits", "--refresh", "--json") == 1)
    check("only the two services are looked up", network.names == HOSTS, network.names)
    check("only they are called", network.greeted == {host.encode() for host in HOSTS}, network.greeted)
    check("all else is on this machine's own network",
          world.internet("trace-on") == {("53", "127.0.0.1"), ("443", "127.0.0.1")}, world.internet("trace-on"))


def show_silence(world, network):
    network.names.clear()
    network.greeted.clear()
    world.run("preferences", "set", "claudeLiveLimits", "false")
    world.run("preferences", "set", "disabledProviders", "codex")
    follower = world.follow(trace="trace-off")
    before = world.tokens("claude")
    world.write("home/.claude/projects/p/b.jsonl", claude_line("two"))
    wait_for("the new line is counted", lambda: world.tokens("claude") > before)
    stop(follower)
    commands = [["index"], ["summary"], ["reread", "claude"], ["limits"], ["limits", "--refresh"], ["status"],
                ["status", "--format", "waybar"], ["snapshot"], ["doctor"], ["refresh"], ["preferences", "list"]]
    for number, command in enumerate(commands):
        world.run(*command, trace="trace-%d" % number)
    traces = ["trace-off"] + ["trace-%d" % number for number in range(len(commands))]
    sizes = [os.path.getsize(world.path(trace)) for trace in traces]
    check("the tracer saw D-Bus", max(sizes) > 0, sizes)
    contacted = set().union(*(world.internet(trace) for trace in traces)) | network.names
    check("with live limits off nobody is contacted", not contacted, contacted)


def show_refresh(world):
    follower = world.follow()
    wait_for("the first pass", lambda: world.tokens("claude"))
    # A directory that was missing at the start is looked for every five minutes only.
    world.write("home/.grok/sessions/a/usage.json", json.dumps({"sessionId": "a", "turns": [{
        "turnNumber": 1, "endedAt": now(), "modelUsage": {"grok-4": {"inputTokens": 10, "outputTokens": 5}}}]}))
    subprocess.run(["dbus-send", "--session", "--type=signal", "/any", "app.tokwatch.refresh"], check=True)
    wait_for("dbus-send makes the follower refresh", lambda: world.tokens("grok"))
    print("ok: dbus-send makes the follower refresh")
    world.run("preferences", "set", "disabledProviders", "")
    world.write("home/.codex/sessions/2026/a.jsonl", "".join(json.dumps(line) + "\n" for line in [
        {"timestamp": now(), "type": "session_meta", "payload": {"id": "c"}},
        {"timestamp": now(), "type": "turn_context", "payload": {"model": "gpt-5.4"}},
        {"timestamp": now(), "type": "token_usage_record", "payload": {"response_id": "r", "session_id": "c", "usage": {
            "input_tokens": 10, "cached_input_tokens": 0, "output_tokens": 5, "reasoning_output_tokens": 0}}}]))
    check("tokwatch refresh finds the bus", world.run("refresh") == 0)
    wait_for("tokwatch refresh makes it refresh", lambda: world.tokens("codex"))
    print("ok: tokwatch refresh makes it refresh")
    return follower


def threads(process):
    names = set()
    for thread in os.listdir("/proc/%d/task" % process.pid):
        with open("/proc/%d/task/%s/comm" % (process.pid, thread), encoding="utf-8") as file:
            names.add(file.read().strip())
    return names


def show_sharing(world, working):
    idle = world.follow()
    check("of two followers one works", "indexer" in threads(working) and "indexer" not in threads(idle))
    stop(working)
    before = world.tokens("claude")
    world.write("home/.claude/projects/p/c.jsonl", claude_line("three"))
    world.run("refresh")
    wait_for("the other takes over", lambda: world.tokens("claude") > before)
    print("ok: the other takes over")
    return idle


def show_secrecy(world, network, follower):
    with open("/proc/%d/limits" % follower.pid, encoding="utf-8") as file:
        limit = re.search(r"Max core file size +(\S+) +(\S+)", file.read()).groups()
    check("memory is never dumped", limit == ("1", "1"), limit)
    os.kill(follower.pid, signal.SIGABRT)
    follower.wait(DEADLINE)
    check("not even in a crash", not [name for name in os.listdir(world.path("tmp")) if "core" in name])
    planted = {world.path("home/.claude/.credentials.json"), world.path("home/.codex/auth.json")}
    searched = 0
    for directory, _, names in os.walk(world.directory):
        for path in (os.path.join(directory, name) for name in names):
            if path in planted or not os.path.isfile(path):
                continue
            with open(path, "rb") as file:
                data = file.read()
            searched += 1
            check_secret_free(path, data)
    check_secret_free("the command lines", world.command_lines)
    check_secret_free("what was sent without encryption", network.received)
    check("the logins are in none of %d files, no output and no argument" % searched, searched > 15)


def check_secret_free(where, data):
    for secret in SECRETS:
        if secret.encode() in data:
            sys.exit("FAILED: a login is in " + where)


def main():
    program = os.path.realpath(sys.argv[1])
    if sys.argv[2:] != ["inside"]:
        namespaces = ["unshare", "--net", "--mount"] + ([] if os.getuid() == 0 else ["--map-root-user"])
        if subprocess.run([*namespaces, "true"], stderr=subprocess.DEVNULL, check=False).returncode != 0:
            print("skipped: this system allows no namespaces")
            sys.exit(77)
        inside = [sys.executable, os.path.realpath(__file__), program, "inside"]
        sys.exit(subprocess.run([*namespaces, "dbus-run-session", "--", *inside], check=False).returncode)
    with tempfile.TemporaryDirectory() as directory:
        network = Network(directory)
        world = World(program, directory)
        try:
            show_contacts(world, network)
            show_silence(world, network)
            show_secrecy(world, network, show_sharing(world, show_refresh(world)))
        finally:
            world.end()


if __name__ == "__main__":
    main()
