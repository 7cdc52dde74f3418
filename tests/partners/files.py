"""Two file managers: files that are copied are a row, and go to the shelf and out of it into another folder."""
import unittest

from hands import HOME, PATIENCE, Partner, changed_place, clipboard_targets, keys, place_of, run, until, xdo
from shelf import Shelf

MANAGERS = {"thunar": (), "pcmanfm": ("--no-desktop",)}


class Folder:
    """A window of a file manager that shows a folder with these files."""

    def __init__(self, test, manager, name, *files):
        self.path = HOME / name
        self.path.mkdir()
        for file in files:
            (self.path / file).write_text(f"what is in {file}\n")
        self.partner = Partner(manager, *MANAGERS[manager], self.path)
        test.addCleanup(self.partner.end)
        self.window = self.partner.comes_to_front(f"^{name}( |$)")

    def chosen(self):
        """Chooses all of its files; where the first lies is where the window changes then."""
        def once():
            xdo("windowactivate", self.window)
            return changed_place(self.window, lambda: keys("ctrl+a"))
        place = until(once, PATIENCE)
        assert place, "no file can be chosen"
        return place

    def free_place(self):
        x, y, width, height = place_of(self.window)
        return x + width * 0.6, y + height * 0.7


class Sentences(unittest.TestCase):
    def through_the_shelf(self, manager):
        name = f"Report by {manager}.txt"
        shelf = Shelf(self.program)
        source = Folder(self, manager, f"source-{manager}", name)
        shelf.take(source.chosen())
        self.assertTrue(until(lambda: any(name in item for item in shelf.items()), PATIENCE), list(shelf.items()))
        self.assertTrue((source.path / name).exists(), "the shelf moved the file")
        target = Folder(self, manager, f"target-{manager}")
        arrived = target.path / name
        self.assertTrue(shelf.give(name, target.free_place(), arrived.exists), "the file did not arrive")
        self.assertEqual(arrived.read_text(), f"what is in {name}\n")
        self.assertTrue((source.path / name).exists(), "the file was moved")

    def filesThatThunarCopiesAreARow(self):
        Folder(self, "thunar", "copied", "first.txt", "second.txt").chosen()
        keys("ctrl+c")
        self.assertTrue(until(lambda: any(text and "copied/second.txt" in text for text in self.program.texts()), PATIENCE),
                        f"rows {self.program.texts()[:3]}; {clipboard_targets()}")
        self.assertIn("text/uri-list", clipboard_targets())

    def aFileGoesFromThunarThroughTheShelfIntoThunar(self):
        self.through_the_shelf("thunar")

    def aPictureFileThatPcmanfmCopiesIsAPictureAndOtherFilesAreNoRowAsItOffersNoText(self):
        Folder(self, "pcmanfm", "words", "words.txt").chosen()
        keys("ctrl+c")
        self.assertTrue(until(lambda: "text/uri-list" in clipboard_targets() and "UTF8_STRING" not in clipboard_targets(), PATIENCE))
        before = self.program.count_of_rows()
        drawings = Folder(self, "pcmanfm", "drawings")
        run("convert", "-size", "300x200", "gradient:red-blue", drawings.path / "drawing.png")
        drawings.chosen()
        keys("ctrl+c")
        self.assertTrue(until(lambda: self.program.count_of_rows() > before, PATIENCE))
        self.assertEqual(self.program.texts()[0], None)
        self.assertEqual(self.program.count_of_rows(), before + 1)

    def aFileGoesFromPcmanfmThroughTheShelfIntoPcmanfm(self):
        self.through_the_shelf("pcmanfm")
