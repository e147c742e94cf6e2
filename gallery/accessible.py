#!/usr/bin/python3
"""An application's windows as a screen reader has them.

    accessible.py APPLICATION list          every element that shows: its role, a tab, its name
    accessible.py APPLICATION press NAME    presses the first one of that name

A process of its own for each look: the library that reads the tree keeps what it once saw.
"""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def below(element):
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        if child is None:
            continue
        if child.get_state_set().contains(Atspi.StateType.SHOWING):
            yield child
        yield from below(child)


def showing():
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and application.get_name() == sys.argv[1]:
            yield from below(application)


if sys.argv[2] == "list":
    for element in showing():
        print(element.get_role_name(), element.get_name(), sep="\t")
else:
    for element in showing():
        if element.get_name() != sys.argv[3]:
            continue
        actions = [element.get_action_name(index) for index in range(element.get_n_actions())]
        wanted = next((action for action in ("Press", "Toggle") if action in actions), None)
        if wanted:
            element.do_action(actions.index(wanted))
            sys.exit(0)
        print(element.get_role_name(), actions, file=sys.stderr)
    sys.exit(f"there is no {sys.argv[3]} to press")
