// What Tavrine needs of GNOME Shell and Wayland gives to no program: one object on the session bus, which answers the
// installed Tavrine and nobody else, and holds nothing while that is not attached.
//
// The common part of both forms of the extension, into which the build puts it: `extension-43.js.in` is a script, as
// shells up to 44 load them, `extension-45.js.in` a module. It takes Clutter, Gio, GLib, Meta, Shell and Main from there.

const programName = 'com.veltrane.Tavrine';
const objectPath = '/com/veltrane/Tavrine/Shell';
const interfaceName = 'com.veltrane.Tavrine.Shell';

// A picture is (x, y, width, height of its monitor, bytes of its PNG); the PNGs follow one another in the file.
// Windows are (application, class, process, number); the pointer is (x, y, modifiers and buttons as the shell has them).
const interfaceXml = `
<node><interface name="${interfaceName}">
  <method name="Attach">
    <arg name="windows" type="a(ssuu)" direction="out"/><arg name="focused" type="u" direction="out"/>
    <arg name="pointer" type="(iiu)" direction="out"/>
  </method>
  <method name="GrabKey"><arg name="accelerator" type="s" direction="in"/><arg name="action" type="u" direction="out"/></method>
  <method name="UngrabKey"><arg name="action" type="u" direction="in"/></method>
  <method name="WatchInput"><arg name="interval" type="u" direction="in"/></method>
  <method name="ActivateWindow"><arg name="number" type="u" direction="in"/><arg name="found" type="b" direction="out"/></method>
  <method name="TypeChord"><arg name="keyvals" type="au" direction="in"/><arg name="typed" type="b" direction="out"/></method>
  <method name="TakePicture">
    <arg name="file" type="h" direction="in"/><arg name="pictures" type="a(iiiit)" direction="out"/>
  </method>
  <property name="IsAttached" type="b" access="read"/>
  <signal name="Ready"/>
  <signal name="Gone"/>
  <signal name="KeyPressed"><arg name="action" type="u"/><arg name="time" type="u"/><arg name="pointer" type="(iiu)"/></signal>
  <signal name="WindowsChanged"><arg name="windows" type="a(ssuu)"/><arg name="focused" type="u"/></signal>
  <signal name="Input"><arg name="pointer" type="(iiu)"/></signal>
</interface></node>`;

const mostKeys = 32;            // that one program may hold
const mostWindows = 512;        // that are told of
const longestChord = 4;
const shortestInterval = 10;    // ms between two looks at the pointer and the modifiers
const longestHold = 1000;       // ms for which a chord waits for the person to let go of other keys
const betweenHeldLooks = 10;    // ms

// What a chord must not meet: all modifiers that a person can hold.
const heldModifiers = Clutter.ModifierType.SHIFT_MASK | Clutter.ModifierType.CONTROL_MASK |
    Clutter.ModifierType.MOD1_MASK | Clutter.ModifierType.MOD4_MASK | Clutter.ModifierType.SUPER_MASK |
    Clutter.ModifierType.META_MASK | Clutter.ModifierType.HYPER_MASK;

function refusal(invocation, text) {
    invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', text);
}

function factsOfFile(path) {
    const info = Gio.File.new_for_path(path).query_info('unix::device,unix::inode,unix::nlink,unix::uid',
        Gio.FileQueryInfoFlags.NONE, null);
    return {
        device: info.get_attribute_uint32('unix::device'),
        inode: info.get_attribute_uint64('unix::inode'),
        names: info.get_attribute_uint32('unix::nlink'),
        owner: info.get_attribute_uint32('unix::uid'),
    };
}

// The program that was installed together with this extension: PREFIX/bin beside PREFIX/share/gnome-shell/extensions.
function installedProgram(extension) {
    const prefix = GLib.build_filenamev([extension, '..', '..', '..', '..']);
    return GLib.build_filenamev([GLib.canonicalize_filename(prefix, null), 'bin', 'tavrine']);
}

// Whether a process runs that program's file, or the one that an update has put it in the place of. The name of that
// proves nothing: in a name space of its own every program can run under any name. But it cannot make a file of the
// installed one's owner, on its disk, that nobody has a name for any more.
function runsInstalledProgram(process, extension) {
    try {
        const program = installedProgram(extension);
        const installed = factsOfFile(program);
        const link = `/proc/${process}/exe`;
        const running = factsOfFile(link);
        if (running.device !== installed.device)
            return false;
        return running.inode === installed.inode ||
            (running.names === 0 && running.owner === installed.owner &&
             GLib.file_read_link(link) === `${program} (deleted)`);
    } catch (error) {
        return false;
    }
}

function ask(method, parameters) {
    return new Promise((resolve, reject) => {
        Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', method, parameters,
            null, Gio.DBusCallFlags.NONE, 5000, null, (bus, result) => {
                try {
                    resolve(bus.call_finish(result).deepUnpack()[0]);
                } catch (error) {
                    reject(error);
                }
            });
    });
}

// Who may attach: the owner of the program's name on the bus, if it runs the installed program. This keeps other
// programs out, those in a sandbox for certain; it proves nothing about a program that the same person's account has
// already tampered with, by a debugger or a library of its own.
async function mayAttach(sender, extension) {
    if (await ask('GetNameOwner', new GLib.Variant('(s)', [programName])) !== sender)
        return false;
    return runsInstalledProgram(await ask('GetConnectionUnixProcessID', new GLib.Variant('(s)', [sender])), extension);
}

// Shells have moved the way to it.
function seat() {
    const backend = global.stage.context?.get_backend?.() ?? Clutter.get_default_backend();
    return backend.get_default_seat();
}

function pointerNow() {
    const [x, y, modifiers] = global.get_pointer();
    return [x, y, modifiers >>> 0];
}

function applicationOf(window) {
    const sandboxed = window.get_sandboxed_app_id();
    if (sandboxed)
        return sandboxed;
    const named = window.get_gtk_application_id();
    if (named)
        return named;
    // A window without a desktop file has an identifier that the shell made up.
    const application = Shell.WindowTracker.get_default().get_window_app(window);
    return application && !application.is_window_backed() ? application.get_id().replace(/\.desktop$/, '') : '';
}

function factsOf(window) {
    return [applicationOf(window), window.get_wm_class() || '', Math.max(window.get_pid(), 0), window.get_stable_sequence()];
}

function programWindows() {
    return global.display.get_tab_list(Meta.TabList.NORMAL_ALL, null)
        .sort((a, b) => a.get_stable_sequence() - b.get_stable_sequence()).slice(0, mostWindows);
}

// A picture of a part of the screen, in as many pixels as are there, without the pointer.
function takePart({x, y, width, height}) {
    return new Promise((resolve, reject) => {
        const stream = Gio.MemoryOutputStream.new_resizable();
        new Shell.Screenshot().screenshot_area(x, y, width, height, stream, (screenshot, result) => {
            try {
                screenshot.screenshot_area_finish(result);
                stream.close(null);
                resolve({area: [x, y, width, height], bytes: stream.steal_as_bytes()});
            } catch (error) {
                reject(error);
            }
        });
    });
}

function append(file, bytes) {
    return new Promise((resolve, reject) => {
        file.splice_async(Gio.MemoryInputStream.new_from_bytes(bytes), Gio.OutputStreamSpliceFlags.NONE,
            GLib.PRIORITY_DEFAULT, null, (_, result) => {
                try {
                    resolve(file.splice_finish(result));
                } catch (error) {
                    reject(error);
                }
            });
    });
}

// Each monitor by itself: a picture of all has as many pixels as the finest needs, and none of the others' own.
async function writePictures(file) {
    const monitors = [];
    for (let i = 0; i < global.display.get_n_monitors(); ++i)
        monitors.push(global.display.get_monitor_geometry(i));
    const parts = await Promise.all(monitors.map(takePart)); // all begun before anything is painted again
    const pictures = [];
    for (const {area, bytes} of parts) {
        await append(file, bytes);
        pictures.push([...area, bytes.get_size()]);
    }
    file.close(null);
    return pictures;
}

// Everything that is held for the attached program; `release` gives all of it back.
class Hold {
    constructor(client, emit) {
        this.client = client;
        this._emit = emit;
        this._actions = new Set();
        this._signals = [];
        this._sources = new Set();
        this._interval = 0;
        this._activeWatch = 0;
        this._lookSource = 0;
        this._keyboard = null;
        this._listen(global.display, 'accelerator-activated', (_, action, device, time) => this._onPress(action, time));
        this._listen(global.display, 'notify::focus-window', () => this._onWindowsChanged());
        this._listen(global.display, 'window-created', () => this._onWindowsChanged());
        this._listen(global.window_manager, 'destroy', () => this._onWindowsChanged());
    }

    release() {
        this.isReleased = true;
        this.watchInput(0);
        for (const action of [...this._actions])
            this.ungrabKey(action);
        for (const [object, id] of this._signals)
            object.disconnect(id);
        for (const source of this._sources)
            GLib.source_remove(source);
        this._signals = [];
        this._sources.clear();
        if (this._keyboard)
            this._keyboard.run_dispose();
        this._keyboard = null;
    }

    _listen(object, signal, handler) {
        this._signals.push([object, object.connect(signal, handler)]);
    }

    _later(delay, work) {
        const source = GLib.timeout_add(GLib.PRIORITY_DEFAULT, delay, () => {
            this._sources.delete(source);
            work();
            return GLib.SOURCE_REMOVE;
        });
        this._sources.add(source);
    }

    // Keys.

    grabKey(accelerator) {
        if (this._actions.size >= mostKeys)
            return 0;
        const action = global.display.grab_accelerator(accelerator, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
        if (action === Meta.KeyBindingAction.NONE)
            return 0;
        this._actions.add(action);
        // Not while a dialog of the system has the keyboard, nor while the screen is locked.
        Main.wm.allowKeybinding(Meta.external_binding_name_for_action(action),
            Shell.ActionMode.NORMAL | Shell.ActionMode.OVERVIEW | Shell.ActionMode.POPUP);
        return action;
    }

    ungrabKey(action) {
        if (!this._actions.delete(action))
            return;
        Main.wm.allowKeybinding(Meta.external_binding_name_for_action(action), Shell.ActionMode.NONE);
        global.display.ungrab_accelerator(action);
    }

    _onPress(action, time) {
        if (!this._actions.has(action))
            return;
        this._tellWindows(); // whose the keyboard was is known before the press is
        this._emit('KeyPressed', new GLib.Variant('(uu(iiu))', [action, time, pointerNow()]));
    }

    // Windows.

    windows() {
        const focused = global.display.focus_window;
        const isProgram = focused && focused.get_window_type() !== Meta.WindowType.DESKTOP;
        const all = programWindows();
        if (isProgram && !all.includes(focused))
            all.push(focused);
        return [all.map(factsOf), isProgram ? focused.get_stable_sequence() : 0];
    }

    // A window's class is known a moment after it came, and several things change at once: told when that is over.
    _onWindowsChanged() {
        if (this._areWindowsDue)
            return;
        this._areWindowsDue = true;
        this._later(0, () => this._tellWindows());
    }

    _tellWindows() {
        if (this._areWindowsDue)
            this._emit('WindowsChanged', new GLib.Variant('(a(ssuu)u)', this.windows()));
        this._areWindowsDue = false;
    }

    activateWindow(number) {
        const window = global.display.get_tab_list(Meta.TabList.NORMAL_ALL, null)
            .find(each => each.get_stable_sequence() === number);
        if (!window)
            return false;
        Main.activateWindow(window, global.display.get_current_time_roundtrip());
        return true;
    }

    // Pointer, buttons and modifiers, looked at every so many milliseconds; 0 for never. The shell tells nobody of a
    // modifier alone, so it is asked: soon after each event of the person's, and never while there is none.

    watchInput(interval) {
        this._interval = interval === 0 ? 0 : Math.max(interval, shortestInterval);
        const monitor = global.backend.get_core_idle_monitor();
        if (this._activeWatch)
            monitor.remove_watch(this._activeWatch);
        this._activeWatch = 0;
        if (this._lookSource)
            GLib.source_remove(this._lookSource);
        this._lookSource = 0;
        this._last = '';
        this._look();
    }

    _look() {
        if (this._interval === 0)
            return;
        const pointer = pointerNow();
        if (this._last !== pointer.join()) {
            this._last = pointer.join();
            this._emit('Input', new GLib.Variant('((iiu))', [pointer]));
        }
        this._activeWatch = global.backend.get_core_idle_monitor().add_user_active_watch(() => {
            this._activeWatch = 0;
            this._lookSource = GLib.timeout_add(GLib.PRIORITY_DEFAULT, this._interval, () => {
                this._lookSource = 0;
                this._look();
                return GLib.SOURCE_REMOVE;
            });
        });
    }

    // A chord for the program in front, once the person holds no other modifier.

    typeChord(keyvals, answer, deadline = GLib.get_monotonic_time() + longestHold * 1000) {
        if (keyvals.length === 0 || keyvals.length > longestChord) {
            answer(false);
            return;
        }
        if ((pointerNow()[2] & heldModifiers) !== 0 && GLib.get_monotonic_time() < deadline) {
            this._later(betweenHeldLooks, () => this.typeChord(keyvals, answer, deadline));
            return;
        }
        if (!this._keyboard)
            this._keyboard = seat().create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);
        const now = () => GLib.get_monotonic_time();
        for (const keyval of keyvals)
            this._keyboard.notify_keyval(now(), keyval, Clutter.KeyState.PRESSED);
        for (const keyval of [...keyvals].reverse())
            this._keyboard.notify_keyval(now(), keyval, Clutter.KeyState.RELEASED);
        answer(true);
    }
}

class Service {
    // `extension` is the folder that the extension stands in.
    constructor(extension) {
        this._extension = extension;
        this._hold = null;
        this._clientWatch = 0;
        this._object = Gio.DBusExportedObject.wrapJSObject(interfaceXml, this);
        this._object.export(Gio.DBus.session, objectPath);
        this._emit(null, 'Ready', null);
    }

    destroy() {
        this._detach();
        this._object.unexport();
        this._object = null; // what is still asked about a sender finds no way in
    }

    // To one program, or, of what is no secret, to all.
    _emit(destination, name, parameters) {
        if (!Gio.DBus.session.is_closed())
            Gio.DBus.session.emit_signal(destination, objectPath, interfaceName, name, parameters);
    }

    _detach() {
        if (this._clientWatch)
            Gio.bus_unwatch_name(this._clientWatch);
        this._clientWatch = 0;
        if (this._hold) {
            this._hold.release();
            this._emit(this._hold.client, 'Gone', null);
        }
        this._hold = null;
    }

    get IsAttached() {
        return this._hold !== null;
    }

    AttachAsync(parameters, invocation) {
        const sender = invocation.get_sender();
        mayAttach(sender, this._extension).catch(() => false).then(may => {
            if (!may || !this._object) {
                refusal(invocation, 'Only the installed program is answered');
                return;
            }
            this._detach();
            this._hold = new Hold(sender, (name, variant) => this._emit(sender, name, variant));
            this._clientWatch = Gio.bus_watch_name_on_connection(Gio.DBus.session, sender,
                Gio.BusNameWatcherFlags.NONE, null, () => this._detach());
            const [windows, focused] = this._hold.windows();
            invocation.return_value(new GLib.Variant('(a(ssuu)u(iiu))', [windows, focused, pointerNow()]));
        });
    }

    // Calls `work` for the attached program; everybody else is refused.
    _serve(invocation, work) {
        if (!this._hold || invocation.get_sender() !== this._hold.client) {
            refusal(invocation, 'Not attached');
            return;
        }
        try {
            work(this._hold);
        } catch (error) {
            invocation.return_dbus_error('org.freedesktop.DBus.Error.Failed', `${error.message}`);
        }
    }

    GrabKeyAsync([accelerator], invocation) {
        this._serve(invocation, hold =>
            invocation.return_value(new GLib.Variant('(u)', [hold.grabKey(accelerator)])));
    }

    UngrabKeyAsync([action], invocation) {
        this._serve(invocation, hold => {
            hold.ungrabKey(action);
            invocation.return_value(null);
        });
    }

    WatchInputAsync([interval], invocation) {
        this._serve(invocation, hold => {
            hold.watchInput(interval);
            invocation.return_value(null);
        });
    }

    ActivateWindowAsync([number], invocation) {
        this._serve(invocation, hold =>
            invocation.return_value(new GLib.Variant('(b)', [hold.activateWindow(number)])));
    }

    TypeChordAsync([keyvals], invocation) {
        this._serve(invocation, hold =>
            hold.typeChord(keyvals, typed => invocation.return_value(new GLib.Variant('(b)', [typed]))));
    }

    TakePictureAsync(parameters, invocation) {
        this._serve(invocation, () => {
            const descriptor = invocation.get_message().get_unix_fd_list().get(parameters[0]);
            const file = new Gio.UnixOutputStream({fd: descriptor, close_fd: true});
            writePictures(file).then(
                pictures => invocation.return_value(new GLib.Variant('(a(iiiit))', [pictures])),
                error => invocation.return_dbus_error('org.freedesktop.DBus.Error.Failed', `${error.message}`));
        });
    }
}
