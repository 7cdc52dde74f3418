"""What a page gives to the history and to the shelf, and takes from them."""
import json
import re
import unittest
from pathlib import Path

from files import Folder
from hands import HOME, PATIENCE, Partner, click, clipboard, clipboard_targets, keys, place_of, point_at, run, until, xdo
from shelf import Shelf
from texts import both_ways

PAGE = "^page:"
# Where the page has what, from its upper left corner.
FIELD, PICTURE, LINK, FILE, ZONE = (100, 60), (100, 210), (300, 170), (300, 220), (200, 350)
FIREFOX = """user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("toolkit.telemetry.reportingpolicy.firstRun", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("browser.tabs.warnOnClose", false);
user_pref("app.update.enabled", false);
user_pref("app.normandy.enabled", false);
user_pref("network.captive-portal-service.enabled", false);
user_pref("network.connectivity-service.enabled", false);
user_pref("extensions.update.enabled", false);
"""


def firefox(profile, page):
    (profile / "user.js").write_text(FIREFOX)
    return Partner("firefox-esr", "--no-remote", "--profile", profile, "--width", "800", "--height", "600", f"file://{page}")


def chromium(profile, page):
    return Partner("chromium", "--no-sandbox", f"--user-data-dir={profile}", "--no-first-run", "--no-default-browser-check",
                   "--disable-gpu", "--disable-background-networking", "--disable-component-update", "--disable-sync", "--password-store=basic",
                   "--window-size=800,600", "--window-position=200,120", f"--app=file://{page}")


class Page(unittest.TestCase):
    """The sentences of a browser; `browser` starts it."""

    def setUp(self):
        folder = HOME / self._testMethodName
        folder.mkdir()
        (folder / "page.html").write_bytes((Path(__file__).parent / "page.html").read_bytes())
        (folder / "Linked.txt").write_text("what is linked\n")
        run("convert", "-size", "160x120", "xc:#c04080", folder / "picture.png")
        profile = folder / "profile"
        profile.mkdir()
        self.partner = type(self).browser(profile, folder / "page.html")
        self.addCleanup(self.partner.end)
        self.window = self.partner.comes_to_front(PAGE)
        x, y, width, height = place_of(self.window)

        def is_told():
            point_at(x + width * 0.6, y + height * 0.7)
            point_at(x + width * 0.6 + 5, y + height * 0.7 + 5)
            return until(lambda: self.told().get("at"), 1)
        self.corner = until(is_told, PATIENCE * 2)
        self.assertTrue(self.corner, "the page hears nothing of the mouse")

    def told(self):
        match = re.search(r"page:(\{.*\})", xdo("getwindowname", self.window))
        return json.loads(match[1]) if match else {}

    def place(self, part):
        return self.corner[0] + part[0], self.corner[1] + part[1]

    def aTextGoesBothWays(self):
        click(*self.place(FIELD))

        def takes_keys():
            keys("x")
            return until(lambda: self.told()["text"], 1)
        self.assertTrue(until(takes_keys, PATIENCE), "the field takes no keys")
        self.assertTrue(until(lambda: (keys("ctrl+a", "BackSpace"), until(lambda: not self.told()["text"], 1))[1], PATIENCE))
        both_ways(self, self.program, lambda: self.told()["text"])

    def aPictureThatIsCopiedIsARow(self):
        before = self.program.count_of_rows()
        click(*self.place(PICTURE), button=3)
        self.assertTrue(until(self.menu_is_open, PATIENCE), "no menu")
        def is_row():
            if self.menu_is_open():  # and takes keys a little later than it is seen
                keys("y")
            return until(lambda: self.program.count_of_rows() > before, 2)
        self.assertTrue(until(is_row, PATIENCE), f"no row; the pasteboard has {clipboard_targets()}")
        self.assertIsNone(self.program.texts()[0])
        pixels = run("convert", "png:-", "-depth", "8", "rgb:-", text=False, input=clipboard("image/png")).stdout
        self.assertEqual(len(pixels), 160 * 120 * 3)
        # Firefox fits the colours to the screen.
        self.assertTrue(all(abs(got - drawn) <= 4 for got, drawn in zip(pixels[:3], (0xc0, 0x40, 0x80))), pixels[:3].hex())

    def menu_is_open(self):
        """A menu is a window of its own that no manager knows, so the pointer's window is another one a little below the pointer."""
        x, y = self.place(PICTURE)
        point_at(x + 30, y + 40)
        return "WINDOW=" + self.window not in xdo("getmouselocation", "--shell") or None

    def reaches_the_shelf(self, part, name):
        shelf = Shelf(self.program)
        shelf.take(self.place(part))
        self.assertTrue(until(lambda: any(name in item for item in shelf.items()), PATIENCE), f"it holds {list(shelf.items())}")

    def aLinkGoesToTheShelf(self):
        self.reaches_the_shelf(LINK, "example.org")

    def aLinkToAFileGoesToTheShelf(self):
        self.reaches_the_shelf(FILE, "Linked.txt")

    def aPictureGoesToTheShelf(self):
        self.reaches_the_shelf(PICTURE, "picture")

    def aFileComesFromTheShelfIntoThePage(self):
        shelf = Shelf(self.program)
        name = f"For {self._testMethodName}.txt"
        folder = Folder(self, "thunar", "to the page", name)
        shelf.take(folder.chosen())
        folder.partner.end()
        xdo("windowactivate", self.window)
        wanted = [[name, f"what is in {name}\n"[:40]]]
        self.assertTrue(shelf.give(name, self.place(ZONE), lambda: self.told().get("dropped") == wanted), f"the page tells {self.told()}")
