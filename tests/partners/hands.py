"""The person of these tests: hands on the mouse and the keyboard, eyes on the windows, and the program under test as it was started.
All of it over XTEST and by names; what is waited for is a state."""
import os
import pathlib
import plistlib
import re
import signal
import sqlite3
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "desktop/clients"))
from gi.repository import Gio, GLib  # noqa: E402
from screen_reader import ATSPI, Node, ScreenReader, call, until  # noqa: E402

HOME = pathlib.Path(os.environ["HOME"])
PATIENCE = 30.0  # for what has to come, on a machine that does much else
PANEL = "Clipboard Search"
START = 300.0  # of an office, or of a program that looks at all its plug-ins first, on a machine that does much else
ANSWER = 10.0  # of whoever owns the pasteboard


def run(*command, **options):
    options = {"capture_output": True, "text": True, "check": False, "timeout": 60} | options
    return subprocess.run([str(word) for word in command], **options)


def xdo(*words):
    return run("xdotool", *words).stdout.strip()


def keys(*names):
    xdo("key", *names)


def type_text(text):
    xdo("type", "--delay", 12, text)


def focused_title():
    window = xdo("getwindowfocus")
    return xdo("getwindowname", window) if window else ""


def active_title():
    window = xdo("getactivewindow")
    return xdo("getwindowname", window) if window else ""


def window_titled(pattern):
    """The newest window that is shown and whose title has the pattern in it; empty without one."""
    return (xdo("search", "--onlyvisible", "--name", pattern).split() or [""])[-1]


def place_of(window):
    """x, y, width, height, without the frame."""
    told = run("xwininfo", "-id", window).stdout
    fields = (r"Absolute upper-left X:\s+(-?\d+)", r"Absolute upper-left Y:\s+(-?\d+)", r"Width: (\d+)", r"Height: (\d+)")
    found = [re.search(field, told) for field in fields]
    return tuple(int(match[1]) for match in found) if all(found) else None


def point_at(x, y):
    xdo("mousemove", int(x), int(y))


def click(x, y, button=1, times=1):
    point_at(x, y)
    xdo("click", "--repeat", times, "--delay", 60, button)


def glide(start, end, steps=12):
    """By steps, as a hand goes: programs look where the pointer comes by."""
    for step in range(1, steps + 1):
        point_at(*(a + (b - a) * step / steps for a, b in zip(start, end)))
        time.sleep(0.02)


def clipboard(target="UTF8_STRING"):
    """What the pasteboard gives for a target, as bytes; None when nobody answers, as one who is killed while he is asked."""
    try:
        return run("xclip", "-selection", "clipboard", "-t", target, "-o", text=False, timeout=ANSWER).stdout
    except subprocess.TimeoutExpired:
        return None


def clipboard_targets():
    return (clipboard("TARGETS") or b"").decode().split()


def colour_at(x, y):
    told = run("import", "-window", "root", "-crop", f"1x1+{x}+{y}", "+repage", "-depth", "8", "rgb:-", text=False).stdout
    return told.hex()


def changed_place(window, act):
    """The middle of what changes in the right and middle part of a window, where its content is, when something is done; None while
    nothing does. For programs that do not tell where they show what."""
    x, y, width, height = place_of(window)
    part = f"{width * 6 // 10}x{height * 6 // 10}+{x + width * 3 // 10}+{y + height // 4}"
    before, after = HOME / "before.png", HOME / "after.png"
    run("import", "-window", "root", "-crop", part, "+repage", before)
    act()

    def changed():
        run("import", "-window", "root", "-crop", part, "+repage", after)
        told = run("convert", before, after, "-compose", "difference", "-composite", "-threshold", "4%", "-trim", "-format",
                   "%w %h %X %Y %[fx:maxima]", "info:").stdout.split()
        return told if told and float(told[4]) > 0 else None
    told = until(changed, 2)
    if not told:
        return None
    left, top = int(told[2]) + x + width * 3 // 10, int(told[3]) + y + height // 4
    return left + int(told[0]) / 2, top + min(int(told[1]), 60) / 2


def picture_of_screen(name):
    """Kept where a person asked for it, to look at afterwards."""
    folder = os.environ.get("PARTNERS_PICTURES")
    if folder:
        run("import", "-window", "root", f"{folder}/{name}.png")


class Program:
    """The program under test, and what it keeps."""

    def __init__(self, path, preferences=None):
        self.path = path
        self.log = HOME / "tavrine.log"
        self.database = pathlib.Path(os.environ["XDG_DATA_HOME"]) / "Tavrine/clipboard.db"
        config = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "com.veltrane.Tavrine.plist"
        config.write_bytes(plistlib.dumps({"hasCompletedOnboarding": True} | (preferences or {})))
        self.process = subprocess.Popen([path], stdout=self.log.open("wb"), stderr=subprocess.STDOUT)
        assert until(lambda: self.says("Accessibility Trusted on Launch: true"), PATIENCE), self.log.read_text()

    def end(self):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    def says(self, line, times=1):
        return self.log.read_text(errors="replace").count(line) >= times

    def count(self, line):
        return self.log.read_text(errors="replace").count(line)

    def query(self, sql, *values):
        try:
            with sqlite3.connect(f"file:{self.database}?mode=ro", uri=True, timeout=5) as connection:
                return connection.execute(sql, values).fetchall()
        except sqlite3.OperationalError:
            return []

    def texts(self):
        """From the newest; a picture is None."""
        return [None if picture else content for content, picture in
                self.query("SELECT content, image_file_name FROM items ORDER BY date DESC")]

    def count_of_rows(self):
        return len(self.texts())

    def pictures(self):
        """The files of the pictures, from the newest."""
        folder = self.database.parent
        return [next(folder.rglob(name), None) for name, in
                self.query("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL ORDER BY date DESC")]

    def records(self, text, seconds=PATIENCE):
        return until(lambda: text in self.texts(), seconds)

    def open_panel(self):
        keys("super+shift+v")
        if not until(lambda: focused_title() == PANEL, PATIENCE):
            raise AssertionError(f"no panel with the keyboard; it is with “{focused_title()}”")

    def pick(self, word):
        """Finds the newest row with the word and sends it to the program that was in front."""
        self.open_panel()
        type_text(word)
        keys("Return")
        assert until(lambda: not window_titled(f"^{PANEL}$"), PATIENCE), "the panel did not go"


def copy_text(text):
    """As another program that nobody looks at."""
    run("xclip", "-selection", "clipboard", "-i", input=text, capture_output=False, stdout=subprocess.DEVNULL)


class Partner:
    """A program beside ours, in a session of processes of its own. Its windows and controls are found by their names."""

    reader = None

    def __init__(self, *command, environment=None, stdin=None, tells_showing=True):
        """GTK 4 does not tell what of its controls is on the screen."""
        self.tells_showing = tells_showing
        if Partner.reader is None:
            Partner.reader = ScreenReader(Gio.bus_get_sync(Gio.BusType.SESSION))
        self.log = HOME / f"{pathlib.Path(str(command[0])).name}.log"
        self.process = subprocess.Popen([str(word) for word in command], start_new_session=True, stdout=self.log.open("wb"),
                                        stderr=subprocess.STDOUT, stdin=subprocess.PIPE if stdin else subprocess.DEVNULL,
                                        env=os.environ | ACCESSIBLE | (environment or {}))
        if stdin:
            self.process.stdin.write(stdin)
            self.process.stdin.close()

    def end(self):
        for sign, seconds in ((signal.SIGTERM, 10), (signal.SIGKILL, 10)):
            try:
                os.killpg(self.process.pid, sign)
            except ProcessLookupError:
                return
            if until(lambda: self.process.poll() is not None and not self.members(), seconds):
                return

    def members(self):
        return run("pgrep", "-s", self.process.pid).stdout.split()

    def owns(self, owner):
        """Whether a name on the accessibility bus belongs to one of its processes."""
        try:
            pid, = call(Partner.reader.bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                        GLib.Variant("(s)", (owner,)))
            return os.getsid(pid) == self.process.pid
        except (GLib.Error, ProcessLookupError):
            return False

    def roots(self):
        everybody = Node(Partner.reader.bus, ATSPI + "Registry", "/org/a11y/atspi/accessible/root")
        return [node for node in everybody.children() if self.owns(node.owner)]

    def walk(self):
        for root in self.roots():
            yield from walk_all(root, self.tells_showing)

    def find(self, role, name=None, seconds=PATIENCE, **wanted):
        """A control by its role (or one of several), and a pattern of its name, that is on the screen; `having` names more states."""
        found = until(lambda: self.look(role, name, **wanted), seconds)
        if not found:
            said = [f"{safe(lambda n=n: n.role)} “{safe(lambda n=n: n.name)}”" for n in self.walk()]
            raise AssertionError(f"no {role} “{name}” among {len(said)}: " + ", ".join(said)[:3000])
        return found

    def look(self, role, name=None, having=()):
        def fits(node):
            return (node.role in role.split("|") and (name is None or re.search(name, node.name))
                    and all(node.has(state) for state in having))
        try:
            return next((node for node in self.walk() if fits(node)), None)
        except GLib.Error:
            return None  # what was just asked is gone

    def comes_to_front(self, pattern):
        """Waits for its window, puts it in front, and gives it."""
        window = until(lambda: window_titled(pattern), START)
        assert window, f"no window “{pattern}”: " + self.log.read_text(errors="replace")[-2000:]
        def is_front():
            if xdo("getactivewindow") == window:
                return True
            xdo("windowactivate", window)
            return False
        assert until(is_front, PATIENCE), f"“{pattern}” does not come to the front"
        return window


# What toolkits need to tell of their controls.
ACCESSIBLE = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1", "GNOME_ACCESSIBILITY": "1", "NO_AT_BRIDGE": "0",
              "GTK_A11Y": "atspi", "SAL_USE_VCLPLUGIN": "gtk3", "GDK_BACKEND": "x11", "MOZ_ENABLE_WAYLAND": "0"}


def safe(question):
    try:
        return question()
    except GLib.Error:
        return "gone"


def walk_all(node, tells_showing=True, depth=0):
    """Every object that is on the screen, as far as anybody needs to look."""
    if depth > 40:
        return
    for child in safe_children(node):
        try:
            if tells_showing and depth > 0 and not child.has("showing"):
                continue
        except GLib.Error:
            continue
        yield child
        yield from walk_all(child, tells_showing, depth + 1)


def safe_children(node):
    found = safe(node.children)
    return [] if found == "gone" else found


def text_of(node):
    """What stands in a field, whole."""
    return node.ask("Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]


def rectangle_of(node):
    """x, y, width, height on the screen."""
    return node.ask("Component", "GetExtents", GLib.Variant("(u)", (0,)))[0]


def middle_of(node):
    x, y, width, height = rectangle_of(node)
    return x + width / 2, y + height / 2
