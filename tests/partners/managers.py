"""What a person does all day, whatever window manager and compositor there is: copy, find, paste back, capture, and the shelf."""
import unittest

from files import Folder
from hands import HOME, PATIENCE, Partner, clipboard, colour_at, glide, keys, place_of, point_at, run, until, window_titled, xdo
from shelf import Shelf
from texts import both_ways, content_of


class Sentences(unittest.TestCase):
    def aTextIsCopiedFoundAndPastedBack(self):
        file = HOME / "empty.txt"
        file.write_text("")
        editor = Partner("mousepad", "--disable-server", file)
        self.addCleanup(editor.end)
        editor.comes_to_front("empty.txt")
        both_ways(self, self.program, content_of(editor.find("text", having=("focused",))))

    def aCaptureOfAPartOfTheScreenIsARowAndACard(self):
        picture = HOME / "picture.png"
        run("convert", "-size", "640x400", "xc:#e0c040", picture)
        viewer = Partner("display", "-title", "a picture", picture)
        self.addCleanup(viewer.end)
        x, y, *_ = place_of(viewer.comes_to_front("^a picture$"))
        self.assertTrue(until(lambda: colour_at(x + 600, y + 350) == "e0c040", PATIENCE), colour_at(x + 600, y + 350))
        before = self.program.count_of_rows()
        keys("super+shift+2")
        self.assertTrue(until(lambda: colour_at(x + 600, y + 350) != "e0c040", PATIENCE), "the screen does not stand still")
        point_at(x + 50, y + 40)
        xdo("mousedown", 1)
        glide((x + 50, y + 40), (x + 349, y + 239))
        xdo("mouseup", 1)
        self.assertTrue(until(lambda: window_titled("^Screenshot$"), PATIENCE), "no card")
        self.assertTrue(until(lambda: self.program.count_of_rows() > before, PATIENCE), "no row")
        self.assertIsNone(self.program.texts()[0])
        taken = run("convert", "png:-", "-depth", "8", "rgb:-", text=False, input=clipboard("image/png")).stdout
        self.assertEqual(len(taken), 300 * 200 * 3)
        self.assertEqual(set(taken[i:i + 3].hex() for i in range(0, len(taken), 3)), {"e0c040"})

    def aFileGoesToTheShelfAndOutAgain(self):
        shelf = Shelf(self.program)
        source = Folder(self, "thunar", "source", "Report.txt")
        shelf.take(source.chosen())
        self.assertTrue(until(lambda: any("Report" in item for item in shelf.items()), PATIENCE), list(shelf.items()))
        target = Folder(self, "thunar", "target")
        arrived = HOME / "target/Report.txt"
        self.assertTrue(shelf.give("Report", target.free_place(), arrived.exists), "the file did not arrive")
        self.assertTrue((HOME / "source/Report.txt").exists())
