"""The settings of the system, changed for the processes of one mount namespace alone."""
import datetime
import os
import subprocess


def overlay(directory):
    """Changes below /etc stay in this mount namespace."""
    layer = os.path.join(directory, "etc")
    os.makedirs(layer)
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", layer], check=True)
    for part in ("changes", "work"):
        os.makedirs(os.path.join(layer, part))
    subprocess.run(["mount", "-t", "overlay", "overlay", "-o",
                    "lowerdir=/etc,upperdir=%s/changes,workdir=%s/work" % (layer, layer), "/etc"], check=True)
    set_zone("UTC")


def set_zone(zone):
    """As a desktop's settings do."""
    os.symlink("/usr/share/zoneinfo/" + zone, "/etc/localtime.new")
    os.replace("/etc/localtime.new", "/etc/localtime")


def other_zone():
    """A zone in which it is today now, too, and a moment whose day there is another than in UTC."""
    midnight = datetime.datetime.now(datetime.timezone.utc).replace(hour=0, minute=0, second=0)
    east = datetime.datetime.now(datetime.timezone.utc).hour < 12
    moment = midnight + datetime.timedelta(hours=-2 if east else 2)
    day = (moment + datetime.timedelta(hours=9 if east else -8)).strftime("%Y-%m-%d")
    return "Etc/GMT-9" if east else "Etc/GMT+8", moment.strftime("%Y-%m-%dT%H:%M:%SZ"), day
