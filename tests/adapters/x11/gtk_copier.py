"""A GTK program that copies text, rich text and a picture, and stays until its input ends.

    gtk_copier.py rich     text and HTML
    gtk_copier.py text     plain text
    gtk_copier.py image    a picture
    gtk_copier.py large    a picture that no format packs: 9 MB as PNG

Writes "ready" when it owns the clipboard, and the name of each kind that it was asked for.
"""

import os
import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, GdkPixbuf, GLib, Gtk


def say(text):
    print(text, flush=True)


def main():
    mode = sys.argv[1]
    clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
    if mode == "text":
        clipboard.set_text("GTK: Grüße 🌍", -1)
    elif mode == "image":
        pixbuf = GdkPixbuf.Pixbuf.new(GdkPixbuf.Colorspace.RGB, False, 8, 31, 17)
        pixbuf.fill(0x336699FF)
        clipboard.set_image(pixbuf)
    elif mode == "large":
        noise = GLib.Bytes.new(os.urandom(2000 * 1500 * 3))
        clipboard.set_image(GdkPixbuf.Pixbuf.new_from_bytes(noise, GdkPixbuf.Colorspace.RGB, False, 8, 2000, 1500, 6000))
    else:
        # Python cannot hand several kinds to Gtk.Clipboard; a widget's selection can.
        window = Gtk.Invisible()
        kinds = {"UTF8_STRING": 1, "STRING": 1, "TEXT": 1, "COMPOUND_TEXT": 1, "text/plain": 1,
                 "text/plain;charset=utf-8": 1, "text/html": 2, "x-test/lots": 3}

        def on_get(_widget, selection, info, _time):
            say(selection.get_target().name())
            if info == 1:
                selection.set_text("GTK: Grüße 🌍", -1)
            elif info == 2:
                selection.set(selection.get_target(), 8, "<b>GTK</b>".encode())
            else:
                selection.set(selection.get_target(), 8, bytes(range(256)) * 8000)

        window.connect("selection-get", on_get)
        for name, info in kinds.items():
            Gtk.selection_add_target(window, Gdk.SELECTION_CLIPBOARD, Gdk.Atom.intern(name, False), info)
        Gtk.selection_owner_set(window, Gdk.SELECTION_CLIPBOARD, Gdk.CURRENT_TIME)
    GLib.io_add_watch(0, GLib.IO_IN | GLib.IO_HUP, lambda *_: Gtk.main_quit())
    GLib.idle_add(lambda: say("ready"))
    Gtk.main()


main()
