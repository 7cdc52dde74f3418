"""LibreOffice Calc offers dozens of forms of what is copied, slowly, and takes a row into a cell. By its toolkit's plugin and without."""
import unittest

from hands import HOME, PATIENCE, Partner, clipboard_targets, keys, until
from texts import is_recorded

SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry" xmlns:xs="http://www.w3.org/2001/XMLSchema">
<item oor:path="/org.openoffice.Office.Common/Save/Document"><prop oor:name="WarnAlienFormat"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowTipOfTheDay"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="FirstRun"><value>false</value></prop></item>
</oor:items>
"""
CELLS = 12


class Sentences(unittest.TestCase):
    def opened(self, plugin):
        self.table = HOME / f"{self._testMethodName}.csv"
        self.table.write_text("".join(f"cell {row} of {plugin}\n" for row in range(1, CELLS + 1)))
        profile = HOME / f"office-{self._testMethodName}"
        (profile / "user").mkdir(parents=True)
        (profile / "user/registrymodifications.xcu").write_text(SETTINGS)
        office = Partner("soffice", f"-env:UserInstallation=file://{profile}", "--norestore", "--nologo", "--nofirststartwizard",
                         "--calc", "--infilter=CSV:44,34,76,1", self.table, environment={"SAL_USE_VCLPLUGIN": plugin})
        self.addCleanup(office.end)
        office.comes_to_front(self.table.name)
        # What a Calc before this one offered outlives it.
        is_recorded(self, self.program, f"copied before {self._testMethodName}")
        before = self.program.count_of_rows()
        self.assertTrue(until(self.takes_keys, PATIENCE * 2), "Calc takes no keys")
        self.assertTrue(until(lambda: self.program.count_of_rows() > before, PATIENCE), "the first cell is no row")
        return office

    def takes_keys(self):
        """A copy tells. It obeys late, and what it was told twice would come in the midst of what follows."""
        keys("ctrl+Home", "ctrl+c")
        return until(lambda: len(clipboard_targets()) > 12, PATIENCE)

    def each_copy_is_a_row(self, plugin):
        self.opened(plugin)
        for cell in range(2, CELLS + 1):
            before = self.program.count_of_rows()
            keys("Down", "ctrl+c")
            self.assertTrue(until(lambda: self.program.count_of_rows() > before, PATIENCE), f"cell {cell} is no row")
            self.assertEqual(self.program.count_of_rows(), before + 1, f"cell {cell}")

    def a_row_comes_into_a_cell(self, plugin):
        self.opened(plugin)
        is_recorded(self, self.program, f"a value from the history for {plugin}")
        is_recorded(self, self.program, f"copied afterwards for {plugin}")
        keys("ctrl+Home", "Right")  # an empty one: it asks before it writes over another
        self.program.pick(f"history for {plugin}")

        def saved():
            keys("ctrl+s")
            return until(lambda: '","' in self.table.read_text(), 2)
        self.assertTrue(until(saved, PATIENCE), self.table.read_text())
        self.assertEqual(self.table.read_text().splitlines()[0], f'"cell 1 of {plugin}","a value from the history for {plugin}"')

    def eachCopyOfACellIsARowWithGtk(self):
        self.each_copy_is_a_row("gtk3")

    def aRowComesIntoACellWithGtk(self):
        self.a_row_comes_into_a_cell("gtk3")

    def eachCopyOfACellIsARowOnPlainX11(self):
        self.each_copy_is_a_row("gen")

    def aRowComesIntoACellOnPlainX11(self):
        self.a_row_comes_into_a_cell("gen")
