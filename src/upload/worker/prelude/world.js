// The names that scripts for browsers and for Node lean on. Evaluated before the script, as a function that is given
// the native half. It keeps what it needs of the language before the script can change it.
(function (host) {
    'use strict';
    const global = globalThis;
    const uncurried = Function.prototype.bind.bind(Function.prototype.call);
    const { defineProperty, getOwnPropertyDescriptor, getPrototypeOf, freeze } = Object;
    const { ownKeys } = Reflect;
    const { isArray } = Array;
    const { isView } = ArrayBuffer;
    const stringify = JSON.stringify;
    const TextOf = String, NumberOf = Number, TypeErrorOf = TypeError, RangeErrorOf = RangeError;
    const Bytes = Uint8Array;
    const errorPrototype = Error.prototype;
    const slice = uncurried(String.prototype.slice);
    const unitAt = uncurried(String.prototype.charCodeAt);
    const lowerCase = uncurried(String.prototype.toLowerCase);
    const trim = uncurried(String.prototype.trim);
    const startsWith = uncurried(String.prototype.startsWith);
    const parseWhole = parseInt, parseReal = parseFloat;
    const symbolText = uncurried(Symbol.prototype.toString);
    const functionText = uncurried(Function.prototype.toString);
    const dateText = uncurried(Date.prototype.toISOString);
    const dateTime = uncurried(Date.prototype.getTime);
    const regExpText = uncurried(RegExp.prototype.toString);
    const regExpSource = uncurried(getOwnPropertyDescriptor(RegExp.prototype, 'source').get);
    const mapEach = uncurried(Map.prototype.forEach), setEach = uncurried(Set.prototype.forEach);
    const mapSize = uncurried(getOwnPropertyDescriptor(Map.prototype, 'size').get);
    const setSize = uncurried(getOwnPropertyDescriptor(Set.prototype, 'size').get);
    const bufferSize = uncurried(getOwnPropertyDescriptor(ArrayBuffer.prototype, 'byteLength').get);
    const isPlainPrototype = (prototype) => prototype === Object.prototype || prototype === null;

    // ---- What a console shows ----

    const deepest = 4, mostEntries = 100, mostUnits = 10000;
    let room = 0; // what is left of the line

    const kept = (text) => {
        const part = text.length > room ? slice(text, 0, room) + '…' : text;
        room -= part.length;
        return part;
    };
    const quoted = (text) => {
        const json = stringify(text.length > room ? slice(text, 0, room) : text);
        let inner = '';
        for (let i = 1; i < json.length - 1; ++i) {
            if (json[i] === '\\' && json[i + 1] === '"') continue;
            inner += json[i] === "'" ? "\\'" : json[i];
            if (json[i] === '\\') inner += json[++i];
        }
        return "'" + inner + "'";
    };
    const fails = (brand, value) => {
        try {
            brand(value);
            return false;
        } catch {
            return true;
        }
    };
    const isBuffer = (value) => !fails(bufferSize, value);
    const isError = (value) => {
        for (let up = value, steps = 0; up !== null && steps < 100; up = getPrototypeOf(up), ++steps)
            if (up === errorPrototype) return true;
        return false;
    };
    const dataOf = (object, key) => {
        for (let up = object, steps = 0; up !== null && steps < 100; up = getPrototypeOf(up), ++steps) {
            const found = getOwnPropertyDescriptor(up, key);
            if (found) return found.value;
        }
        return undefined;
    };
    const nameOf = (object) => {
        const prototype = getPrototypeOf(object);
        if (isPlainPrototype(prototype)) return '';
        const constructor = dataOf(object, 'constructor');
        const name = typeof constructor === 'function' ? dataOf(constructor, 'name') : '';
        return typeof name === 'string' ? name : '';
    };
    const errorText = (error) => {
        const name = dataOf(error, 'name'), message = dataOf(error, 'message'), stack = dataOf(error, 'stack');
        let text = typeof name === 'string' ? name : 'Error';
        if (typeof message === 'string' && message !== '') text += ': ' + message;
        if (typeof stack === 'string' && stack !== '') {
            text += '\n    at ';
            for (let i = 0; i < stack.length && i < mostUnits; ++i) text += stack[i] === '\n' ? '\n    at ' : stack[i];
        }
        return text;
    };
    const keyText = (key) => {
        if (typeof key === 'symbol') return '[' + symbolText(key) + ']';
        for (let i = 0; i < key.length; ++i) {
            const unit = unitAt(key, i);
            const isLetter = (unit | 32) >= 97 && (unit | 32) <= 122;
            if (!isLetter && unit !== 95 && unit !== 36 && !(i > 0 && unit >= 48 && unit <= 57)) return quoted(key);
        }
        return key === '' ? "''" : key;
    };
    const memberText = (member, above) => {
        if (member.get) return member.set ? '[Getter/Setter]' : '[Getter]';
        if (member.set) return '[Setter]';
        return shown(member.value, above);
    };
    const listText = (list, above) => {
        let text = '';
        const count = dataOf(list, 'length');
        for (let i = 0; i < count && i < mostEntries && room > 0; ++i) {
            const member = getOwnPropertyDescriptor(list, i);
            text += (i ? ', ' : ' ') + (member ? memberText(member, above) : '<empty>');
        }
        if (count > mostEntries) text += ', … ' + (count - mostEntries) + ' more';
        return '[' + text + (count ? ' ]' : ']');
    };
    const membersText = (object, above) => {
        const keys = ownKeys(object);
        let text = '', count = 0;
        for (let i = 0; i < keys.length && count < mostEntries && room > 0; ++i) {
            const member = getOwnPropertyDescriptor(object, keys[i]);
            if (!member || !member.enumerable) continue;
            text += (count++ ? ', ' : ' ') + keyText(keys[i]) + ': ' + memberText(member, above);
        }
        return '{' + text + (count ? ' }' : '}');
    };
    const collectionText = (name, size, each, collection, above) => {
        let text = '', count = 0;
        each(collection, (value, key) => {
            if (count++ >= mostEntries || room <= 0) return;
            text += (count > 1 ? ', ' : ' ') + (name === 'Map' ? shown(key, above) + ' => ' : '') + shown(value, above);
        });
        return name + '(' + size + ') {' + text + (count ? ' }' : '}');
    };
    const bytesText = (view) => {
        const bytes = new Bytes(isView(view) ? view.buffer : view, isView(view) ? view.byteOffset : 0,
            view.byteLength > mostEntries ? mostEntries : view.byteLength);
        let text = '';
        for (let i = 0; i < bytes.length; ++i) text += (i ? ', ' : ' ') + bytes[i];
        return (nameOf(view) || 'Uint8Array') + '(' + view.byteLength + ' bytes) [' + text + ' ]';
    };
    const objectText = (object, above) => {
        for (let up = above; up; up = up.above)
            if (up.object === object) return '[Circular]';
        if (above && above.depth >= deepest) return isArray(object) ? '[Array]' : '[Object]';
        const here = { object, above, depth: above ? above.depth + 1 : 1 };
        if (isError(object)) return kept(errorText(object));
        if (isArray(object)) return listText(object, here);
        if (!fails(dateTime, object)) return fails(dateText, object) ? 'Invalid Date' : dateText(object);
        if (!fails(regExpSource, object) && object !== RegExp.prototype) return kept(regExpText(object));
        if (!fails(mapSize, object)) return collectionText('Map', mapSize(object), mapEach, object, here);
        if (!fails(setSize, object)) return collectionText('Set', setSize(object), setEach, object, here);
        if (isView(object) || isBuffer(object)) return bytesText(object);
        const name = nameOf(object);
        return (name ? name + ' ' : '') + membersText(object, here);
    };
    const shown = (value, above) => {
        if (room <= 0) return '…';
        switch (typeof value) {
            case 'string': return kept(quoted(value));
            case 'number': return kept(value === 0 && 1 / value < 0 ? '-0' : TextOf(value));
            case 'bigint': return kept(TextOf(value) + 'n');
            case 'symbol': return kept(symbolText(value));
            case 'function': {
                const name = dataOf(value, 'name');
                const kind = startsWith(slice(functionText(value), 0, 6), 'class') ? 'class ' : 'Function: ';
                return kept('[' + kind + (typeof name === 'string' && name !== '' ? name : '(anonymous)') + ']');
            }
            case 'object':
                if (value === null) return 'null';
                try {
                    return objectText(value, above);
                } catch {
                    return '[Object that cannot be shown]';
                }
            default: return kept(TextOf(value));
        }
    };
    const numberText = (value, convert) => {
        if (typeof value === 'bigint') return TextOf(value) + 'n';
        if (typeof value === 'symbol' || (typeof value === 'object' && value !== null)) return 'NaN';
        const number = convert(value);
        return number === 0 && 1 / number < 0 ? '-0' : TextOf(number);
    };
    const plain = (value) => (typeof value === 'string' ? kept(value) : shown(value, undefined));
    /** The text of one call, with the first argument as a format when it is a string. */
    const lineText = (args, first) => {
        room = mostUnits;
        let text = '', next = first;
        if (typeof args[first] === 'string') {
            const format = args[next++];
            for (let i = 0; i < format.length && text.length <= mostUnits; ++i) {
                const letter = format[i] === '%' ? format[i + 1] : undefined;
                if (letter === '%') {
                    text += '%';
                    ++i;
                } else if (letter === undefined || next >= args.length) {
                    text += format[i];
                } else {
                    const value = args[next];
                    let piece;
                    if (letter === 's') piece = plain(value);
                    else if (letter === 'd') piece = numberText(value, NumberOf);
                    else if (letter === 'i') piece = numberText(value, (v) => parseWhole(v, 10));
                    else if (letter === 'f') piece = numberText(value, parseReal);
                    else if (letter === 'o' || letter === 'O' || letter === 'j') piece = shown(value, undefined);
                    else if (letter === 'c') piece = '';
                    if (piece === undefined) {
                        text += '%';
                        continue;
                    }
                    text += piece;
                    ++next;
                    ++i;
                }
            }
        }
        for (; next < args.length; ++next) text += (next > first ? ' ' : '') + plain(args[next]);
        return text;
    };

    let indent = '', isFull = false;
    const counts = { __proto__: null }, starts = { __proto__: null };
    const put = (text) => { isFull = host.log(indent + text); };
    const log = (...args) => {
        if (!isFull) put(lineText(args, 0)); // what nobody keeps need not be put together
    };
    const label = (name) => (name === undefined ? 'default' : typeof name === 'string' ? name : shownAlone(name));
    const shownAlone = (value) => {
        room = mostUnits;
        return plain(value);
    };
    const define = (object, name, value) =>
        defineProperty(object, name, { __proto__: null, value, writable: true, configurable: true, enumerable: false });
    const console = {
        log, info: log, debug: log, warn: log, error: log,
        dir: (value) => log(value), dirxml: log, table: (value) => log(value),
        trace: (...args) => put('Trace: ' + lineText(args, 0)),
        assert: (holds, ...args) => {
            if (!holds) put('Assertion failed' + (args.length ? ': ' + lineText(args, 0) : ''));
        },
        group: (...args) => {
            if (args.length) log(...args);
            if (indent.length < 40) indent += '  ';
        },
        groupEnd: () => { indent = slice(indent, 2); },
        count: (name) => {
            name = label(name);
            put(name + ': ' + (counts[name] = (counts[name] || 0) + 1));
        },
        countReset: (name) => { counts[label(name)] = 0; },
        time: (name) => { starts[label(name)] = host.now(); },
        timeLog: (name) => {
            name = label(name);
            if (name in starts) put(name + ': ' + TextOf(host.now() - starts[name]) + ' ms');
        },
        timeEnd: (name) => {
            console.timeLog(name);
            delete starts[label(name)];
        },
        clear: () => {},
    };
    console.groupCollapsed = console.group;
    define(global, 'console', console);
    define(global, 'self', global);
    define(global, 'global', global);
    define(global, 'print', log);

    // Large and seldom used: made when it is first named.
    for (const name of ['URL', 'URLSearchParams']) {
        defineProperty(global, name, {
            __proto__: null, configurable: true, enumerable: false,
            get: () => {
                const made = host.urls(host);
                define(global, 'URL', made.URL);
                define(global, 'URLSearchParams', made.URLSearchParams);
                return made[name];
            },
            set: (value) => { define(global, name, value); },
        });
    }

    // ---- Text and bytes ----

    const bytesOf = (source) => {
        if (source === undefined) return new Bytes(0);
        if (isView(source)) return new Bytes(source.buffer, source.byteOffset, source.byteLength);
        if (isBuffer(source)) return new Bytes(source);
        throw new TypeErrorOf('bytes are wanted: an ArrayBuffer or a view of one');
    };
    define(global, 'TextEncoder', class TextEncoder {
        get encoding() { return 'utf-8'; }
        encode(text = '') { return host.encode(TextOf(text)); }
        encodeInto(text, target) {
            let read = 0, written = 0;
            for (const character of TextOf(text)) {
                const bytes = host.encode(character);
                if (written + bytes.length > target.length) break;
                for (let i = 0; i < bytes.length; ++i) target[written++] = bytes[i];
                read += character.length;
            }
            return { read, written };
        }
    });
    const encodings = freeze({
        __proto__: null, 'utf-8': 'utf-8', utf8: 'utf-8', 'utf-16le': 'utf-16le', 'utf-16': 'utf-16le',
        latin1: 'windows-1252', 'iso-8859-1': 'windows-1252', ascii: 'windows-1252', 'us-ascii': 'windows-1252',
        'windows-1252': 'windows-1252',
    });
    define(global, 'TextDecoder', class TextDecoder {
        #encoding; #fatal; #ignoreBOM;
        constructor(name = 'utf-8', options = {}) {
            this.#encoding = encodings[lowerCase(trim(TextOf(name)))];
            if (!this.#encoding) throw new RangeErrorOf('the encoding "' + TextOf(name) + '" is not known');
            this.#fatal = !!options.fatal;
            this.#ignoreBOM = !!options.ignoreBOM;
        }
        get encoding() { return this.#encoding; }
        get fatal() { return this.#fatal; }
        get ignoreBOM() { return this.#ignoreBOM; }
        decode(source) {
            const text = host.decode(bytesOf(source), this.#encoding, this.#fatal);
            if (text === undefined) throw new TypeErrorOf('the bytes are not ' + this.#encoding);
            return !this.#ignoreBOM && unitAt(text, 0) === 0xfeff ? slice(text, 1) : text;
        }
    });
    define(global, 'queueMicrotask', (work) => {
        if (typeof work !== 'function') throw new TypeErrorOf('queueMicrotask wants a function');
        (async () => {
            await undefined;
            try {
                work();
            } catch (error) {
                host.uncaught(error);
            }
        })();
    });

    return {
        /** Calls one of the two once `value`, or the Promise that it is, is settled. Await uses nothing of Promise that
         *  a script can change. */
        settle: async (value, resolved, rejected) => {
            let result;
            try {
                result = await value;
            } catch (reason) {
                rejected(reason);
                return;
            }
            resolved(result);
        },
        /** A thrown value that has no text of its own. */
        describe: (value) => shownAlone(value),
    };
})
