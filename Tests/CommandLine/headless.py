#!/usr/bin/env python3
"""headless.py PROGRAM [DESKTOP]: the application as others meet it, as real processes without a screen.

It runs in namespaces of its own, where the whole network is a name server and a TLS server of this script's: what is
looked up, and who is asked what, is all there is. Shows that the desktop application asks nobody before its welcome is
finished, that the refresh signal is heard, that only the two usage services are contacted, each with its own login, and
nobody when they are off, and that a login and what an assistant wrote turn up nowhere. Exit status 77 where the system
does not allow such namespaces."""
import datetime
import fcntl
import json
import os
import pathlib
import re
import signal
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import threading
import time

HOSTS = {"api.anthropic.com", "chatgpt.com"}
SECRETS = ["sk-ant-PLANTED-1", "rt-PLANTED-2", "PLANTED-3.e30.PLANTED-4"]
ANSWER = "PLANTED-4 is what the assistant wrote"
DEADLINE = 120  # seconds, the bound for what never comes; on an idle machine nothing here takes more than two


def wait_for(what, condition):
    end = time.monotonic() + DEADLINE
    while time.monotonic() < end:
        value = condition()
        if value:
            print("ok: " + what)
            return value
        time.sleep(0.02)
    sys.exit("FAILED: " + what)


def check(what, holds, details=""):
    if not holds:
        sys.exit("FAILED: %s %s" % (what, details))
    print("ok: " + what)


def children(process):
    return [int(pid) for pid in pathlib.Path("/proc/%d/task/%d/children" % (process.pid, process.pid)).read_text().split()]


def make_certificate(directory):
    """A server certificate for both services that the processes here trust."""
    authorities = os.path.join(directory, "authorities")
    os.makedirs(authorities)
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-keyout", "server.key", "-out", "authorities/server.pem", "-days", "2", "-subj", "/CN=server",
                    "-addext", "subjectAltName=" + ",".join("DNS:" + host for host in sorted(HOSTS))],
                   cwd=directory, check=True, capture_output=True)
    name = subprocess.check_output(["openssl", "x509", "-hash", "-noout", "-in", "server.pem"], cwd=authorities, text=True)
    os.symlink("server.pem", os.path.join(authorities, name.strip() + ".0"))
    subprocess.run(["mount", "--bind", authorities, "/etc/ssl/certs"], check=True)


# What both services might say. Whoever has it need not ask again for five minutes, however loaded the machine is.
LIMITS = json.dumps({"five_hour": {"utilization": 58}, "plan_type": "plus", "rate_limit": {
    "primary_window": {"used_percent": 58, "limit_window_seconds": 18000}}})


class Network:
    """Answers every name with this machine's address, and every question with the limits."""

    def __init__(self, directory):
        make_certificate(directory)
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(os.path.join(directory, "authorities/server.pem"),
                                     os.path.join(directory, "server.key"))
        interface = bytearray(struct.pack("16sh", b"lo", 1))  # up
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
            fcntl.ioctl(control, 0x8914, interface)
        resolv = os.path.join(directory, "resolv.conf")
        pathlib.Path(resolv).write_text("nameserver 127.0.0.1\n", encoding="utf-8")
        subprocess.run(["mount", "--bind", resolv, "/etc/resolv.conf"], check=True)
        self.names, self.greeted, self.received, self.requests = set(), set(), b"", []
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
                hello = caller.recv(65536, socket.MSG_PEEK)
                self.received += hello
                # The server's name stands in plain text at the front of a TLS conversation.
                self.greeted.update(host for host in re.findall(rb"[a-z0-9.-]+\.[a-z]{2,}", hello))
                try:
                    with self.context.wrap_socket(caller, server_side=True) as conversation:
                        self.requests.append(conversation.recv(65536).decode())
                        conversation.sendall(("HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n%s" % (len(LIMITS), LIMITS)).encode())
                except OSError:
                    pass  # the caller went away

    def is_untouched(self):
        return not (self.names or self.greeted or self.requests)


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
        pathlib.Path(self.path(relative)).write_text(text, encoding="utf-8")

    def read(self, relative):
        return pathlib.Path(self.path(relative)).read_bytes()

    def plant_logins(self):
        access, refresh, codex = SECRETS
        self.write("home/.claude/.credentials.json", json.dumps({"claudeAiOauth": {
            "accessToken": access, "refreshToken": refresh, "expiresAt": 4102444800000, "subscriptionType": "max"}}))
        self.write("home/.codex/auth.json", json.dumps({"tokens": {"access_token": codex, "account_id": "account"}}))

    def spawn(self, *arguments, trace=None):
        return self.start([self.program, *arguments], self.environment, trace)

    def start(self, command, environment, trace=None):
        if trace:
            command = ["strace", "-f", "-qq", "-ttt", "-e", "trace=network,openat", "-o", self.path(trace), *command]
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
        self.command_lines += self.read("/proc/%d/cmdline" % process.pid)
        return process

    def printed(self):
        return self.read("output")

    def snapshot(self):
        try:
            return json.loads(self.read("home/.local/share/Q7K2M9X4PL.app.tokwatch/snapshot.json"))
        except FileNotFoundError:
            return {"providers": []}

    def tokens(self, provider):
        return sum(each["tokens30d"] for each in self.snapshot()["providers"] if each["id"] == provider)

    def internet(self, trace):
        """The ports and addresses that anything of a trace was connected or sent to, but for local sockets."""
        found = set()
        for line in self.traced(trace):
            if re.match(r"\d+ +[\d.]+ (connect|send\w+)\(", line):
                found.update(re.findall(r"AF_INET6?, .*?port=htons\((\d+)\).*?\"([^\"]+)\"", line))
        return found

    def login_reads(self, trace):
        """The moments, in seconds since 1970, at which a trace has a login's file opened."""
        return [float(line.split()[1]) for line in self.traced(trace) if re.search(r"credentials\.json|auth\.json", line)]

    def traced(self, trace):
        return self.read(trace).decode(errors="replace").splitlines()


def stop(process):
    # Below a tracer it is the tracer's child that is to end.
    for pid in children(process) or [process.pid]:
        os.kill(pid, signal.SIGTERM)
    check("a signal ends it cleanly", process.wait(DEADLINE) == 0)


def now():
    return datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def claude_line(message):
    return json.dumps({"type": "assistant", "timestamp": now(), "sessionId": "s", "message": {
        "id": message, "model": "claude-opus-4-1", "content": [{"type": "text", "text": ANSWER}],
        "usage": {"input_tokens": 10, "output_tokens": 5}}}) + "\n"


def codex_line(response, moment):
    return json.dumps({"timestamp": moment, "type": "token_usage_record", "payload": {
        "response_id": response, "session_id": response, "usage": {"input_tokens": 7, "output_tokens": 5}}}) + "\n"


def show_consent(world, network, program):
    """The desktop application asks nobody before its welcome is finished, whoever asks it to."""
    world.plant_logins()
    world.write("home/.claude/projects/p/a.jsonl", claude_line("one"))
    desktop = world.start([program], {**world.environment, "QT_QPA_PLATFORM": "offscreen"}, trace="trace-desktop")
    wait_for("the desktop application reads the logs", lambda: world.tokens("claude"))
    before = world.tokens("claude")
    world.write("home/.claude/projects/p/b.jsonl", claude_line("two"))
    world.run("refresh")
    wait_for("it refreshes", lambda: world.tokens("claude") > before)
    check("nobody is asked before the welcome is finished", network.is_untouched(), network.requests)
    consent = time.time()
    world.run("preferences", "set", "hasCompletedOnboarding", "true")
    wait_for("both services are asked once it is", lambda: len(network.requests) >= 2)
    stop(desktop)
    reads = world.login_reads("trace-desktop")
    check("no login was read before", reads and min(reads) > consent, reads)
    for host, own, other in (("api.anthropic.com", SECRETS[0], SECRETS[2]), ("chatgpt.com", SECRETS[2], SECRETS[0])):
        mine = [request for request in network.requests if re.search("^host: *" + host, request, re.M | re.I)]
        check("%s gets its own login only" % host, mine and own in mine[0] and other not in "".join(mine))
    check("no refresh token is sent", not [request for request in network.requests if SECRETS[1] in request])
    network.names.clear()
    network.greeted.clear()
    network.requests.clear()


def show_contacts(world, network):
    world.plant_logins()
    world.write("home/.claude/projects/p/a.jsonl", claude_line("one"))
    follower = world.follow(trace="trace-on")
    wait_for("both answers are shown", lambda: b"Claude \xc2\xb7 Session 42% left\\nCodex \xc2\xb7 Session 42%" in world.printed())
    stop(follower)
    stop(world.follow())
    check("limits --refresh shows what they said", world.run("limits", "--refresh", "--json") == 0
          and world.printed().count(b'"usedFraction":0.58') == 2, world.printed())
    check("a restart and a command ask nobody again", len(network.requests) == 2, network.requests)
    commands = [world.spawn("limits", "--refresh", "--data-dir", world.path("elsewhere")) for _ in range(8)]
    check("of commands started at once each ends", {command.wait(DEADLINE) for command in commands} <= {0, 1})
    check("and together they ask each service once", len(network.requests) == 4, network.requests)
    headers = {line.split(":")[0] for request in network.requests for line in request.split("\r\n")[1:] if line}
    check("nothing else is said to them", headers == {
        "Host", "Authorization", "anthropic-beta", "ChatGPT-Account-Id", "User-Agent", "Connection"}, headers)
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
    check("the tracer saw D-Bus", any(b"AF_UNIX" in world.read(trace) for trace in traces))
    contacted = set().union(*(world.internet(trace) for trace in traces)) | network.names
    check("with live limits off nobody is contacted", not contacted, contacted)


def show_bounds(world):
    follower = subprocess.Popen(["sh", "-c", "exec %s status --follow 2>&-" % world.program], env=world.environment,
                                stdout=subprocess.PIPE)
    world.spawned.append(follower)
    follower.stdout.readline()
    messages = os.readlink("/proc/%d/fd/2" % follower.pid)
    check("nothing else gets a closed standard error's messages", messages == "/dev/null", messages)
    follower.stdout.close()
    check("a follower whose bar has gone ends", follower.wait(DEADLINE) == 1)
    for number in range(9):
        os.makedirs(world.path("home/.claude/projects/p%d" % number))
    few = "echo 5 >/proc/sys/user/max_inotify_watches && exec %s status --follow" % world.program
    follower = world.start(["unshare", "--user", "--map-root-user", "sh", "-c", few], world.environment)
    wait_for("too many folders are noticed", lambda: b"more log folders than can be watched" in world.printed())
    stop(follower)


def show_refresh(world):
    follower = world.follow()
    wait_for("the first pass", lambda: world.tokens("claude"))
    # A directory that was missing at the start is looked for every five minutes only.
    world.write("home/.grok/sessions/a/usage.json", json.dumps({"sessionId": "a", "turns": [{
        "turnNumber": 1, "endedAt": now(), "modelUsage": {"grok-4": {"inputTokens": 10, "outputTokens": 5}}}]}))
    subprocess.run(["dbus-send", "--session", "--type=signal", "/any", "app.tokwatch.refresh"], check=True)
    wait_for("dbus-send makes the follower refresh", lambda: world.tokens("grok"))
    world.run("preferences", "set", "disabledProviders", "")
    world.write("home/.codex/sessions/2026/a.jsonl", codex_line("r", now()))
    check("tokwatch refresh finds the bus", world.run("refresh") == 0)
    wait_for("tokwatch refresh makes it refresh", lambda: world.tokens("codex"))
    return follower


def threads(process):
    # Which does not mind that one ends meanwhile.
    return set(subprocess.check_output(["ps", "-L", "-o", "comm=", "-p", str(process.pid)], text=True).splitlines())


def show_sharing(world, working):
    idle = world.follow()
    check("of two followers one works", "directory-watch" in threads(working) and "directory-watch" not in threads(idle))
    stop(working)
    before = world.tokens("claude")
    world.write("home/.claude/projects/p/c.jsonl", claude_line("three"))
    world.run("refresh")
    wait_for("the other takes over", lambda: world.tokens("claude") > before)
    return idle


def show_secrecy(worlds, network, follower):
    limits = pathlib.Path("/proc/%d/limits" % follower.pid).read_text(encoding="utf-8")
    limit = re.search(r"Max core file size +(\S+) +(\S+)", limits).groups()
    check("memory is never dumped", limit == ("1", "1"), limit)
    os.kill(follower.pid, signal.SIGABRT)
    follower.wait(DEADLINE)
    searched = 0
    for world in worlds:
        check("not even in a crash", not [name for name in os.listdir(world.path("tmp")) if "core" in name])
        planted = {world.path("home/.claude/.credentials.json"), world.path("home/.codex/auth.json")}
        for directory, _, names in os.walk(world.directory):
            for path in (os.path.join(directory, name) for name in names):
                if path in planted or "/.claude/projects/" in path or not os.path.isfile(path):
                    continue
                searched += 1
                check_secret_free(path, world.read(path))
        check_secret_free("the command lines", world.command_lines)
    check_secret_free("what was sent without encryption", network.received)
    check("the logins and what an assistant wrote are in none of %d files, no output and no argument" % searched, searched > 15)


def check_secret_free(where, data):
    for secret in [*SECRETS, ANSWER]:
        if secret.encode() in data:
            sys.exit("FAILED: a login or an answer is in " + where)


def in_namespaces(command, *kinds):
    """Runs a command in namespaces of its own and answers its exit status, 77 where the system does not allow them."""
    namespaces = ["setpriv", "--pdeathsig", "KILL", "unshare", *kinds] + ([] if os.getuid() == 0 else ["--map-root-user"])
    trial = subprocess.run([*namespaces, "true"], stderr=subprocess.PIPE, text=True, check=False)
    if trial.returncode != 0:
        print("skipped: this system allows no namespaces: " + trial.stderr.strip())
        return 77
    return subprocess.run([*namespaces, *command], check=False).returncode


def enter_namespaces(script):
    """Runs the script again in namespaces and on a bus of its own, and ends with it; answers the programs once there."""
    programs = [os.path.realpath(path) for path in sys.argv[1:] if path != "inside"]
    if sys.argv[-1] != "inside":
        inside = ["dbus-run-session", "--", sys.executable, os.path.realpath(script), *programs, "inside"]
        sys.exit(in_namespaces(inside, "--net", "--mount"))
    return programs


def main():
    programs = enter_namespaces(__file__)
    with tempfile.TemporaryDirectory() as directory:
        network = Network(directory)
        worlds = [World(programs[0], os.path.join(directory, name)) for name in ("first", "second")]
        try:
            for desktop in programs[1:]:
                show_consent(worlds[1], network, desktop)
            world = worlds[0]
            show_contacts(world, network)
            show_silence(world, network)
            show_bounds(world)
            show_secrecy(worlds, network, show_sharing(world, show_refresh(world)))
        finally:
            for world in worlds:
                world.end()


if __name__ == "__main__":
    main()
