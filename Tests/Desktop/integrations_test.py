#!/usr/bin/python3
"""The blocks of docs/integrations.md in the programs that they are for. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/integrations_test.py PROGRAM BAR

where PROGRAM is tokwatch-desktop, with tokwatch beside it, and BAR is waybar (on a HOST waybar), polybar, i3blocks, tmux
or starship. Status 77 where that is not installed.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tomllib
from xml.etree import ElementTree

BAR = sys.argv[2]
if not shutil.which(BAR) and BAR != "starship":
    print(f"skipped: {BAR} is not installed; script/bootstrap --test installs it")
    sys.exit(77)

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from application import COMMAND, HOME, ROOT, names, prepare, report_limits, tokwatch, windows
from desktop import step, wait_for

USUAL, CRITICAL = r"60% · \dh \d+m", r"3% · \dh \d+m"
FILES = os.environ["HOME"]
# Who copies a block has the program on the path, and the assistants' files at home.
ENVIRONMENT = {**os.environ, "HOME": HOME, "PATH": os.path.dirname(COMMAND) + ":" + os.environ["PATH"]}


def block(title, language):
    with open(os.path.join(ROOT, "docs/integrations.md"), encoding="utf-8") as page:
        section = re.search(rf"^## {title}$(.*?)(?=^## |\Z)", page.read(), re.DOTALL | re.MULTILINE)[1]
    return re.search(rf"^```{language}\n(.*?)^```$", section, re.DOTALL | re.MULTILINE)[1]


def write(name, text):
    path = os.path.join(FILES, name)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    return path


def running(*command, **environment):
    return desktop.Program(*command, environment={**ENVIRONMENT, **environment})


def become_critical():
    """Session has 3 % left. Programs that do not follow show what is stored."""
    step("colours what is critical")
    report_limits(97, 20)


def opens_popover(shown):
    step("opens the popover at a click")
    desktop.click(40, desktop.PANEL_HEIGHT // 2)
    wait_for("the window", shown, 30)


def show_waybar():
    desktop.stop_panel()
    config = write("config", '{ "layer": "top", "height": 30, "modules-left": ["custom/tokwatch"],' + block(BAR, "json") + "}")
    style = write("style.css", "* { font-size: 14px }\n" + block(BAR, "css"))
    step("shows the limit")
    with running("waybar", "-c", config, "-s", style, WAYLAND_DISPLAY=desktop.compositor_display("wayland"), GDK_BACKEND="wayland"):
        wait_for("the limit", lambda: any(re.fullmatch(USUAL, name) for name in names("waybar")), 30)
        assert not desktop.panel().count(desktop.is_red)
        become_critical()
        wait_for("it in red", lambda: desktop.panel().count(desktop.is_red) > 30, 30)
        wait_for("the limit", lambda: any(re.fullmatch(CRITICAL, name) for name in names("waybar")))
        desktop.save("module")
        opens_popover(lambda: [node for node in desktop.compositor_windows() if node["name"] == "Tokwatch"])


def show_polybar():
    bar = "[bar/main]\nwidth = 100%\nheight = 30\nfont-0 = DejaVu Sans:size=11\nmodules-left = tokwatch\n"
    config = "--config=" + write("config.ini", bar + block(BAR, "ini"))
    step("shows the limit")
    with running("polybar", "--stdout", config, "main") as text, running("polybar", config, "main"):
        text.hear(f".*{USUAL}.*", 30)
        wait_for("the bar", lambda: desktop.panel().count(lambda *pixel: min(pixel) > 200) > 100, 30)
        assert not desktop.panel().count(desktop.is_red)
        become_critical()
        wait_for("it in red", lambda: desktop.panel().count(desktop.is_red) > 30, 30)
        text.hear(f".*{CRITICAL}.*")
        desktop.save("module")
        opens_popover(windows)


def show_i3blocks():
    step("shows the limit")
    with running("i3blocks", "-c", write("i3blocks", block(BAR, "ini"))) as text:
        text.hear(f'.*"full_text":"{USUAL}".*', 30)
        become_critical()
        shown = json.loads(text.hear('.*"<span.*', 30).strip(","))[-1]
        markup = ElementTree.fromstring(shown["full_text"])
        assert shown["markup"] == "pango" and markup.get("foreground") and re.fullmatch(CRITICAL, markup.text), shown
        text.process.kill()  # asked to end, it waits for its blocks


def show_tmux():
    """The status line of one tmux, whose terminal is a pane of another."""
    inner = ["tmux", "-S", os.path.join(FILES, "inner")]
    outer = ["tmux", "-S", os.path.join(FILES, "outer"), "-f", "/dev/null"]
    config = write("tmux.conf", block(BAR, "tmux"))
    run = lambda *command: subprocess.run(command, env=ENVIRONMENT, check=True, capture_output=True, text=True).stdout

    def line():
        run(*inner, "refresh-client", "-S", "-t", run(*inner, "list-clients", "-F", "#{client_name}").strip())
        return run(*outer, "capture-pane", "-p", "-e").splitlines()[-1]

    step("shows the limit")
    run(*outer, "new-session", "-d", "-x", "120", "-y", "8", *inner, "-f", config, "new-session", "sleep 600")
    try:
        wait_for("the status line", lambda: run(*outer, "capture-pane", "-p").strip())
        wait_for("the limit", lambda: re.search(rf" {USUAL} · \d\d:\d\d", line()), 30)
        become_critical()
        tokwatch("index", "--home", HOME)
        wait_for("it on red", lambda: re.search(rf"\x1b\[[0-9;]*41m{CRITICAL}\x1b", line()), 30)
    finally:
        for server in inner, outer:  # the outer may go with what it shows, while it is told to
            subprocess.run([*server, "kill-server"], env=ENVIRONMENT, check=False, capture_output=True)


def show_starship():
    custom = tomllib.loads(block(BAR, "toml"))["custom"]["tokwatch"]
    sh = lambda command: subprocess.run([*custom["shell"], "-c", command], env=ENVIRONMENT, capture_output=True, text=True)
    step("its command tells the limit")
    assert sh(custom["when"]).returncode == 0
    assert re.fullmatch(USUAL + "\n", sh(custom["command"]).stdout)
    if shutil.which("starship"):
        step("shows the limit")
        config = write("starship.toml", block(BAR, "toml"))
        shown = subprocess.run(["starship", "module", "custom.tokwatch"], env={**ENVIRONMENT, "STARSHIP_CONFIG": config},
                               capture_output=True, text=True, check=True).stdout
        assert re.search(USUAL, shown), shown


prepare()
tokwatch("preferences", "set", "hasCompletedOnboarding", "true")
desktop.move_away()
globals()["show_" + BAR]()
