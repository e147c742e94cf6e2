"""What the measurements run the program over: directories of their own, made anew each time."""
import os
import shutil
import subprocess


def database(data):
    return os.path.join(data, "Tokwatch/usage.sqlite")


class World:
    """BUILD's `tokwatch` with a home, settings and data below WORK/NAME; `home` takes the place of the made one."""

    def __init__(self, build, work, name, home=None):
        self.directory = os.path.abspath(os.path.join(work, name))
        shutil.rmtree(self.directory, ignore_errors=True)
        os.makedirs(self.directory)
        self.program = os.path.abspath(os.path.join(build, "bin/tokwatch"))
        self.home, self.data = home or self.path("home"), self.path("data")
        self.snapshot = os.path.join(self.data, "Q7K2M9X4PL.app.tokwatch/snapshot.json")
        self.environment = {**os.environ, "HOME": self.home, "XDG_CONFIG_HOME": self.path("config"), "TZ": "UTC"}

    def path(self, name):
        return os.path.join(self.directory, name)

    def follow(self):
        """The application without its windows, until it is told to end."""
        return subprocess.Popen([self.program, "status", "--follow", "--data-dir", self.data], env=self.environment,
                                stdout=subprocess.DEVNULL)
