"""GIMP gives a large picture to the history and takes one from it."""
import re
import unittest

from hands import HOME, PATIENCE, Partner, clipboard, keys, run, until, xdo

SIZE = 4000, 3000  # 12 megapixels
SLOW = PATIENCE * 4  # encoding them takes seconds, in each program


class Sentences(unittest.TestCase):
    def opened(self, picture):
        # A profile of its own: it would ask what to do about the one before, which it takes for a crash.
        editor = Partner("gimp", "--new-instance", "--no-splash", "--no-fonts", "--no-data", picture,
                         environment={"GIMP2_DIRECTORY": str(HOME / f"gimp-{picture.stem}")})
        self.addCleanup(editor.end)
        self.window = editor.comes_to_front(picture.stem)
        return editor

    def colours(self):
        """The size of what the pasteboard has, and the colours in it."""
        told = run("convert", "png:-", "-format", "%w %h %k %[pixel:p{9,9}]", "info:", text=False, input=clipboard("image/png") or b"")
        return told.stdout.decode()

    def aLargePictureThatIsCopiedIsARow(self):
        picture = HOME / "large.png"
        run("convert", "-size", "x".join(map(str, SIZE)), "gradient:blue-yellow", picture)
        self.opened(picture)

        def is_row():
            xdo("windowactivate", self.window)
            keys("ctrl+a", "ctrl+c")
            return until(self.program.pictures, 10)
        self.assertTrue(until(is_row, SLOW), "no row")
        kept = run("identify", "-format", "%w %h", self.program.pictures()[0]).stdout
        self.assertEqual(kept, "4000 3000")

    def aLargePictureOfTheHistoryComesIntoAnImage(self):
        large = HOME / "red.png"
        run("convert", "-size", "x".join(map(str, SIZE)), "xc:red", f"PNG24:{large}")
        small = HOME / "small.png"
        run("convert", "-size", "400x300", "xc:blue", f"PNG24:{small}")  # no palette, which would have no red
        before = self.program.count_of_rows()
        run("xclip", "-selection", "clipboard", "-t", "image/png", "-i", large, capture_output=False)
        self.assertTrue(until(lambda: self.program.count_of_rows() > before, SLOW), "no row")
        self.opened(small)

        def takes_keys():
            xdo("windowactivate", self.window)
            keys("ctrl+shift+c")
            return until(lambda: self.colours().startswith("400 300 1"), 5)
        self.assertTrue(until(takes_keys, SLOW), f"it gives {self.colours()}")
        self.program.open_panel()
        keys("Down", "Return")  # what it has just copied is the uppermost

        def has_come():
            keys("ctrl+shift+c")
            # The history keeps pictures as JPEG, which is off by a little.
        return until(lambda: re.fullmatch(r"400 300 1 (red|srgba?\(25\d,[0-5],[0-5](,1)?\))", self.colours()), 5)
        self.assertTrue(until(has_come, SLOW), f"it gives {self.colours()}")
