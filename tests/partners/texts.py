"""What every program with a field for text owes a history: a copy of it is a row, and a row comes into it once and whole."""
from hands import PATIENCE, clipboard, clipboard_targets, copy_text, keys, text_of, type_text, until

LINES = "first line of three\nsecond: äöü ß € 中文 🚀\n\tthird \"quoted\" $HOME `end` "


def is_recorded(test, program, text):
    """As another program copies it, for the first time."""
    test.assertNotIn(text, program.texts())
    copy_text(text)
    test.assertTrue(program.records(text), f"rows: {program.texts()[:5]}; the pasteboard has {clipboard_targets()} {clipboard()!r:.200}")


def copies_to_a_row(test, program, text):
    """The field has the keyboard and holds the text."""
    keys("ctrl+a", "ctrl+c")
    test.assertTrue(program.records(text), f"rows: {program.texts()[:5]}; the pasteboard: {clipboard()!r:.300}")


def takes_a_row(test, program, word, expected, content):
    """The field has the keyboard; `content` gives what stands in it."""
    program.pick(word)
    test.assertTrue(until(lambda: content() == expected, PATIENCE), f"it holds {content()!r}")


def both_ways(test, program, content, beginning=LINES):
    """An empty field that has the keyboard, and `content` that gives what stands in it. What is typed afterwards comes behind what was
    pasted, and it came once."""
    word = test._testMethodName.lower()
    text = beginning + word
    is_recorded(test, program, text)
    is_recorded(test, program, f"something else meanwhile {len(program.texts())}")
    takes_a_row(test, program, word, text, content)
    type_text(" and typed")
    test.assertTrue(until(lambda: content() == text + " and typed", PATIENCE), f"it holds {content()!r}")
    copies_to_a_row(test, program, text + " and typed")


def content_of(field):
    """Of a control; some toolkits tell of a last line that is empty."""
    return lambda: text_of(field).removesuffix("\n")
