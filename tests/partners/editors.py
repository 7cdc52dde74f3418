"""A program of GTK 4, one of Qt 5 and one of GTK 3: a row comes into their text, and their text becomes a row."""
import unittest

from hands import HOME, Partner
from texts import both_ways, content_of

EMPTY = HOME / "empty.txt"


class Sentences(unittest.TestCase):
    def works_both_ways(self, *command, **options):
        EMPTY.write_text("")
        editor = Partner(*command, EMPTY, **options)
        self.addCleanup(editor.end)
        editor.comes_to_front("empty.txt")
        both_ways(self, self.program, content_of(editor.find("text|text box", having=("focused",))))

    def aTextEditorOfGtk4(self):
        self.works_both_ways("gnome-text-editor", "--standalone", tells_showing=False)

    def aTextEditorOfQt5(self):
        self.works_both_ways("featherpad", "--standalone")

    def aTextEditorOfGtk3(self):
        self.works_both_ways("mousepad", "--disable-server")
