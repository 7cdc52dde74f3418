"""What a screen reader knows of a program: the accessibility bus and what stands on it. And the services of a desktop that the program
finds beside it, so that a test sees what reaches them: a tray, logind."""
import os
import select
import time

from gi.repository import Gio, GLib

ATSPI = "org.a11y.atspi."
STATES = {"active": 1, "checked": 4, "editable": 7, "enabled": 8, "expanded": 10, "focusable": 11, "focused": 12, "showing": 25}
NO_TIMEOUT_FLAGS = Gio.DBusCallFlags.NONE
ANSWER_MS = 5000


def call(connection, name, path, interface, method, arguments=None):
    return connection.call_sync(name, path, interface, method, arguments, None, NO_TIMEOUT_FLAGS, ANSWER_MS, None).unpack()


def until(condition, seconds=15.0):
    """What the condition gives as soon as it is something; what it gives last when the time is over. The services answer meanwhile."""
    end = time.monotonic() + seconds
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        found = condition()
        if found or time.monotonic() > end:
            return found
        time.sleep(0.01)


class Node:
    """One object of the tree, as it is at each question."""

    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path

    def ask(self, interface, method, arguments=None):
        return call(self.bus, self.owner, self.path, ATSPI + interface, method, arguments)

    def get(self, interface, field):
        return call(self.bus, self.owner, self.path, "org.freedesktop.DBus.Properties", "Get",
                    GLib.Variant("(ss)", (ATSPI + interface, field)))[0]

    @property
    def name(self):
        return self.get("Accessible", "Name")

    @property
    def description(self):
        return self.get("Accessible", "Description")

    @property
    def role(self):
        return self.ask("Accessible", "GetRoleName")[0]

    def has(self, state):
        low, high = self.ask("Accessible", "GetState")[0]
        return bool((low | high << 32) >> STATES[state] & 1)

    def children(self):
        return [Node(self.bus, *reference) for reference in self.ask("Accessible", "GetChildren")[0]]

    def actions(self):
        if ATSPI + "Action" not in self.ask("Accessible", "GetInterfaces")[0]:
            return []
        return [action[0] for action in self.ask("Action", "GetActions")[0]]

    def press(self):
        """By its own action; taking the keyboard is none."""
        self.act("Press", "Toggle")

    def act(self, *wanted):
        names = self.actions()
        place = next((i for i, name in enumerate(names) if name in wanted), None)
        if place is None:
            raise AssertionError(f"{self.role} “{self.name}” has no {' or '.join(wanted)}: {names}")
        self.ask("Action", "DoAction", GLib.Variant("(i)", (place,)))

    def walk(self):
        """Every object that is on the screen or would be after scrolling, from the top to the bottom."""
        for child in self.children():
            if child.has("showing"):
                yield child
                yield from child.walk()

    def find(self, role, name, seconds=5.0):
        def once():
            try:
                return next((node for node in self.walk() if node.role == role and node.name == name), None)
            except GLib.Error:
                return None  # what was just asked is gone
        found = until(once, seconds)
        if not found:
            raise AssertionError(f"no {role} “{name}” among " + ", ".join(f"{n.role} “{n.name}”" for n in self.walk() if n.name))
        return found


class ScreenReader:
    """Says that it is there, and then sees programs come."""

    def __init__(self, session):
        address, = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        for status in ("IsEnabled", "ScreenReaderEnabled"):
            call(session, "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                 GLib.Variant("(ssv)", ("org.a11y.Status", status, GLib.Variant("b", True))))
        self.bus = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def hear(self):
        """A list to which each new name of anything is added as soon as a program tells of it, before it is looked for and gone."""
        names = []
        registry = "/org/a11y/atspi/registry"
        call(self.bus, ATSPI + "Registry", registry, ATSPI + "Registry", "RegisterEvent",
             GLib.Variant("(s)", ("object:property-change:accessible-name",)))

        def on_change(_connection, sender, path, *_):
            try:
                names.append(Node(self.bus, sender, path).name)  # what is told is only whose it is
            except GLib.Error:
                pass  # it is gone
        self.bus.signal_subscribe(None, ATSPI + "Event.Object", "PropertyChange", None, None, Gio.DBusSignalFlags.NONE, on_change)
        return names

    def hear_descriptions(self):
        """A list to which each new description is added as it was told, with the name of whose it is."""
        words = []
        call(self.bus, ATSPI + "Registry", "/org/a11y/atspi/registry", ATSPI + "Registry", "RegisterEvent",
             GLib.Variant("(s)", ("object:property-change:accessible-description",)))

        def on_change(_connection, sender, path, _interface, _member, event):
            if event.unpack()[0] == "accessible-description":
                words.append((Node(self.bus, sender, path).name, event.unpack()[3]))
        self.bus.signal_subscribe(None, ATSPI + "Event.Object", "PropertyChange", None, None, Gio.DBusSignalFlags.NONE, on_change)
        return words

    def named(self, name, seconds=10.0):
        """The program of that name."""
        def once():
            try:
                root = Node(self.bus, ATSPI + "Registry", "/org/a11y/atspi/accessible/root")
                return next((node for node in root.children() if node.name == name), None)
            except GLib.Error:
                return None  # one of them has just gone
        return until(once, seconds)

    def program(self, pid, seconds=10.0):
        def once():
            root = Node(self.bus, ATSPI + "Registry", "/org/a11y/atspi/accessible/root")
            for node in root.children():
                if call(self.bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                        GLib.Variant("(s)", (node.owner,)))[0] == pid:
                    return node
            return None
        return until(once, seconds)


class Services:
    """A tray that knows items on the bus, and logind, each as far as the program asks."""

    XML = """<node>
    <interface name="org.kde.StatusNotifierWatcher">
      <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
      <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
      <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
      <property name="ProtocolVersion" type="i" access="read"/>
    </interface>
    <interface name="org.freedesktop.login1.Manager">
      <method name="Inhibit"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
        <arg type="s" direction="in"/><arg type="h" direction="out"/></method>
    </interface></node>"""

    def __init__(self, session):
        self.session = session
        self.item = None
        self.held = []  # what is inhibited, with the reading end of its pipe
        tray, login = Gio.DBusNodeInfo.new_for_xml(self.XML).interfaces
        session.register_object("/StatusNotifierWatcher", tray, self.on_tray,
                                lambda *question: GLib.Variant("i", 0) if question[-1] == "ProtocolVersion" else GLib.Variant("b", True),
                                None)
        session.register_object("/org/freedesktop/login1", login, self.on_login, None, None)
        for name in ("org.kde.StatusNotifierWatcher", "org.freedesktop.login1"):
            Gio.bus_own_name_on_connection(session, name, Gio.BusNameOwnerFlags.NONE, None, None)

    def on_tray(self, _connection, sender, _path, _interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            name, = arguments.unpack()
            self.item = name if not name.startswith("/") else sender
        invocation.return_value(None)

    def on_login(self, _connection, _sender, _path, _interface, _method, arguments, invocation):
        what, who, _why, _mode = arguments.unpack()
        reading, writing = os.pipe()
        descriptors = Gio.UnixFDList.new()
        index = descriptors.append(writing)
        os.close(writing)
        self.held.append((f"{who}: {what}", reading))
        invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", (index,)), descriptors)

    def inhibited(self):
        """What is still held; an end of file tells that it was let go."""
        self.held = [(what, pipe) for what, pipe in self.held if not select.select([pipe], [], [], 0)[0]]
        return [what for what, _ in self.held]

    def has_item(self):
        return bool(self.item) and call(self.session, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                                        GLib.Variant("(s)", (self.item,)))[0]

    def press_item(self, method="Activate", arguments=GLib.Variant("(ii)", (1000, 10))):
        call(self.session, self.item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", method, arguments)

    def menu_lines(self):
        """What a tray that draws menus itself would show: label → enabled."""
        layout = call(self.session, self.item, "/MenuBar", "com.canonical.dbusmenu", "GetLayout",
                      GLib.Variant("(iias)", (0, -1, [])))[1]
        return {line[1]["label"]: line[1].get("enabled", True) for line in layout[2] if "label" in line[1]}
