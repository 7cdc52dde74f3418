"""Terminals with shells that ask for bracketed paste: a text of several lines stands on the command line and none of them is run until
the person presses Return; and what is selected there can be copied."""
import shutil
import unittest

from hands import HOME, PATIENCE, Partner, click, keys, place_of, type_text, until
from texts import is_recorded

FOLDER = HOME / "commands"
LINE = HOME / "line"  # what stands on the command line, each time that Ctrl+T is pressed
TELL = {"bash": f"""PS1='ready$ '\nbind -x '"\\C-t": printf %s "$READLINE_LINE" >{LINE}'\n""",
        "zsh": f"""PROMPT='ready$ '\ntell() {{ print -rn -- "$BUFFER" >{LINE} }}\nzle -N tell\nbindkey '^T' tell\n"""}


class Sentences(unittest.TestCase):
    def opened(self, shell, *command):
        """A window with a shell that has read its settings and gets what is typed; its middle."""
        shutil.rmtree(FOLDER, ignore_errors=True)
        FOLDER.mkdir()
        (HOME / f".{shell}rc").write_text(TELL[shell])
        terminal = Partner(*command, shutil.which(shell))
        self.addCleanup(terminal.end)
        self.terminal = terminal
        x, y, width, height = place_of(terminal.comes_to_front("^a shell$"))
        click(x + width / 2, y + height / 2)
        self.assertTrue(until(lambda: self.line() is not None, PATIENCE), "the shell does not answer")
        return x, y

    def line(self):
        """What stands on the command line, without running it."""
        LINE.unlink(missing_ok=True)
        keys("ctrl+t")
        return LINE.read_text() if until(LINE.exists, 1) else None

    def made(self):
        return sorted(path.name for path in FOLDER.iterdir())

    def takes_several_lines(self, shell, *command, asks=False):
        self.opened(shell, *command)
        name = self._testMethodName
        lines = f"touch {FOLDER}/one_{name}\ntouch {FOLDER}/two_{name}\ntouch {FOLDER}/three_{name}"
        is_recorded(self, self.program, lines)
        self.program.pick(f"three_{name.lower()}")
        if asks:  # of its own accord, whoever pastes
            self.terminal.find("push button", "^Paste$").act("Click")
        self.assertTrue(until(lambda: self.line() == lines, PATIENCE), f"the command line: {self.line()!r}")
        self.assertEqual(self.made(), [])
        keys("Return")
        self.assertTrue(until(lambda: len(self.made()) == 3, PATIENCE), f"made: {self.made()}")

    def severalLinesWaitForReturnInXtermWithBash(self):
        self.takes_several_lines("bash", "xterm", "-T", "a shell", "-xrm", "*allowTitleOps: false", "-e")

    def severalLinesWaitForReturnInXtermWithZsh(self):
        self.takes_several_lines("zsh", "xterm", "-T", "a shell", "-xrm", "*allowTitleOps: false", "-e")

    def severalLinesWaitForReturnInXfcesTerminalWithBash(self):
        self.takes_several_lines("bash", *XFCE, asks=True)

    def severalLinesWaitForReturnInXfcesTerminalWithZsh(self):
        self.takes_several_lines("zsh", *XFCE, asks=True)

    def aLineThatIsSelectedInXfcesTerminalBecomesARow(self):
        x, y = self.opened("bash", *XFCE)
        type_text("echo a-word-on-the-screen")
        self.assertTrue(until(lambda: self.line() == "echo a-word-on-the-screen", PATIENCE))
        click(x + 60, y + 10, times=3)
        keys("ctrl+shift+c")
        self.assertTrue(until(lambda: any(text and "a-word-on-the-screen" in text for text in self.program.texts()), PATIENCE),
                        f"rows: {self.program.texts()[:3]}")


XFCE = ("xfce4-terminal", "--disable-server", "--hide-menubar", "--hide-borders", "--title", "a shell", "--dynamic-title-mode=none", "-x")
