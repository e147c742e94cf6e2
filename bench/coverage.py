#!/usr/bin/env python3
"""coverage.py REPORT [--lines DIR …]: of gcovr's JSON report, a Markdown table of the rooms with the lines and branches that
were reached; or of the files below the directories, which lines were not."""
import collections
import json
import os
import sys


def room(path):
    """The folder that an architect would name: a library's, and within the large ones a room's."""
    parts = path.split("/")
    return "/".join(parts[:2]) if parts[0] in ("TokwatchCore", "Tokwatch", "Platform") and len(parts) > 2 else parts[0]


def spans(numbers):
    """1, 2, 3, 7 as 1-3, 7"""
    found = []
    for number in sorted(numbers):
        if found and number == found[-1][1] + 1:
            found[-1][1] = number
        else:
            found.append([number, number])
    return ", ".join(str(a) if a == b else "%d-%d" % (a, b) for a, b in found)


def lines_of(file):
    """Each line once, whichever of the programs reached it."""
    counts, branches = collections.Counter(), collections.defaultdict(collections.Counter)
    for line in file["lines"]:
        if not line.get("gcovr/noncode"):
            counts[line["line_number"]] += line["count"]
            for place, branch in enumerate(line["branches"]):
                branches[line["line_number"]][place] += branch["count"]
    return counts, [count for line in branches.values() for count in line.values()]


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        # The toolkit's compilers write some, too.
        files = [each for each in json.load(file)["files"] if not each["file"].startswith("build/")]
    if "--lines" in sys.argv:
        for file in files:
            if file["file"].startswith(tuple(os.path.normpath(each) + "/" for each in sys.argv[3:])):
                missed = [number for number, count in lines_of(file)[0].items() if not count]
                if missed:
                    print("%s: %s" % (file["file"], spans(missed)))
        return
    rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
    for file in files:
        counts, branches = lines_of(file)
        sums = len(counts), sum(1 for each in counts.values() if each), len(branches), sum(1 for each in branches if each)
        for name in (room(file["file"]), "all"):
            rooms[name] = [a + b for a, b in zip(rooms[name], sums)]
    print("| Room | Lines | reached | Branches | reached |\n|---|---:|---:|---:|---:|")
    for name in sorted(rooms, key=lambda name: (name == "all", name)):
        lines, reached, branches, taken = rooms[name]
        print("| %s | %d | %.1f %% | %d | %s |" % (
            name, lines, 100 * reached / max(lines, 1), branches, "%.1f %%" % (100 * taken / branches) if branches else "—"))


if __name__ == "__main__":
    main()
