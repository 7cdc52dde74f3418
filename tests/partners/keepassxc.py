"""KeePassXC marks what it copies as a secret, takes it back after a while, and ours forgets it."""
import os
import signal
import unittest

from hands import (HOME, PANEL, PATIENCE, Partner, click, clipboard, clipboard_targets, copy_text, focused_title, keys, middle_of, run,
                   text_of, until)

SECRET = "correct-horse-battery"
MARK = "x-kde-passwordManagerHint"


class Sentences(unittest.TestCase):
    def open(self, **options):
        folder = HOME / "safe"
        folder.mkdir(exist_ok=True)
        database = folder / "words.kdbx"
        if not database.exists():
            made = run("keepassxc-cli", "db-create", "-p", database, input="master\nmaster\n")
            self.assertEqual(made.returncode, 0, made.stderr)
            run("keepassxc-cli", "add", "-u", "me", "-p", database, "Entry", input=f"master\n{SECRET}\n{SECRET}\n")
        settings = {"Security": {"ClearClipboard": "true", "ClearClipboardTimeout": 4},
                    "GUI": {"MinimizeOnClose": "false", "CheckForUpdates": "false"},
                    "General": {"SingleInstance": "false", "UpdateCheckMessageShown": "true"} | options}
        file = HOME / ".config/keepassxc/keepassxc.ini"
        file.parent.mkdir(exist_ok=True, parents=True)
        file.write_text("".join(f"[{group}]\n" + "".join(f"{key}={value}\n" for key, value in entries.items())
                                for group, entries in settings.items()))
        safe = Partner("keepassxc", "--config", file, "--pw-stdin", database, stdin=b"master\n")
        self.addCleanup(safe.end)
        safe.comes_to_front("words.kdbx")
        def has_chosen():
            click(*middle_of(safe.find("tree item", "^Entry$")))
            return until(lambda: safe.look("push button", "^Copy Password$", having=("enabled",)), 1)
        self.assertTrue(until(has_chosen, PATIENCE), "the entry cannot be chosen")
        return safe

    def copy_password(self, safe):
        safe.find("push button", "^Copy Password$").press()
        self.assertTrue(until(lambda: clipboard() == SECRET.encode(), PATIENCE), f"the pasteboard has {clipboard()!r}")
        self.assertIn(MARK, clipboard_targets())

    def is_not_kept(self, later):
        """Rows come in the order of the copies: what is copied in another program after the secret stands there, and the secret does
        not. While its window is in front nothing is recorded, whoever copies."""
        other = Partner("xterm", "-T", "another program")
        self.addCleanup(other.end)
        other.comes_to_front("another program")
        copy_text(later)
        self.assertTrue(self.program.records(later))
        self.assertNotIn(SECRET, self.program.texts())
        self.assertEqual(clipboard(), later.encode())

    def stays_empty(self):
        """A panel that opens and closes comes after everything that the program has to do about a pasteboard that was emptied."""
        for _ in range(2):
            self.program.open_panel()
            keys("Escape")
            self.assertTrue(until(lambda: focused_title() != PANEL, PATIENCE))
        self.assertEqual(clipboard(), b"")

    def aPasswordIsNotRecordedWhileItsProgramIsInFront(self):
        self.copy_password(self.open())
        self.is_not_kept("after the password")

    def aPasswordIsNotRecordedWhenItsProgramHasMadeRoom(self):
        self.copy_password(self.open(MinimizeOnCopy="true"))
        self.is_not_kept("after the window has gone")

    def aPasswordThatIsTakenBackStaysAway(self):
        self.copy_password(self.open())
        self.assertTrue(until(lambda: clipboard() == b"", PATIENCE), f"the pasteboard has {clipboard()!r}")
        self.stays_empty()
        self.is_not_kept("after it was taken back")

    def aPasswordStaysAwayWhenItsProgramIsKilled(self):
        safe = self.open()
        self.copy_password(safe)
        os.killpg(safe.process.pid, signal.SIGKILL)
        self.assertTrue(until(lambda: clipboard() == b"", PATIENCE), f"the pasteboard has {clipboard()!r}")
        self.stays_empty()
        self.is_not_kept("after it was killed")

    def aRowCanBePastedIntoAnEntry(self):
        copy_text("a name for the entry")
        self.assertTrue(self.program.records("a name for the entry"))
        safe = self.open()
        safe.find("push button", "^Edit Entry").press()
        keys_of = lambda: [n for n in safe.walk() if n.role == "text" and n.has("focused")]  # noqa: E731
        field = until(keys_of, PATIENCE)
        self.assertTrue(field, "no field has the keyboard")
        keys("ctrl+a")
        self.program.pick("name for")
        self.assertTrue(until(lambda: text_of(field[0]) == "a name for the entry", PATIENCE), text_of(field[0]))
