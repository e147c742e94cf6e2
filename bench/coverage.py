#!/usr/bin/env python3
"""coverage.py REPORTS [--lines DIR …]: of gcovr's JSON reports, one of each program, a Markdown table of the rooms with the
lines and branches that were reached; or of the files below the directories, which lines were not."""
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


def lines_of(reports):
    """Of one file each line once, whichever of the programs reached it, and the counts of its branches."""
    counts, branches = collections.Counter(), collections.defaultdict(collections.Counter)
    for line in (line for report in reports for line in report["lines"] if not line.get("gcovr/noncode")):
        number = line["line_number"]
        counts[number] += line["count"]
        # Of a line that a program never came to its branches into exceptions are not told from others.
        for place, branch in enumerate(line["branches"]):
            branches[number, line["count"] > 0][place] += branch["count"]
    chosen = [of for (number, is_reached), of in branches.items() if is_reached or not counts[number]]
    return counts, [count for line in chosen for count in line.values()]


def main():
    files = collections.defaultdict(list)
    for name in os.listdir(sys.argv[1]):
        with open(os.path.join(sys.argv[1], name), encoding="utf-8") as file:
            for each in json.load(file)["files"]:
                if not each["file"].startswith("build/"):  # the toolkit's compilers write some, too
                    files[each["file"]].append(each)
    if "--lines" in sys.argv:
        for name, reports in sorted(files.items()):
            if name.startswith(tuple(os.path.normpath(each) + "/" for each in sys.argv[3:])):
                missed = [number for number, count in lines_of(reports)[0].items() if not count]
                if missed:
                    print("%s: %s" % (name, spans(missed)))
        return
    rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
    for name, reports in files.items():
        counts, branches = lines_of(reports)
        sums = len(counts), sum(1 for each in counts.values() if each), len(branches), sum(1 for each in branches if each)
        for each in (room(name), "all"):
            rooms[each] = [a + b for a, b in zip(rooms[each], sums)]
    print("| Room | Lines | reached | Branches | reached |\n|---|---:|---:|---:|---:|")
    for name in sorted(rooms, key=lambda name: (name == "all", name)):
        lines, reached, branches, taken = rooms[name]
        print("| %s | %d | %.1f %% | %d | %s |" % (
            name, lines, 100 * reached / max(lines, 1), branches, "%.1f %%" % (100 * taken / branches) if branches else "—"))


if __name__ == "__main__":
    main()
