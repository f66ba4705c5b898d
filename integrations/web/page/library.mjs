// The library in a WebAssembly module: its functions by name, planes in its memory, and the text of a call as C.
import {functions} from './functions.mjs';

export const levels = ['Off', '0', '1', '2'];

// A module of one function that uses a vector: valid exactly where vectors are known.
const simdProbe = new Uint8Array([
    0, 97, 115, 109, 1, 0, 0, 0,  // magic, version
    1, 5, 1, 96, 0, 1, 123,  // a type: no parameters, a vector as result
    3, 2, 1, 0,  // a function of it
    10, 8, 1, 6, 0, 65, 0, 253, 15, 11,  // i32.const 0, i8x16.splat
]);

export function hasSimd() {
    return WebAssembly.validate(simdProbe);
}

export function functionNamed(name) {
    return functions.find((f) => f.name === name);
}

// Bytes in the module's memory. rows * pitch bytes may be used, of which rowBytes in each row belong to the picture.
export class Plane {
    constructor(library, name, rowBytes, rows, pitch = rowBytes, room = rows * pitch) {
        this.library = library;
        this.name = name;
        this.shape(rowBytes, rows, pitch);
        this.room = room;
        this.address = library.exports.malloc(Math.max(room, 1)) >>> 0;
        if (this.address === 0) {
            throw new Error(`No memory for ${room} bytes`);
        }
    }

    shape(rowBytes, rows, pitch) {
        this.rowBytes = rowBytes;
        this.rows = rows;
        this.pitch = pitch;
    }

    // A view that holds until memory grows: take it anew after every allocation.
    get bytes() {
        return new Uint8Array(this.library.exports.memory.buffer, this.address, this.room);
    }

    at(column, row) {
        return this.bytes[row * this.pitch + column];
    }

    free() {
        this.library.exports.free(this.address);
    }
}

// A plane that is read from its last row upwards.
export class Upwards {
    constructor(plane) {
        this.plane = plane;
    }
}

export class Library {
    static async load(bytes, onDigest = () => {}, onProgress = () => {}) {
        let library = null;
        const text = (address) => library.text(address);
        const imports = {
            kor: {
                progress: onProgress,
                digest: (name, option, high, low) =>
                    onDigest(`${text(name)} ${text(option)}`, hex(high >>> 0, 8) + hex(low >>> 0, 8)),
            },
            env: {emscripten_notify_memory_growth() {}},
            wasi_snapshot_preview1: {
                proc_exit(status) {
                    throw new Error(`The module gave up with status ${status}`);
                },
                environ_sizes_get: (count, size) => library.store(count, 0) + library.store(size, 0),
                environ_get: () => 0,
            },
        };
        const {instance} = await WebAssembly.instantiate(bytes, imports);
        library = new Library(instance.exports);
        library.exports._initialize();
        return library;
    }

    constructor(exports) {
        this.exports = exports;
        this.named = new Map();
    }

    get target() {
        return this.text(this.exports.KorYuv420Target());
    }

    text(address) {
        const bytes = new Uint8Array(this.exports.memory.buffer);
        return new TextDecoder().decode(bytes.slice(address, bytes.indexOf(0, address)));
    }

    store(address, value) {
        new DataView(this.exports.memory.buffer).setUint32(address, value, true);
        return 0;
    }

    // The plane of this name, with room for at least so many bytes; its content is kept if it was large enough.
    plane(name, rowBytes, rows, pitch = rowBytes, room = rows * pitch) {
        let plane = this.named.get(name);
        if (!plane || plane.room < room) {
            plane?.free();
            plane = new Plane(this, name, rowBytes, rows, pitch, room);
            this.named.set(name, plane);
        }
        plane.shape(rowBytes, rows, pitch);
        return plane;
    }

    serveSeed(seed) {
        this.exports.KorWebServeSeed(seed);
    }

    testCard(width, height) {
        const address = this.exports.KorWebTestCard(width, height) >>> 0;
        return new Uint8Array(this.exports.memory.buffer, address, 4 * width * height).slice();
    }

    // The planes that a function reads and writes, as the conformance kit knows them.
    layOut(name, {width, height, flip = 0, rotationDegree = 0, xPosition = 0, yPosition = 0}) {
        const index = functions.findIndex((f) => f.name === name);
        const count =
            this.exports.KorWebLayOut(index, width, height, flip, rotationDegree, xPosition, yPosition);
        const words = new Uint32Array(this.exports.memory.buffer, this.exports.KorWebPlanes() >>> 0, 9 * count);
        return Array.from({length: count}, (_, i) => {
            const [label, access, rowBytes, rows, pitch, spareColumns, spareRows, margin, drifts] =
                words.slice(9 * i, 9 * i + 9);
            return {
                name: this.text(label),
                reads: access !== 1,
                writes: access !== 0,
                rowBytes, rows, pitch, spareColumns, spareRows, margin, drifts: drifts !== 0,
            };
        });
    }

    makeDigests() {
        this.exports.KorWebMakeDigests();
    }

    // A call is {name, planes, options}: planes in the order of the function's pointers, options by parameter.
    arguments(call) {
        return expand(call, (plane, up) => up ? plane.address + (plane.rows - 1) * plane.pitch : plane.address,
            (plane, up) => up ? -plane.pitch : plane.pitch, (value) => Number(value), (matrix) => matrix.address);
    }

    prepare(call) {
        const target = this.exports[call.name];
        const values = this.arguments(call);
        return () => target(...values);
    }

    run(call) {
        this.prepare(call)();
    }

    // Seconds that a call takes: the median of several bursts. What the planes held is put back.
    measure(call, bursts, burstMilliseconds) {
        const planes = call.planes.map((given) => given.plane ?? given);
        const before = planes.map((plane) => plane.bytes.slice());
        const run = this.prepare(call);
        const burst = (count) => {
            const start = performance.now();
            for (let i = 0; i < count; ++i) {
                run();
            }
            return (performance.now() - start) / 1000;
        };
        let count = 1;
        while (burst(count) * 1000 < burstMilliseconds && count < 1 << 16) {
            count *= 2;
        }
        const times = Array.from({length: bursts}, () => burst(count) / count);
        planes.forEach((plane, i) => plane.bytes.set(before[i]));
        return median(times);
    }
}

export function median(values) {
    const sorted = [...values].sort((a, b) => a - b);
    return sorted[sorted.length >> 1];
}

export function hex(value, digits = 2) {
    return value.toString(16).padStart(digits, '0');
}

export function callText(call) {
    const pointer = (plane, up) => up ? `${plane.name} + ${plane.rows - 1} * ${plane.pitch}` : plane.name;
    const pitch = (plane, up) => String(up ? -plane.pitch : plane.pitch);
    const scalar = (value, parameter) =>
        parameter === 'ditherLevel' ? `KOR_VIDEOFRAMEDITHERLEVEL_${levels[value]}` : String(Number(value));
    const given = expand(call, pointer, pitch, scalar, (matrix) => matrix.name);
    const pairs = [];
    for (let i = 0; i < given.length; ++i) {
        // A pointer and its pitch stay on one line.
        const isPointer = functionNamed(call.name).parameters[i].pointer;
        pairs.push(isPointer && i + 1 < given.length ? `${given[i]}, ${given[++i]}` : given[i]);
    }
    const indent = ' '.repeat(call.name.length + 1);
    const lines = [];
    let line = '';
    for (const pair of pairs) {
        if (line && indent.length + line.length + pair.length > 64) {
            lines.push(line);
            line = '';
        }
        line += (line ? ', ' : '') + pair;
    }
    lines.push(line);
    return `${call.name}(${lines.join(`,\n${indent}`)});`;
}

// The arguments in the order of the parameters.
function expand(call, pointer, pitch, scalar, matrix) {
    const values = [];
    let next = 0;
    for (const parameter of functionNamed(call.name).parameters) {
        const at = parameter.pointer ? next++ : next - 1;
        const given = call.planes[at];
        const plane = given?.plane ?? given;
        const up = given instanceof Upwards;
        if (parameter.name === 'coeffs') {
            values.push(matrix(call.options.coeffs));
        } else if (parameter.pointer) {
            values.push(pointer(plane, up));
        } else if (parameter.pitch) {
            values.push(pitch(plane, up));
        } else {
            values.push(scalar(call.options[parameter.option] ?? 0, parameter.option));
        }
    }
    return values;
}
