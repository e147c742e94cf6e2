#!/usr/bin/env python3
"""What the desktop application costs, on a desktop of its own that nobody sees, with 5,000 models in the store:

    bench/desktop.py BUILD WORK

BUILD is a build directory with the programs, WORK a directory for the home and the data. Prints a table. The times of
an opening run from the request to the first frame; a frame of 60 a second has 16.7 ms.
"""

import json
import os
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MODELS = 5000
FIGURES = [
    ("trayMB", "memory, status item alone", "MB", 25),
    ("openMB", "memory, popover open", "MB", 60),
    ("closedMB", "memory, two minutes after it was closed", "MB", 35),
    ("firstOpenMs", "first opening", "ms", 60),
    ("laterOpenMs", "later openings, median of 15", "ms", 40),
    ("tabSwitchMs", "switch of tabs, median of 27", "ms", 16.7),
    ("tabSwitchMaxMs", "switch of tabs, longest", "ms", None),
    ("scrollMs", "frame while scrolling 5,000 models, median of 200", "ms", 16.7),
    ("scrollMaxMs", "frame while scrolling, longest", "ms", None),
    ("idleCPUPercent", "processor, idle for 20 s", "%", 0.1),
]


def make_home(home):
    shutil.rmtree(home, ignore_errors=True)
    subprocess.run([os.path.join(ROOT, "script/demo-home"), "--quiet", home], check=True)
    now = time.strftime("%Y-%m-%dT%H:%M:%S.000Z", time.gmtime())
    lines = []
    for number in range(MODELS):
        usage = {"input_tokens": 100 + number, "output_tokens": 10 + number}
        message = {"id": f"msg_{number}", "model": f"model-{number:04}", "usage": usage}
        lines.append({"type": "assistant", "timestamp": now, "sessionId": "many", "requestId": f"req_{number}",
                      "message": message})
    project = os.path.join(home, ".claude/projects/many")
    os.makedirs(project)
    with open(os.path.join(project, "many.jsonl"), "w") as log:
        log.writelines(json.dumps(line) + "\n" for line in lines)


def main():
    build, work = map(os.path.abspath, sys.argv[1:3])
    home, data = os.path.join(work, "desktop-home"), os.path.join(work, "desktop-data")
    make_home(home)
    shutil.rmtree(data, ignore_errors=True)
    subprocess.run([os.path.join(build, "bin/tokwatch"), "index", "--home", home, "--data-dir", data],
                   check=True, stdout=subprocess.DEVNULL)
    # The session's programs may run as another user.
    subprocess.run(["chmod", "-R", "a+rwX", home, data], check=True)
    output = subprocess.run(
        [os.path.join(ROOT, "script/desktop-session"), "xfce-systray",
         os.path.join(build, "bin/popover-benchmark"), home, data],
        check=True, stdout=subprocess.PIPE, text=True).stdout
    figures = json.loads(next(line for line in output.splitlines() if line.startswith("{")))
    print("| What | Measured | Bound |\n|---|---|---|")
    for key, name, unit, bound in FIGURES:
        print(f"| {name} | {figures[key]:.3g} {unit} | {f'{bound} {unit}' if bound else '–'} |")


main()
