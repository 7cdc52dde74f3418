// Turns the icons that symbols.txt names into one C++ table of paths: node compile.mjs TABLE ICON_FOLDER OUTPUT
// The program draws them itself, so that it needs no SVG library and each symbol is sharp at every scale.
import fs from "node:fs";
import path from "node:path";

const [table, icons, output] = process.argv.slice(2);
const unitsPerIcon = 256; // the icons' view box
const precision = 64; // steps per unit: 256 units still fit 16 bits
const maximum = 32767;

// Where a second icon stands within the first, in units; `way` is how it is painted.
const placements = {
    "+": { way: "badge", scale: 0.56, x: 122, y: 118 },
    ">": { way: "inside", scale: 0.56, x: 56.32, y: 56.32 },
    "-": { way: "cut", scale: 0.52, x: 61.44, y: 61.44 },
};

function iconPath(name) {
    const [icon, weight = "regular"] = name.split("/");
    const file = path.join(icons, weight, weight === "regular" ? `${icon}.svg` : `${icon}-${weight}.svg`);
    const svg = fs.readFileSync(file, "utf8");
    if (!svg.includes('viewBox="0 0 256 256"'))
        throw new Error(`${file}: another view box than expected`);
    const elements = svg.match(/<(?!svg|\/)[a-z]+/g) ?? [];
    if (elements.some((element) => element !== "<path"))
        throw new Error(`${file}: holds more than paths`);
    return [...svg.matchAll(/ d="([^"]+)"/g)].map((match) => match[1]).join(" ");
}

// An arc as cubic curves, after the SVG recommendation's notes on elliptical arcs.
function arc(x1, y1, rx, ry, degrees, large, sweep, x2, y2) {
    if (rx === 0 || ry === 0)
        return [["L", x2, y2]];
    if (x1 === x2 && y1 === y2)
        return [];
    const phi = (degrees * Math.PI) / 180, cos = Math.cos(phi), sin = Math.sin(phi);
    const dx = (x1 - x2) / 2, dy = (y1 - y2) / 2;
    const px = cos * dx + sin * dy, py = -sin * dx + cos * dy;
    rx = Math.abs(rx); ry = Math.abs(ry);
    const excess = (px / rx) ** 2 + (py / ry) ** 2;
    if (excess > 1) { rx *= Math.sqrt(excess); ry *= Math.sqrt(excess); }
    const under = Math.max(0, (rx * ry) ** 2 - (rx * py) ** 2 - (ry * px) ** 2);
    const factor = (large === sweep ? -1 : 1) * Math.sqrt(under / ((rx * py) ** 2 + (ry * px) ** 2));
    const cxp = (factor * rx * py) / ry, cyp = (-factor * ry * px) / rx;
    const cx = cos * cxp - sin * cyp + (x1 + x2) / 2, cy = sin * cxp + cos * cyp + (y1 + y2) / 2;
    const start = Math.atan2((py - cyp) / ry, (px - cxp) / rx);
    let turn = Math.atan2((-py - cyp) / ry, (-px - cxp) / rx) - start;
    if (sweep && turn < 0) turn += 2 * Math.PI;
    if (!sweep && turn > 0) turn -= 2 * Math.PI;
    const pieces = Math.max(1, Math.ceil(Math.abs(turn) / (Math.PI / 2) - 1e-9)), step = turn / pieces;
    const handle = (4 / 3) * Math.tan(step / 4);
    const at = (x, y) => [cx + rx * cos * x - ry * sin * y, cy + rx * sin * x + ry * cos * y];
    const curves = [];
    for (let i = 0; i < pieces; i++) {
        const a = start + i * step, b = a + step;
        curves.push(["C",
            ...at(Math.cos(a) - handle * Math.sin(a), Math.sin(a) + handle * Math.cos(a)),
            ...at(Math.cos(b) + handle * Math.sin(b), Math.sin(b) - handle * Math.cos(b)),
            ...at(Math.cos(b), Math.sin(b))]);
    }
    return curves;
}

// Path data as absolute M, L, C and Z alone.
function parse(data) {
    const argumentCounts = { M: 2, L: 2, H: 1, V: 1, C: 6, S: 4, Q: 4, T: 2, A: 7, Z: 0 };
    let position = 0;
    const skip = () => { while (/[\s,]/.test(data[position] ?? "")) position++; };
    const number = () => {
        skip();
        const match = /^[-+]?(\d+\.?\d*|\.\d+)(e[-+]?\d+)?/i.exec(data.slice(position, position + 40));
        if (!match) throw new Error(`no number at ${data.slice(position, position + 20)}`);
        position += match[0].length;
        return Number(match[0]);
    };
    const flag = () => { skip(); return data[position++] === "1"; };
    const result = [];
    let x = 0, y = 0, startX = 0, startY = 0, command = "", previous = "", controlX = 0, controlY = 0;
    for (skip(); position < data.length; skip()) {
        if (/[a-z]/i.test(data[position])) command = data[position++];
        else if (command === "M") command = "L";
        else if (command === "m") command = "l";
        const kind = command.toUpperCase(), relative = command !== kind;
        if (!(kind in argumentCounts)) throw new Error(`unknown command ${command}`);
        const values = kind === "A" ? [number(), number(), number(), flag(), flag(), number(), number()]
            : Array.from({ length: argumentCounts[kind] }, number);
        if (relative) {
            if (kind === "H") values[0] += x;
            else if (kind === "V") values[0] += y;
            else if (kind === "A") { values[5] += x; values[6] += y; }
            else for (let i = 0; i < values.length; i++) values[i] += i % 2 ? y : x;
        }
        const reflected = (kinds) => kinds.includes(previous) ? [2 * x - controlX, 2 * y - controlY] : [x, y];
        const quadratic = (qx, qy, ex, ey) => {
            result.push(["C", x + (2 / 3) * (qx - x), y + (2 / 3) * (qy - y), ex + (2 / 3) * (qx - ex), ey + (2 / 3) * (qy - ey), ex, ey]);
            [controlX, controlY, x, y] = [qx, qy, ex, ey];
        };
        switch (kind) {
        case "M": [x, y] = [startX, startY] = values; result.push(["M", x, y]); break;
        case "L": [x, y] = values; result.push(["L", x, y]); break;
        case "H": x = values[0]; result.push(["L", x, y]); break;
        case "V": y = values[0]; result.push(["L", x, y]); break;
        case "C": result.push(["C", ...values]); [, , controlX, controlY, x, y] = values; break;
        case "S": result.push(["C", ...reflected("CS"), ...values]); [controlX, controlY, x, y] = values; break;
        case "Q": quadratic(...values); break;
        case "T": quadratic(...reflected("QT"), ...values); break;
        case "A": result.push(...arc(x, y, ...values)); [x, y] = values.slice(5); break;
        case "Z": result.push(["Z"]); [x, y] = [startX, startY]; break;
        }
        previous = kind;
    }
    return result;
}

const codes = { M: 0, L: 1, C: 2, Z: 3 };
const numbers = [], layers = [], symbols = [], offsets = new Map();

function layer(icon, placement) {
    if (!offsets.has(icon)) {
        const first = numbers.length;
        for (const [kind, ...values] of parse(iconPath(icon))) {
            numbers.push(codes[kind]);
            for (const value of values) {
                const fixed = Math.round(value * precision);
                if (Math.abs(fixed) > maximum) throw new Error(`${icon}: ${value} lies outside`);
                numbers.push(fixed);
            }
        }
        offsets.set(icon, [first, numbers.length - first]);
    }
    const [first, length] = offsets.get(icon);
    const { way, scale, x, y } = placement ?? { way: "whole", scale: 1, x: 0, y: 0 };
    const [s, dx, dy] = [scale, x, y].map((value) => `${value.toFixed(4)}F`);
    layers.push(`    {${first}, ${length}, ${s}, ${dx}, ${dy}, LayerWay::${way}},`);
}

for (const line of fs.readFileSync(table, "utf8").split("\n")) {
    if (line.trim() === "" || line.startsWith("#")) continue;
    const [name, base, sign, second, ...more] = line.trim().split(/\s+/);
    if (!base || more.length || (sign && (!placements[sign] || !second)))
        throw new Error(`${table}: ${line}`);
    const first = layers.length;
    layer(base);
    if (sign) layer(second, placements[sign]);
    symbols.push({ name, first, count: layers.length - first });
}
symbols.sort((a, b) => (a.name < b.name ? -1 : a.name > b.name ? 1 : 0));
if (new Set(symbols.map((symbol) => symbol.name)).size !== symbols.length) throw new Error("a name stands twice");

const rows = [];
for (let i = 0; i < numbers.length; i += 20) rows.push("    " + numbers.slice(i, i + 20).join(", ") + ",");
fs.writeFileSync(output, `// Made by resources/symbols/compile.mjs.
#include "look/SymbolTable.h"

namespace tavrine::symboltable {
namespace {
constexpr std::int16_t numberList[] = {
${rows.join("\n")}
};
constexpr Layer layerList[] = {
${layers.join("\n")}
};
constexpr Entry entryList[] = {
${symbols.map(({ name, first, count }) => `    {"${name}", ${first}, ${count}},`).join("\n")}
};
} // namespace

const std::span<const std::int16_t> numbers = numberList;
const std::span<const Layer> layers = layerList;
const std::span<const Entry> entries = entryList;
const float unitsPerIcon = ${unitsPerIcon};
const float stepsPerUnit = ${precision};
} // namespace tavrine::symboltable
`);
