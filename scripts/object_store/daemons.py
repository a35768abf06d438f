"""The processes of a store: they die with this one, and each one's death is the end of the store."""

import importlib.util
import os
import pathlib
import random
import select
import shutil
import socket
import subprocess
import sys
import time

DIE_WITH_US = ("setpriv", "--pdeathsig", "KILL")  # becomes the command, which the kernel then kills at our end
PATIENCE = 90  # seconds from the first daemon's start until the store serves
FREE_PORTS = range(20000, 26000)  # below those that connections get


class StoreError(Exception):
    """Why there is no store."""


class DaemonEnded(StoreError):
    """One that should run on has ended by itself; another attempt may fare better."""


def require(engine):
    for program in ("setpriv", "openssl", *engine.PROGRAMS):
        if shutil.which(program) is None:
            raise StoreError(f"there is no {program} (scripts/setup installs it)")
    if importlib.util.find_spec(engine.MODULE) is None:
        raise StoreError(f"{sys.executable} has no module {engine.MODULE} (scripts/setup installs it)")


def free_ports(count):
    ports = []
    while len(ports) < count:
        port = random.choice(FREE_PORTS)
        with socket.socket() as probe:
            # As the daemons do: the remains of an ended connection keep nobody out.
            probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                probe.bind(("127.0.0.1", port))
            except OSError:
                continue
        if port not in ports:
            ports.append(port)
    return ports


class Daemons:
    def __init__(self, folder, owner=None):
        self.folder = pathlib.Path(folder)
        self.running = []
        self.deadline = None
        try:
            self.owner = os.pidfd_open(int(owner)) if owner else None
        except ProcessLookupError:
            raise StoreError("its owner has ended") from None

    def log(self, name):
        return self.folder / f"{name}.out"

    def start(self, name, *command):
        with open(self.log(name), "ab") as log:
            daemon = subprocess.Popen([*DIE_WITH_US, *command], stdin=subprocess.DEVNULL, stdout=log, stderr=log, cwd="/",
                                      start_new_session=True)
        if not self.running:
            self.deadline = time.monotonic() + PATIENCE
        self.running.append((name, daemon))

    def run(self, *command):
        """A command to its end, which has to be a good one; gives back what it printed."""
        with open(self.log("setup"), "ab") as log:
            try:
                return subprocess.run([*DIE_WITH_US, *command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                      stderr=log, timeout=PATIENCE, check=True).stdout
            except (subprocess.CalledProcessError, subprocess.TimeoutExpired):
                raise StoreError(f"{command[0]} failed: {self.last_words('setup')}") from None

    def check(self):
        """Raises an error where there is no use in waiting on."""
        if self.owner is not None and select.select([self.owner], [], [], 0)[0]:
            raise StoreError("its owner has ended")
        for name, daemon in self.running:
            if daemon.poll() is not None:
                raise DaemonEnded(f"{name} has ended: {self.last_words(name)}")
        if time.monotonic() > self.deadline:
            raise StoreError(f"it does not serve after {PATIENCE} seconds: {self.last_words(self.running[-1][0])}")

    def last_words(self, name):
        words = self.log(name).read_text(errors="replace").strip().splitlines()[-8:]
        return "\n".join(words) or "it said nothing"

    def wait(self):
        """Until the owner or one of them has ended."""
        ends = [os.pidfd_open(daemon.pid) for _, daemon in self.running]
        if self.owner is not None:
            ends.append(self.owner)
        select.select(ends, [], [])

    def end(self):
        """At once: what they hold is not to be kept."""
        for _, daemon in self.running:
            daemon.kill()
        for _, daemon in self.running:
            daemon.wait()
        self.running.clear()
