// A GNOME Shell that is played: as much of its objects as the extension uses, and what was done with them.
import {readFileSync} from 'node:fs';
import vm from 'node:vm';

export const client = ':1.42';

class Signals {
    constructor() {
        this.handlers = new Map();
        this.last = 0;
    }

    connect(signal, handler) {
        this.handlers.set(++this.last, {signal, handler});
        return this.last;
    }

    disconnect(id) {
        this.handlers.delete(id);
    }

    tell(signal, ...values) {
        for (const each of [...this.handlers.values()]) {
            if (each.signal === signal)
                each.handler(this, ...values);
        }
    }
}

export class PlayedShell {
    constructor() {
        this.owner = client; // of the program's name
        this.process = 77;
        this.program = {device: 1, inode: 10, nlink: 1, uid: 0};
        this.running = {...this.program};
        this.link = '/usr/bin/tavrine';
        this.signals = [];
        this.grabbed = new Set();
        this.allowed = new Map();
        this.typed = [];
        this.state = 0;
        this.now = 0;
        this.sources = new Map();
        this.watches = new Map();
        this.monitors = [{x: 0, y: 0, width: 1280, height: 720}, {x: 1280, y: 0, width: 800, height: 600}];
        this.written = [];
        this.nameWatch = null;
        this.display = Object.assign(new Signals(), {
            focus_window: null,
            grab_accelerator: name => name === 'taken' ? 0 : this.#added(this.grabbed, this.grabbed.size + 1),
            ungrab_accelerator: action => this.grabbed.delete(action),
            get_tab_list: () => [],
            get_n_monitors: () => this.monitors.length,
            get_monitor_geometry: index => this.monitors[index],
        });
        this.windowManager = new Signals();
    }

    #added(set, value) {
        set.add(value);
        return value;
    }

    // What passes until nothing is due any more.
    async settle() {
        for (let turn = 0; turn < 20; ++turn)
            await new Promise(resolve => setImmediate(resolve));
    }

    async pass(milliseconds) {
        this.now += milliseconds;
        for (const [id, {due, work}] of [...this.sources]) {
            if (due <= this.now) {
                this.sources.delete(id);
                work();
            }
        }
        await this.settle();
    }

    modules() {
        const shell = this;
        const seat = name => ({
            get_default_seat: () => ({
                create_virtual_device: () => ({
                    notify_keyval: (_, keyval, state) => shell.typed.push([name, keyval, state]),
                    run_dispose: () => shell.typed.push([name, 'disposed']),
                }),
            }),
        });
        this.seatOfContext = seat('context');
        const GLib = {
            PRIORITY_DEFAULT: 0,
            SOURCE_REMOVE: false,
            Variant: class {
                constructor(signature, value) {
                    Object.assign(this, {signature, value});
                }
            },
            build_filenamev: parts => parts.join('/'),
            canonicalize_filename: path => new URL(path, 'file:///').pathname.replace(/\/$/, ''),
            file_read_link: path => path === `/proc/${shell.process}/exe` ? shell.link : '',
            get_monotonic_time: () => shell.now * 1000,
            timeout_add: (_, delay, work) => {
                const id = shell.sources.size + 1000 + shell.now;
                shell.sources.set(id, {due: shell.now + delay, work});
                return id;
            },
            source_remove: id => shell.sources.delete(id),
        };
        const session = {
            is_closed: () => false,
            emit_signal: (to, path, name, signal, values) => shell.signals.push({to, signal, values: values?.value}),
            call: (name, path, face, method, parameters, type, flags, limit, cancel, answered) => setImmediate(() =>
                answered({call_finish: () => {
                    if (method === 'GetNameOwner' && !shell.owner)
                        throw new Error('nobody owns it');
                    return {deepUnpack: () => [method === 'GetNameOwner' ? shell.owner : shell.process]};
                }})),
        };
        const Gio = {
            DBus: {session},
            DBusCallFlags: {NONE: 0},
            BusNameWatcherFlags: {NONE: 0},
            FileQueryInfoFlags: {NONE: 0},
            OutputStreamSpliceFlags: {NONE: 0},
            DBusExportedObject: {wrapJSObject: (xml, object) => ({
                export: (_, path) => { shell.exported = {xml, object, path}; },
                unexport: () => { shell.exported = null; },
            })},
            File: {new_for_path: path => ({query_info: () => {
                const facts = path === '/usr/bin/tavrine' ? shell.program : shell.running;
                const value = name => facts[name.replace('unix::', '')];
                return {get_attribute_uint32: value, get_attribute_uint64: value};
            }})},
            bus_watch_name_on_connection: (_, name, flags, appeared, vanished) => {
                shell.nameWatch = {name, vanished};
                return 5;
            },
            bus_unwatch_name: () => { shell.nameWatch = null; },
            UnixOutputStream: class {
                splice_async(stream, flags, priority, cancel, answered) {
                    shell.written.push(stream.bytes);
                    setImmediate(() => answered(this, null));
                }

                splice_finish() {}

                close() {
                    shell.written.push('closed');
                }
            },
            MemoryOutputStream: {new_resizable: () => ({
                close() {},
                steal_as_bytes() { return this.bytes; },
            })},
            MemoryInputStream: {new_from_bytes: bytes => ({bytes})},
        };
        const masks = ['SHIFT', 'CONTROL', 'MOD1', 'MOD4', 'SUPER', 'META', 'HYPER'];
        const Clutter = {
            ModifierType: Object.fromEntries(masks.map((name, index) => [`${name}_MASK`, 1 << index])),
            KeyState: {PRESSED: 'down', RELEASED: 'up'},
            InputDeviceType: {KEYBOARD_DEVICE: 1},
            get_default_backend: () => seat('default'),
        };
        const Meta = {
            KeyBindingFlags: {IGNORE_AUTOREPEAT: 1},
            KeyBindingAction: {NONE: 0},
            TabList: {NORMAL_ALL: 0},
            WindowType: {DESKTOP: 1},
            external_binding_name_for_action: action => `external-${action}`,
        };
        const Shell = {
            ActionMode: {NONE: 0, NORMAL: 1, OVERVIEW: 2, POPUP: 16},
            WindowTracker: {get_default: () => ({get_window_app: () => null})},
            Screenshot: class {
                screenshot_area(x, y, width, height, stream, answered) {
                    stream.bytes = {get_size: () => width * 10, of: [x, y, width, height]};
                    setImmediate(() => answered(this, null));
                }

                screenshot_area_finish() {}
            },
        };
        const Main = {
            wm: {allowKeybinding: (name, modes) => shell.allowed.set(name, modes)},
            activateWindow: window => { shell.activated = window; },
        };
        const monitor = {
            add_user_active_watch: work => {
                shell.watches.set(shell.watches.size + 1, work);
                return shell.watches.size;
            },
            remove_watch: id => shell.watches.delete(id),
        };
        this.global = {
            display: this.display,
            window_manager: this.windowManager,
            backend: {get_core_idle_monitor: () => monitor},
            stage: {},
            get_pointer: () => [3, 4, shell.state],
        };
        return {Clutter, Gio, GLib, Meta, Shell, Main};
    }

    // A call as the bus brings it; resolves to what is answered.
    async call(method, parameters = [], sender = client) {
        let answer;
        this.exported.object[`${method}Async`](parameters, {
            get_sender: () => sender,
            get_message: () => ({get_unix_fd_list: () => ({get: () => 9})}),
            return_value: value => { answer = value?.value ?? []; },
            return_dbus_error: name => { answer = name; },
        });
        await this.settle();
        return answer;
    }

    of(signal) {
        return this.signals.filter(each => each.signal === signal);
    }
}

const folder = '/usr/share/gnome-shell/extensions/tavrine';

// The extension as shells up to 44 load it, or as those from 45 on do.
export async function load(form, file, shell) {
    const {Main, ...libraries} = shell.modules();
    if (form === 'script') {
        const imports = {
            gi: libraries,
            ui: {main: Main},
            misc: {extensionUtils: {getCurrentExtension: () => ({path: folder})}},
        };
        const context = vm.createContext({imports, global: shell.global, console});
        new vm.Script(readFileSync(file, 'utf8'), {filename: file}).runInContext(context);
        return vm.runInContext('init()', context);
    }
    const context = vm.createContext({global: shell.global, console});
    const synthetic = exported => new vm.SyntheticModule(Object.keys(exported), function () {
        for (const [name, value] of Object.entries(exported))
            this.setExport(name, value);
    }, {context});
    const known = {
        'resource:///org/gnome/shell/ui/main.js': Main,
        'resource:///org/gnome/shell/extensions/extension.js': {Extension: class {
            constructor(metadata) {
                this.path = metadata.path;
            }
        }},
    };
    for (const [name, library] of Object.entries(libraries))
        known[`gi://${name}`] = {default: library};
    const module = new vm.SourceTextModule(readFileSync(file, 'utf8'), {context, identifier: file});
    await module.link(name => {
        if (!known[name])
            throw new Error(`there is no ${name} in a shell`);
        return synthetic(known[name]);
    });
    await module.evaluate();
    return new module.namespace.default({path: folder});
}
