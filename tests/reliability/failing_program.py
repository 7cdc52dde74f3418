"""The program as built, with the orders that let its calls fail, and the hands and eyes of a person."""
import errno
import mmap
import os
import pathlib
import plistlib
import re
import shutil
import signal
import sqlite3
import struct
import subprocess
import tempfile
import threading
import time
import zlib

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

KINDS = ["write", "fsync", "rename", "open", "mmap", "connect", "spawn"]
ERRORS = {"write": [errno.ENOSPC, errno.EIO], "fsync": [errno.EIO, errno.ENOSPC], "rename": [errno.ENOSPC, errno.EIO],
          "open": [errno.EMFILE, errno.ENOMEM, errno.EIO], "mmap": [errno.ENOMEM],
          "connect": [errno.ECONNREFUSED, errno.EAGAIN], "spawn": [errno.EAGAIN, errno.ENOMEM]}
STORY = 48  # FaultOrders.h
STORY_SIZE = 8192
PATIENCE = 15.0
DEAF = 1.0
DEAF_AMONG_TESTS = 5.0  # a disk that others fill is waited for as well, and no clock tells of it
NAME = "com.veltrane.Tavrine"


class Orders:
    """The file that the library has in memory too."""

    def __init__(self, path):
        path.write_bytes(bytes(STORY + STORY_SIZE))
        with open(path, "r+b") as file:
            self.memory = mmap.mmap(file.fileno(), STORY + STORY_SIZE)
        self.path = path
        self.disarm()

    def put(self, place, value):
        struct.pack_into("<i", self.memory, place, value)

    def get(self, place):
        return struct.unpack_from("<i", self.memory, place)[0]

    def disarm(self):
        self.put(0, -1)

    def arm(self, kind, number, error, is_worker):
        self.disarm()
        self.memory[STORY:STORY + STORY_SIZE] = bytes(STORY_SIZE)
        self.put(4, number)
        self.put(8, error)
        self.put(12, int(is_worker))
        self.put(16, 0)
        self.put(0, KINDS.index(kind))

    def count(self, is_worker):
        self.disarm()
        self.put(12, int(is_worker))
        for i in range(len(KINDS)):
            self.put(20 + 4 * i, 0)

    def counted(self):
        return {kind: self.get(20 + 4 * i) for i, kind in enumerate(KINDS)}

    def has_fired(self):
        return self.get(16) != 0

    def story(self):
        return bytes(self.memory[STORY:STORY + STORY_SIZE]).split(b"\0")[0].decode(errors="replace")


def told(story):
    """The story with the names of the functions."""
    lines = story.splitlines()
    text = [lines[0]] if lines else []
    for line in lines[1:]:
        module, _, offset = line.rpartition("+")
        if "/tavrine" in module or "/screencapture" in module or "Tavrine" in module:
            found = subprocess.run(["addr2line", "-Cfe", module, hex(int(offset, 16) - 1)], capture_output=True, text=True)
            text.append("    " + found.stdout.split("\n")[0][:150])
        elif not text or text[-1] != "    " + os.path.basename(module):
            text.append("    " + os.path.basename(module))
    return "\n".join(text)


def waited(task):
    """Seconds in which a thread was ready and had no processor."""
    try:
        return int(pathlib.Path(f"/proc/{task}/schedstat").read_text().split()[1]) / 1e9
    except (OSError, IndexError, ValueError):
        return 0.0


class Pulse:
    """Asks the main loop of the program all the time, on a connection of its own, and keeps the longest answer."""

    def __init__(self, bus_process):
        self.bus_process = bus_process
        self.pid = 0
        self.worst = 0.0
        self.begin = None
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        address = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self.bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self.answers = 0
        threading.Thread(target=self.run, daemon=True).start()

    def machine(self, pid):
        return (waited(f"{pid}/task/{pid}") + waited(f"{self.bus_process}/task/{self.bus_process}")
                + waited(f"{os.getpid()}/task/{self.thread}"))

    def open_for(self):
        begin = self.begin
        return time.monotonic() - begin[0] - (self.machine(begin[2]) - begin[1]) if begin else 0.0

    def run(self):
        self.thread = threading.get_native_id()
        while True:
            pid = self.pid
            if not pid:
                time.sleep(0.02)
                continue
            self.begin = (time.monotonic(), self.machine(pid), pid)
            try:
                self.bus.call_sync(NAME, "/" + NAME.replace(".", "/"), "org.freedesktop.DBus.Properties", "GetAll",
                                   GLib.Variant("(s)", ("org.freedesktop.Application",)), None, 0, 60000, None)
                took = self.open_for()
                self.answers += 1
                if pid == self.pid:
                    self.worst = max(self.worst, took)
            except GLib.Error:
                pass  # it ended, or is not there yet
            self.begin = None
            time.sleep(0.01)

    def follow(self, pid):
        self.pid = pid
        self.worst = 0.0

    def take(self):
        worst, self.worst = max(self.worst, self.open_for()), 0.0
        return worst


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60, **options).stdout


def copy(data, target="UTF8_STRING"):
    """By a foreign program, which stays in the background as the owner."""
    subprocess.run(["xclip", "-selection", "clipboard", "-t", target, "-i"], input=data, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, timeout=60)


def keys(*names):
    run("xdotool", "key", "--delay", "0", *names)


def is_shown(title):
    return bool(run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$"))


def is_frozen():
    return any(re.search(r"\(has no name\): \(\)\s+1280x800\+0\+0 ", line) for line in
               run("xwininfo", "-root", "-children").decode(errors="replace").splitlines())


def wait_until(condition, limit=PATIENCE):
    end = time.monotonic() + limit
    while True:
        found = condition()
        if found or time.monotonic() > end:
            return found
        time.sleep(0.03)


def png(number):
    """A picture of 24 by 16 pixels, another for each number."""
    row = b"\0" + bytes((number & 255, number >> 8 & 255, 90)) * 24

    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 24, 16, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(row * 16)) + chunk(b"IEND", b""))


class Trouble(Exception):
    pass


class Program:
    """One start of the program after the other, in one home."""

    def __init__(self, arguments, pulse):
        self.arguments, self.pulse = arguments, pulse
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="faults-"))
        self.orders = Orders(self.home / "orders")
        self.environment = dict(os.environ, HOME=str(self.home), XDG_CONFIG_HOME=str(self.home / ".config"),
                                XDG_DATA_HOME=str(self.home / ".local/share"), XDG_CACHE_HOME=str(self.home / ".cache"),
                                LD_PRELOAD=arguments.library, FAULTS_FILE=str(self.orders.path))
        for folder in (".config", ".local/share", ".cache", "Documents"):
            (self.home / folder).mkdir(parents=True)
        self.data = self.home / ".local/share/Tavrine"
        self.preferences = self.home / ".config/com.veltrane.Tavrine.plist"
        self.preferences.write_bytes(plistlib.dumps({"hasCompletedOnboarding": True, "featureCleaningMode": False,
                                                     "anotherProgramsKey": "kept"}))
        self.log = self.home / "log"
        self.process = None

    def start(self):
        with open(self.log, "ab") as log:
            begin = log.tell()
            self.process = subprocess.Popen([self.arguments.program], env=self.environment, stdout=log, stderr=log)
        wait_until(lambda: self.process.poll() is not None or "Accessibility Trusted on Launch:" in self.output(begin), 30)
        if self.process.poll() is not None:
            # The toolkit's own end, and it says why; there is nothing of ours yet that could do better.
            if "no Qt platform plugin could be initialized" in self.output(begin):
                return
            raise Trouble(f"the start ended with status {self.process.returncode}: {self.output(begin)[-300:]}")
        if "Accessibility Trusted on Launch:" not in self.output(begin):
            raise Trouble(f"the start came to no end: {self.output(begin)[-300:]}")
        self.pulse.follow(self.process.pid)

    def output(self, begin=0):
        return self.log.read_bytes()[begin:].decode(errors="replace")

    def is_alive(self):
        return self.process.poll() is None

    def end(self, how):
        self.pulse.follow(0)
        if not self.is_alive():
            return
        if how == "kill":
            self.process.kill()
        else:
            self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise Trouble("told to end, it did not") from None

    def query(self, sql, *values):
        try:
            connection = sqlite3.connect(f"file:{self.data}/clipboard.db?mode=ro", uri=True, timeout=2)
            try:
                return [row[0] for row in connection.execute(sql, values)]
            finally:
                connection.close()
        except sqlite3.Error:
            return []

    def remove(self):
        if self.process:
            self.end("kill")
        shutil.rmtree(self.home, ignore_errors=True)
