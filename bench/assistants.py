"""What assistants do to their logs, and an account of it: threads that write responses in the forms of Claude Code, Codex
and Grok, torn into pieces as a reader may meet them, and note each one that is finished."""
import collections
import contextlib
import dataclasses
import datetime
import json
import os
import random
import shutil
import threading
import time


MODEL = "claude-opus-4-1-20250805"


def stamp(moment=None):
    """In UTC, to the millisecond; `moment` in seconds since 1970, now where it is absent."""
    moment = time.time() if moment is None else moment
    return time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(moment)) + ".%03dZ" % (moment % 1 * 1000)


def claude_line(session, key, usage, reason, moment=None, text="", sidechain=False, model=MODEL):
    return json.dumps({"parentUuid": None, "isSidechain": sidechain, "sessionId": session, "message": {
        "model": model, "id": key, "role": "assistant", "content": [{"type": "text", "text": text}], "stop_reason": reason,
        "usage": usage}, "type": "assistant", "timestamp": stamp(moment)}) + "\n"


@dataclasses.dataclass
class Response:
    """`counts` in the order of the columns of `daily`; `day` is None where the moment's day in UTC is meant."""
    provider: str
    model: str
    session: str
    moment: float
    counts: list
    usd: float = None
    day: str = None
    is_gone: bool = False

    def day_in(self, zone_counts):
        utc = datetime.datetime.fromtimestamp(self.moment, datetime.timezone.utc).strftime("%Y-%m-%d")
        return self.day if zone_counts and self.day else utc


class Account:
    """The finished responses by key: what must be in the store, each once."""

    def __init__(self):
        self.responses, self.lock = {}, threading.Lock()

    def add(self, key, response):
        with self.lock:
            self.responses[key] = response

    def forget(self, keys):
        """Nobody who reads the logs from now on can find them."""
        with self.lock:
            for key in keys:
                self.responses[key].is_gone = True

    def tables(self, with_gone=True, zone_counts=True):
        """What `daily`, `seen` and `sessions` hold of it; without those whose lines are gone for one who reads anew."""
        daily, seen, sessions = collections.defaultdict(lambda: [[0] * 6, None]), [], {}
        with self.lock:
            for key, each in self.responses.items():
                if each.is_gone and not with_gone:
                    continue
                day = each.day_in(zone_counts)
                row = daily[each.provider, each.model, day]
                row[0] = [a + b for a, b in zip(row[0], each.counts)]
                if each.usd is not None:
                    row[1] = (row[1] or 0) + each.usd
                seen.append((key, day))
                session = (each.provider, each.session)
                sessions[session] = min(day, sessions.get(session, day))
        return {"daily": sorted((*key, *counts, usd if usd is None else round(usd, 6)) for key, (counts, usd) in daily.items()),
                "seen": sorted(seen), "sessions": sorted((*key, day) for key, day in sessions.items())}


class Log:
    """A file that several may write into by turns, a line each."""

    def __init__(self, path, choice):
        self.path, self.random, self.lock, self.keys, self.moves = path, choice, threading.RLock(), [], 0
        self.open = 0  # responses that have begun and are not finished
        os.makedirs(os.path.dirname(path), exist_ok=True)

    def append(self, text):
        """In up to three pieces."""
        data = text.encode()
        cuts = sorted(self.random.randrange(len(data)) for _ in range(self.random.choice((0, 0, 1, 2))))
        with self.lock:
            for begin, end in zip([0, *cuts], [*cuts, len(data)]):
                with open(self.path, "ab") as file:
                    file.write(data[begin:end])

    def move(self):
        """Another file takes its name where no response goes on in it, or the same lines in another file do."""
        with self.lock:
            if not os.path.exists(self.path):
                return
            if self.open == 0 and self.random.random() < .5:
                self.moves += 1
                os.rename(self.path, self.path.replace(".jsonl", "-%d.jsonl" % self.moves))
                self.keys = []
            else:
                shutil.copy(self.path, self.path + ".new")
                os.replace(self.path + ".new", self.path)

    def tear(self):
        """Half a line that is taken back, as after a crash of the machine."""
        with self.lock:
            size = os.path.getsize(self.path) if os.path.exists(self.path) else 0
            self.append('{"type":"assistant","timestamp":"' + stamp())
            time.sleep(self.random.uniform(0, .2))
            os.truncate(self.path, size)

    def cut(self, account):
        """Cuts whole responses off the end, all of them or half; what they told stays in the account as gone."""
        with self.lock:
            if not os.path.exists(self.path):
                return
            with open(self.path, "rb") as file:
                lines = file.readlines()
            kept = lines[:whole_responses(lines[:len(lines) // 2])] if self.random.random() < .5 else []
            os.truncate(self.path, sum(map(len, kept)))
            text = b"".join(kept).decode()
            here, self.keys = self.keys, [key for key in self.keys if '"%s"' % key in text]
            account.forget(set(here) - set(self.keys))


def whole_responses(lines):
    """How many of the lines, at most, end with no response open."""
    still_open, whole = set(), 0
    for number, line in enumerate(lines, 1):
        message = json.loads(line)["message"]
        if "id" in message:
            (still_open.discard if message["stop_reason"] else still_open.add)(message["id"])
        whole = whole if still_open else number
    return whole


class Assistant(threading.Thread):
    """Responds again and again, until it is `ended`; whoever holds `turn` stands between two responses. `ahead`: seconds
    that this machine's clock is ahead."""
    ahead = 0

    def __init__(self, home, number, account, seed):
        super().__init__(daemon=True)
        self.home, self.number, self.account, self.random = home, number, account, random.Random(seed)
        self.turn, self.ended, self.count, self.moving = threading.Lock(), threading.Event(), 0, False
        self.failure = None

    def run(self):
        try:
            while not self.ended.is_set():
                with self.turn:
                    self.count += 1
                    self.respond()
                time.sleep(self.random.uniform(0, .3))
        except Exception as error:  # pylint: disable=broad-except # a thread's own end would go unnoticed
            self.failure = error

    def moment(self):
        return int((time.time() + Assistant.ahead) * 1000) / 1000

    def counts(self, lifetimes=True):
        choice = self.random.randrange
        return [choice(4000), choice(90000), choice(900), choice(900) if lifetimes else 0, choice(9, 3000), choice(9)]


class Claude(Assistant):
    """A line for each step of a response, the last with the final count; others write between them."""

    def __init__(self, home, number, account, seed, logs):
        super().__init__(home, number, account, seed)
        path = os.path.join(home, ".claude/projects/p%d/log%d.jsonl" % (number // 4, number // 2))
        self.log = logs.setdefault(path, Log(path, random.Random(seed)))

    def respond(self):
        key, session = "msg_%d_%d" % (self.number, self.count), "claude-%d" % self.number
        model = self.random.choice((MODEL, "claude-haiku-4-5-20251001", "claude-unheard-of"))
        counts, steps = self.counts(), self.random.randint(1, 4)
        with self.log.lock:
            self.log.open += 1
        for step in range(1, steps + 1):
            is_last, moment = step == steps, self.moment()
            text = "x" * (int(self.random.paretovariate(1) * 200) % 60000)
            self.log.append(claude_line(session, key, self.usage(counts, is_last), "end_turn" if is_last else None, moment,
                                        text, model=model))
            if not is_last:
                self.between()
        with self.log.lock:
            self.log.open -= 1
            self.log.keys.append(key)
            self.account.add(key, Response("claude", model, session, moment, counts))
        self.stir()

    def usage(self, counts, is_last):
        output = counts[4] if is_last else self.random.choice((1, counts[4] // 2 + 1))
        return {"input_tokens": counts[0], "cache_read_input_tokens": counts[1], "output_tokens": output,
                "cache_creation": {"ephemeral_5m_input_tokens": counts[2], "ephemeral_1h_input_tokens": counts[3]},
                "output_tokens_details": {"thinking_tokens": counts[5] if is_last else 0}}

    def between(self):
        if self.random.random() < .3:
            self.log.append('{"type":"user","message":{"content":"%s"}}\n' % ("y" * self.random.randrange(50000)))
        time.sleep(self.random.uniform(0, .2))
        self.stir()

    def stir(self):
        if self.moving and self.random.random() < .3:
            self.random.choice((self.log.move, self.log.tear))()


class Codex(Assistant):
    """A file for each session of some responses, which goes to the archive when it is over."""
    log = None

    def respond(self):
        if self.log is None or self.random.random() < .1:
            self.begin()
        if self.random.random() < .2:
            self.model = self.random.choice(("gpt-5-codex", "gpt-5.1"))
            self.append("turn_context", {"model": self.model})
        key, moment, counts = "resp_%d_%d" % (self.number, self.count), self.moment(), self.counts(lifetimes=False)
        self.append("event_msg", {"type": "token_count", "rate_limits": {"primary": {
            "used_percent": self.count % 90, "window_minutes": 300, "resets_at": moment + 9000}}})
        self.append("token_usage_record", {"response_id": key, "usage": {
            "input_tokens": counts[0] + counts[1], "cached_input_tokens": counts[1], "cache_write_input_tokens": counts[2],
            "output_tokens": counts[4], "reasoning_output_tokens": counts[5]}}, moment)
        self.account.add(key, Response("codex", self.model, self.session, moment, counts))

    def begin(self):
        if self.log and self.random.random() < .7:
            archive = os.path.join(self.home, ".codex/archived_sessions")
            os.makedirs(archive, exist_ok=True)
            os.rename(self.log.path, os.path.join(archive, os.path.basename(self.log.path)))
        self.session, self.model = "codex-%d-%d" % (self.number, self.count), "gpt-5-codex"
        folder = os.path.join(self.home, ".codex/sessions/2026/%d" % (self.count % 9))
        self.log = Log(os.path.join(folder, self.session + ".jsonl"), self.random)
        self.append("session_meta", {"id": self.session, "cwd": "/src"})
        self.append("turn_context", {"model": self.model})

    def append(self, kind, payload, moment=None):
        self.log.append(json.dumps({"timestamp": stamp(moment or self.moment()), "type": kind, "payload": payload}) + "\n")


class Grok(Assistant):
    """A document for each session, written anew at each turn: in place, or beside and over it."""
    turns = ()

    def respond(self):
        if not self.turns or len(self.turns) > 20:
            self.session, self.turns = "grok-%d-%d" % (self.number, self.count), []
        counts, ticks = self.counts(lifetimes=False), self.random.randrange(10 ** 9)
        counts[5] = 0
        turn = {"turnNumber": len(self.turns) + 1, "modelUsage": {"grok-4": {
            "inputTokens": counts[0] + counts[1], "cachedReadTokens": counts[1], "cacheCreationTokens": counts[2],
            "outputTokens": counts[4], "costUsdTicks": ticks}}}
        self.turns.append(turn)
        self.write()
        time.sleep(self.random.uniform(0, .2))
        moment = self.moment()
        turn["endedAt"] = stamp(moment)
        self.write()
        key = "%s#%d#grok-4" % (self.session, turn["turnNumber"])
        self.account.add(key, Response("grok", "grok-4", self.session, moment, counts, ticks * 1e-10))

    def write(self):
        path = os.path.join(self.home, ".grok/sessions/%s/usage.json" % self.session)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        text, beside = json.dumps({"sessionId": self.session, "turns": self.turns}), self.random.random() < .5
        half = self.random.randrange(len(text))
        with open(path + ".new" if beside else path, "w", encoding="utf-8") as file:
            file.write(text[:half])
            file.flush()
            file.write(text[half:])
        if beside:
            os.replace(path + ".new", path)


def team(home, account, seed):
    """Four of Claude at two logs, two of Codex, two of Grok."""
    logs = {}
    return [*(Claude(home, number, account, seed * 100 + number, logs) for number in range(4)),
            *(Codex(home, number, account, seed * 100 + number) for number in range(4, 6)),
            *(Grok(home, number, account, seed * 100 + number) for number in range(6, 8))]


@contextlib.contextmanager
def between_responses(assistants):
    """While all of them wait, each response finished."""
    with contextlib.ExitStack() as stack:
        for each in assistants:
            stack.enter_context(each.turn)
        yield
