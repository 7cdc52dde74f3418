// URL and URLSearchParams, as far as uploads need them: parsing with and without a base, every part readable and
// settable, queries in both directions. Made when a script first names them.
(function (host) {
    'use strict';
    const ports = { __proto__: null, 'http:': '80', 'https:': '443', 'ws:': '80', 'wss:': '443', 'ftp:': '21', 'file:': '' };
    const isSpecial = (protocol) => protocol in ports;
    const escaped = (text, keep) => {
        let out = '';
        for (const character of text) {
            const code = character.codePointAt(0);
            if (code > 0x20 && code < 0x7f && !keep.includes(character)) {
                out += character;
                continue;
            }
            for (const byte of host.encode(character)) out += '%' + (byte < 16 ? '0' : '') + byte.toString(16).toUpperCase();
        }
        return out;
    };
    const inPath = '"#<>?`{}', inQuery = '"#<>', inSpecialQuery = '"#<>\'', inFragment = '"<>`', inUser = '"#<>?`{}/:;=@[\\]^|';
    const unescaped = (text) => {
        const bytes = [];
        const raw = host.encode(text);
        for (let i = 0; i < raw.length; ++i) {
            const pair = raw[i] === 37 ? String.fromCharCode(raw[i + 1], raw[i + 2]) : '';
            if (/^[0-9a-f]{2}$/i.test(pair)) {
                bytes.push(parseInt(pair, 16));
                i += 2;
            } else bytes.push(raw[i]);
        }
        return host.decode(new Uint8Array(bytes), 'utf-8', false);
    };

    // ---- Hosts ----

    const punycode = (label) => {
        const points = Array.from(label, (c) => c.codePointAt(0));
        const basic = points.filter((c) => c < 128);
        let out = String.fromCharCode(...basic) + (basic.length ? '-' : '');
        let n = 128, delta = 0, bias = 72, handled = basic.length;
        const adapt = (d, count, isFirst) => {
            d = isFirst ? Math.floor(d / 700) : d >> 1;
            d += Math.floor(d / count);
            let k = 0;
            for (; d > 455; k += 36) d = Math.floor(d / 35);
            return k + Math.floor((36 * d) / (d + 38));
        };
        while (handled < points.length) {
            const m = Math.min(...points.filter((c) => c >= n));
            delta += (m - n) * (handled + 1);
            n = m;
            for (const c of points) {
                if (c < n) ++delta;
                if (c !== n) continue;
                let q = delta;
                for (let k = 36; ; k += 36) {
                    const t = k <= bias ? 1 : k >= bias + 26 ? 26 : k - bias;
                    if (q < t) break;
                    const digit = t + ((q - t) % (36 - t));
                    out += String.fromCharCode(digit < 26 ? digit + 97 : digit + 22);
                    q = Math.floor((q - t) / (36 - t));
                }
                out += String.fromCharCode(q < 26 ? q + 97 : q + 22);
                bias = adapt(delta, handled + 1, handled === basic.length);
                delta = 0;
                ++handled;
            }
            ++delta;
            ++n;
        }
        return 'xn--' + out;
    };
    const ipv4 = (name) => {
        const parts = name.replace(/\.$/, '').split('.');
        if (!/^(0x[0-9a-f]*|\d+)$/i.test(parts[parts.length - 1])) return name;
        const numbers = parts.map((p) =>
            /^0x[0-9a-f]*$/i.test(p) ? parseInt(p.slice(2) || '0', 16) : /^0[0-7]+$/.test(p) ? parseInt(p, 8) : /^\d+$/.test(p) ? Number(p) : NaN);
        if (parts.length > 4 || numbers.some(Number.isNaN) || numbers.slice(0, -1).some((p) => p > 255)) return undefined;
        let value = numbers.pop();
        if (value >= 256 ** (4 - numbers.length)) return undefined;
        numbers.forEach((p, i) => { value += p * 256 ** (3 - i); });
        return [24, 16, 8, 0].map((shift) => Math.floor(value / 2 ** shift) % 256).join('.');
    };
    const parsedHost = (text, protocol) => {
        if (/^\[[0-9a-f:.]+\]$/i.test(text)) return text.toLowerCase();
        if (!isSpecial(protocol)) return /[\s#/<>?@[\\\]^|]/.test(text) ? undefined : escaped(text, '');
        let name = unescaped(text).normalize('NFKC').toLowerCase();
        name = name.split('.').map((label) => (/[^\0-\x7f]/.test(label) ? punycode(label) : label)).join('.');
        if (name === '' || /[\0-\x20"#%/:<>?@[\\\]^`{|}\x7f]/.test(name)) return undefined;
        return ipv4(name);
    };

    // ---- Parsing ----

    const withoutDots = (path, isBackslashSlash) => {
        const out = [];
        const parts = (isBackslashSlash ? path.replace(/\\/g, '/') : path).split('/');
        parts.forEach((part, i) => {
            const plain = part.replace(/%2e/gi, '.');
            const isLast = i === parts.length - 1;
            if (plain === '..') {
                if (out.length > 1) out.pop();
                if (isLast) out.push('');
            } else if (plain === '.') {
                if (isLast) out.push('');
            } else out.push(part);
        });
        return out.join('/');
    };
    const parsedPort = (text, protocol) => {
        if (text === '') return '';
        if (!/^\d+$/.test(text) || Number(text) > 65535) return undefined;
        return String(Number(text)) === ports[protocol] ? '' : String(Number(text));
    };
    const parseAuthority = (url, authority) => {
        const at = authority.lastIndexOf('@');
        if (at >= 0) {
            const user = authority.slice(0, at), colon = user.indexOf(':');
            url.username = escaped(colon < 0 ? user : user.slice(0, colon), inUser);
            url.password = colon < 0 ? '' : escaped(user.slice(colon + 1), inUser);
        }
        const [, name, port] = /^(\[[^\]]*\]|[^:]*)(?::(.*))?$/.exec(authority.slice(at + 1)) || [];
        if (name === undefined) return false;
        url.hostname = name === '' && (url.protocol === 'file:' || !isSpecial(url.protocol)) ? '' : parsedHost(name, url.protocol);
        url.port = parsedPort(port || '', url.protocol);
        return url.hostname !== undefined && url.port !== undefined;
    };
    const parse = (input, base) => {
        let rest = input.replace(/^[\0- ]+|[\0- ]+$/g, '').replace(/[\t\n\r]/g, '');
        const url = { protocol: '', username: '', password: '', hostname: '', port: '', pathname: '', search: '', hash: '', hasHost: false };
        const scheme = /^[a-z][a-z0-9+.-]*:/i.exec(rest);
        const relative = base && (!scheme || (scheme[0].toLowerCase() === base.protocol && isSpecial(base.protocol) &&
            !/^[/\\]{2}/.test(rest.slice(scheme[0].length))));
        if (!scheme && !base) return undefined;
        url.protocol = scheme ? scheme[0].toLowerCase() : base.protocol;
        if (scheme) rest = rest.slice(scheme[0].length);
        const special = isSpecial(url.protocol);
        const hashAt = rest.indexOf('#');
        if (hashAt >= 0) {
            url.hash = escaped(rest.slice(hashAt), inFragment);
            if (url.hash === '#') url.hash = '';
            rest = rest.slice(0, hashAt);
        }
        const queryAt = rest.indexOf('?');
        let query;
        if (queryAt >= 0) {
            query = escaped(rest.slice(queryAt), special ? inSpecialQuery : inQuery);
            rest = rest.slice(0, queryAt);
        }
        url.search = query === undefined || query === '?' ? '' : query;
        const slashes = special ? /^[/\\]*/.exec(rest)[0].length : rest.startsWith('//') ? 2 : 0;
        if (!relative || slashes >= 2) {
            if (!special && slashes < 2) {
                url.pathname = rest.startsWith('/') ? withoutDots(escaped(rest, inPath), false) : escaped(rest, '');
                return url;
            }
            rest = rest.slice(url.protocol === 'file:' ? 2 : slashes);
            const end = rest.search(special ? /[/\\]/ : /\//);
            if (!parseAuthority(url, end < 0 ? rest : rest.slice(0, end))) return undefined;
            url.hasHost = true;
            url.pathname = withoutDots(escaped(end < 0 ? '' : rest.slice(end), inPath), special);
            if (special && url.pathname === '') url.pathname = '/';
            return url;
        }
        if (!base.hasHost && !base.pathname.startsWith('/') && !(rest === '' && hashAt >= 0)) return undefined;
        for (const part of ['username', 'password', 'hostname', 'port', 'hasHost']) url[part] = base[part];
        if (rest === '') {
            url.pathname = base.pathname;
            if (query === undefined) url.search = base.search;
        } else {
            const path = slashes > 0 ? rest : base.pathname.slice(0, base.pathname.lastIndexOf('/') + 1) + rest;
            url.pathname = withoutDots(escaped(path, inPath), special);
        }
        return url;
    };

    // ---- The two classes ----

    const formEscaped = (text) => encodeURIComponent(String(text).toWellFormed()).replace(/%20/g, '+').replace(/[!'()~]/g, (c) => '%' + c.charCodeAt(0).toString(16).toUpperCase());
    const formUnescaped = (text) => unescaped(text.replace(/\+/g, ' '));

    class URLSearchParams {
        #pairs = [];
        #changed = () => {};
        constructor(init = '') {
            if (typeof init === 'object' && init !== null) {
                const pairs = typeof init[Symbol.iterator] === 'function' ? init : Object.entries(init);
                for (const pair of pairs) {
                    const [name, value, ...more] = pair;
                    if (value === undefined || more.length) throw new TypeError('each entry of a query is a name and a value');
                    this.#pairs.push([String(name), String(value)]);
                }
            } else this.#read(String(init));
        }
        static #followed(query, changed) {
            const params = new URLSearchParams(query);
            params.#changed = changed;
            return [params, (text) => params.#read(text)];
        }
        static { URLSearchParams.follow = (...args) => URLSearchParams.#followed(...args); }
        #read(query) {
            this.#pairs = query.replace(/^\?/, '').split('&').filter((part) => part !== '').map((part) => {
                const at = part.indexOf('=');
                return at < 0 ? [formUnescaped(part), ''] : [formUnescaped(part.slice(0, at)), formUnescaped(part.slice(at + 1))];
            });
        }
        get size() { return this.#pairs.length; }
        append(name, value) {
            this.#pairs.push([String(name), String(value)]);
            this.#changed();
        }
        delete(name, value) {
            this.#pairs = this.#pairs.filter((pair) => pair[0] !== String(name) || (value !== undefined && pair[1] !== String(value)));
            this.#changed();
        }
        get(name) {
            const found = this.#pairs.find((pair) => pair[0] === String(name));
            return found ? found[1] : null;
        }
        getAll(name) { return this.#pairs.filter((pair) => pair[0] === String(name)).map((pair) => pair[1]); }
        has(name, value) { return this.#pairs.some((pair) => pair[0] === String(name) && (value === undefined || pair[1] === String(value))); }
        set(name, value) {
            const at = this.#pairs.findIndex((pair) => pair[0] === String(name));
            if (at < 0) this.#pairs.push([String(name), String(value)]);
            else {
                this.#pairs[at][1] = String(value);
                this.#pairs = this.#pairs.filter((pair, i) => i <= at || pair[0] !== String(name));
            }
            this.#changed();
        }
        sort() {
            this.#pairs.sort((a, b) => (a[0] < b[0] ? -1 : a[0] > b[0] ? 1 : 0));
            this.#changed();
        }
        forEach(work, self) { for (const [name, value] of this.#pairs) work.call(self, value, name, this); }
        *entries() { for (const [name, value] of this.#pairs) yield [name, value]; }
        *keys() { for (const [name] of this.#pairs) yield name; }
        *values() { for (const [, value] of this.#pairs) yield value; }
        [Symbol.iterator]() { return this.entries(); }
        toString() { return this.#pairs.map(([name, value]) => formEscaped(name) + '=' + formEscaped(value)).join('&'); }
    }
    const follow = URLSearchParams.follow;
    delete URLSearchParams.follow;

    class URL {
        #url; #params; #readParams;
        constructor(input, base) {
            const from = base === undefined ? undefined : parse(String(base));
            this.#url = base !== undefined && !from ? undefined : parse(String(input), from);
            if (!this.#url) throw new TypeError('"' + String(input) + '" cannot be parsed as a URL.');
            [this.#params, this.#readParams] = follow(this.#url.search, () => {
                const query = this.#params.toString();
                this.#url.search = query === '' ? '' : '?' + query;
            });
        }
        static canParse(input, base) {
            try {
                return !!new URL(input, base);
            } catch {
                return false;
            }
        }
        static parse(input, base) { return URL.canParse(input, base) ? new URL(input, base) : null; }
        get href() {
            const u = this.#url;
            const user = u.username || u.password ? u.username + (u.password ? ':' + u.password : '') + '@' : '';
            return u.protocol + (u.hasHost ? '//' + user + this.host : '') + u.pathname + u.search + u.hash;
        }
        set href(text) {
            const url = parse(String(text));
            if (!url) throw new TypeError('"' + String(text) + '" cannot be parsed as a URL.');
            this.#url = url;
            this.#readParams(url.search);
        }
        get origin() { return isSpecial(this.#url.protocol) && this.#url.protocol !== 'file:' ? this.#url.protocol + '//' + this.host : 'null'; }
        get protocol() { return this.#url.protocol; }
        set protocol(text) {
            const protocol = String(text).toLowerCase().replace(/:.*$/s, '') + ':';
            if (/^[a-z][a-z0-9+.-]*:$/.test(protocol) && isSpecial(protocol) === isSpecial(this.#url.protocol)) {
                this.#url.protocol = protocol;
                this.#url.port = parsedPort(this.#url.port, protocol);
            }
        }
        get username() { return this.#url.username; }
        set username(text) { this.#url.username = escaped(String(text), inUser); }
        get password() { return this.#url.password; }
        set password(text) { this.#url.password = escaped(String(text), inUser); }
        get host() { return this.#url.hostname + (this.#url.port ? ':' + this.#url.port : ''); }
        set host(text) {
            const [, name, port] = /^(\[[^\]]*\]|[^:/\\?#]*)(?::(\d*))?/.exec(String(text));
            this.hostname = name;
            if (port) this.port = port;
        }
        get hostname() { return this.#url.hostname; }
        set hostname(text) {
            const name = parsedHost(String(text), this.#url.protocol);
            if (this.#url.hasHost && name !== undefined) this.#url.hostname = name;
        }
        get port() { return this.#url.port; }
        set port(text) {
            const port = parsedPort(/^\d*/.exec(String(text))[0], this.#url.protocol);
            if (this.#url.hasHost && port !== undefined) this.#url.port = port;
        }
        get pathname() { return this.#url.pathname; }
        set pathname(text) {
            const special = isSpecial(this.#url.protocol);
            const path = String(text);
            this.#url.pathname = withoutDots(escaped(/^[/\\]/.test(path) ? path : '/' + path, inPath), special);
        }
        get search() { return this.#url.search; }
        set search(text) {
            const query = String(text).replace(/^\?/, '');
            this.#url.search = query === '' ? '' : '?' + escaped(query, isSpecial(this.#url.protocol) ? inSpecialQuery : inQuery);
            this.#readParams(this.#url.search);
        }
        get searchParams() { return this.#params; }
        get hash() { return this.#url.hash; }
        set hash(text) {
            const fragment = String(text).replace(/^#/, '');
            this.#url.hash = fragment === '' ? '' : '#' + escaped(fragment, inFragment);
        }
        toString() { return this.href; }
        toJSON() { return this.href; }
    }
    return { URL, URLSearchParams };
})
