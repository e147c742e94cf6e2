#!/usr/bin/env python3
"""make_home.py DIR --megabytes N --files F [--days D] [--models M]: a home of a given size for measuring, in the proportions of real logs:
three quarters Claude Code, one quarter Codex; about 150,000 lines in a gigabyte name usage, most bytes are tool output.
A home that was made with the same numbers before is kept."""
import argparse
import json
import os
import random

TEXT = ("the value of this function is read before it is set so the test fails on the second call result return "
        "error path index buffer if (x < 0) { throw std::out_of_range('i'); } ") * 1200


def filler(rng, size):
    start = rng.randrange(len(TEXT) - size)
    return TEXT[start:start + size]


def stamp(rng, day):
    """Months have 28 days; that of day 0 is September 2026, what came before has negative numbers."""
    month = 2026 * 12 + 8 + day // 28
    return "%d-%02d-%02dT%02d:%02d:%02d.%03dZ" % (month // 12, 1 + month % 12, 1 + day % 28, rng.randrange(24),
                                                  rng.randrange(60), rng.randrange(60), rng.randrange(1000))


def claude(rng, session, day, size, models):
    out, got = [], 0
    while got < size:
        lines = []
        if rng.random() < .35:
            key, model = "msg_%024x" % rng.getrandbits(96), rng.choice(models)
            usage = {"input_tokens": rng.randrange(4000), "cache_read_input_tokens": rng.randrange(90000),
                     "cache_creation_input_tokens": 7, "output_tokens": rng.randrange(1, 3000)}
            for _ in range(rng.choice((1, 1, 2, 3))):
                lines.append(json.dumps({
                    "parentUuid": "%032x" % rng.getrandbits(128), "isSidechain": False, "cwd": "/home/u/p",
                    "sessionId": session, "message": {"model": model, "id": key, "content": [
                        {"type": "text", "text": filler(rng, int(rng.paretovariate(1.1) * 150) % 20000)}], "usage": usage},
                    "requestId": "req_%x" % rng.getrandbits(64), "type": "assistant", "timestamp": stamp(rng, day)},
                    separators=(",", ":")))
        else:
            lines.append('{"parentUuid":null,"type":"user","sessionId":"%s","message":{"content":"%s"}}' % (
                session, filler(rng, min(int(rng.paretovariate(.9) * 800), 100000))))
        out += lines
        got += sum(map(len, lines))
    return out


def codex(rng, session, day, size, _):
    out, got = ['{"type":"session_meta","payload":{"id":"%s"}}' % session,
                '{"type":"turn_context","payload":{"model":"gpt-5-codex"}}'], 0
    while got < size:
        kind = rng.random()
        if kind < .6:
            line = '{"timestamp":"%s","type":"response_item","payload":{"content":"%s"}}' % (
                stamp(rng, day), filler(rng, min(int(rng.paretovariate(1) * 300), 40000)))
        elif kind < .8:
            line = ('{"timestamp":"%s","type":"event_msg","payload":{"type":"token_count","rate_limits":{"primary":'
                    '{"used_percent":%.1f,"window_minutes":300,"resets_at":1790000000}}}}') % (
                        stamp(rng, day), rng.random() * 100)
        else:
            line = ('{"timestamp":"%s","type":"token_usage_record","payload":{"response_id":"resp_%024x","usage":'
                    '{"input_tokens":%d,"cached_input_tokens":7,"output_tokens":9}}}') % (
                        stamp(rng, day), rng.getrandbits(96), rng.randrange(7, 50000))
        out.append(line)
        got += len(line)
    return out


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("directory")
    parser.add_argument("--megabytes", type=float, required=True)
    parser.add_argument("--files", type=int, required=True)
    parser.add_argument("--days", type=int, default=60)
    parser.add_argument("--models", type=int, default=2)
    options = parser.parse_args()
    done = os.path.join(options.directory, ".made")
    wanted = "%g %d %d %d" % (options.megabytes, options.files, options.days, options.models)
    if os.path.exists(done) and open(done, encoding="utf-8").read() == wanted:
        return
    models = ["claude-opus-4-1-20250805", "claude-haiku-4-5-20251001"]
    models += ["model-%d" % number for number in range(2, options.models)]
    size = options.megabytes * 1e6 / options.files
    for number in range(options.files):
        rng = random.Random(number)
        session, day = "%032x" % rng.getrandbits(128), number % options.days + min(0, 60 - options.days)
        is_codex = number % 4 == 3
        lines = (codex if is_codex else claude)(rng, session, day, size, models)
        path = os.path.join(options.directory, ".codex/sessions/2026/09/%02d" % (1 + day % 28) if is_codex
                            else ".claude/projects/p%d" % (number % max(1, options.files // 8)), session + ".jsonl")
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
    with open(done, "w", encoding="utf-8") as file:
        file.write(wanted)


if __name__ == "__main__":
    main()
