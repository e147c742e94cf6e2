#!/usr/bin/python3
"""Pictures of the status item for people to look at: the panel's end, with each severity below the other. Runs inside
script/desktop-session as the tests do; PROGRAM is StatusItemDemo.
"""

import os
import sys

import desktop
from desktop import HOST, PICTURES, TONE, Program

WIDTH, HEIGHT = 240, desktop.PANEL_HEIGHT - 2
TITLES = {
    "normal": "normal claude 42% · 3h 5m",
    "warning": "warning codex 18% · 1h 20m",
    "critical": "critical claude 4% · 55m",
    "icon": "normal - -",
}

desktop.move_away()
program = Program(sys.argv[1])
try:
    program.hear("host", 30)
    rows = []
    for name, title in TITLES.items():
        program.say(f"title {title}")
        desktop.settled_panel()
        desktop.save(name, x=desktop.WIDTH - WIDTH, width=WIDTH, height=HEIGHT)
        rows.append(os.path.join(PICTURES, f"{HOST}-{TONE}-{name}.png"))
    desktop.run("convert", *rows, "-append", os.path.join(PICTURES, f"status-{HOST}-{TONE}.png"))
    for row in rows:
        os.remove(row)
finally:
    program.end()
