// Every function on a small frame: which bytes it reads, writes and leaves alone, found by calling it.
import {callText, functionNamed, hex} from './library.mjs';
import {byId, element, showCalls} from './dom.mjs';
import {fillWithNoise, matrixFor, usualOptions} from './speed.mjs';
import {functions} from './functions.mjs';

const families = {
    PlaneGeometry: 'Plane geometry', RgbToYuv: 'RGB to YUV', YuvToRgb: 'YUV to RGB', PackedYuv: 'Packed and semi-planar YUV',
    Compositing: 'Compositing and noise',
};
const around = {columns: 2, rows: 1};  // shown beyond the planes
const guard = 512;  // bytes watched before and behind a plane

export class Explorer {
    constructor(library) {
        this.library = library;
        const select = byId('explore-function');
        for (const [family, title] of Object.entries(families)) {
            select.append(element('optgroup', {label: title},
                ...functions.filter((f) => f.family === family).map((f) => element('option', {}, f.name))));
        }
        select.value = 'KorYUY2ToI420';
        showCalls(byId('explore-call'), '', '', '');
        byId('explore-call').querySelector('details').open = true;
        for (const id of ['function', 'width', 'height', 'flip', 'degree', 'level']) {
            const box = byId(`explore-${id}`);
            box.addEventListener(box.type === 'number' ? 'input' : 'change', () => this.draw());
        }
    }

    get options() {
        const size = (id) => Math.max(0, Math.min(Math.round(Number(byId(id).value)) || 0, 12));
        const name = byId('explore-function').value;
        return {
            name,
            options: {
                ...usualOptions(name, 0, 0), width: size('explore-width'), height: size('explore-height'), alpha: 128,
                flip: byId('explore-flip').checked, rotationDegree: Number(byId('explore-degree').value),
                ditherLevel: Number(byId('explore-level').value),
            },
        };
    }

    draw() {
        const {name, options} = this.options;
        const has = (option) => functionNamed(name).parameters.some((parameter) => parameter.option === option);
        byId('explore-flip-label').hidden = !has('flip');
        byId('explore-degree-label').hidden = !has('rotationDegree');
        byId('explore-level-label').hidden = !has('ditherLevel');
        const {call, uses, found} = experiment(this.library, name, options);
        byId('explore-planes').replaceChildren(...uses.map((use, i) => planeFigure(use, call.planes[i], found[i])));
        showCalls(byId('explore-call'), name, callText(call), '');
        const {edges} = functionNamed(name);
        byId('explore-edges').replaceChildren(...Object.entries(edges).flatMap(([title, rule]) =>
            [element('dt', {}, title[0].toUpperCase() + title.slice(1)), element('dd', {}, rule)]));
        const outside = found.reduce((sum, {outside: count}) => sum + count, 0);
        if (outside) {
            byId('explore-edges').append(element('dt', {}, 'Here'),
                element('dd', {}, `${outside} bytes are written beyond what is drawn`));
        }
    }
}

// Calls the function on planes of noise, and again with one byte after another changed. Returns for every plane what
// each byte is: Map from offset to read, written.
export function experiment(library, name, options) {
    const uses = library.layOut(name, options);
    const planes = uses.map((use, i) => {
        const pitch = use.rowBytes + use.spareColumns + around.columns;
        const plane = library.plane(`explore${i}`, use.rowBytes, use.rows, pitch, 8192);
        return Object.assign(Object.create(Object.getPrototypeOf(plane)), plane, {name: use.name, address: plane.address + guard, room: 8192 - 2 * guard});
    });
    const call = {name, planes, options: {...options}};
    if (functionNamed(name).parameters.some((parameter) => parameter.name === 'coeffs')) {
        call.options.coeffs = matrixFor(library, name);
    }
    const whole = (plane) => new Uint8Array(library.exports.memory.buffer, plane.address - guard, 8192);
    const contents = planes.map((plane, i) => {
        const bytes = new Uint8Array(8192);
        fillWithNoise(bytes, 31 + i);
        return bytes;
    });
    const run = (change = () => {}) => {
        planes.forEach((plane, i) => whole(plane).set(contents[i]));
        change();
        library.serveSeed(1);
        library.run(call);
        return planes.map((plane) => whole(plane).slice());
    };
    const usual = run();
    // Bytes that end up equal whatever was there before are written.
    const flipped = run(() => planes.forEach((plane, i) => uses[i].writes && !uses[i].reads && whole(plane).set(contents[i].map((byte) => byte ^ 0xff))));
    const written = usual.map((bytes, i) => bytes.map((byte, at) =>
        Number(uses[i].writes && (uses[i].reads ? byte !== contents[i][at] : byte === flipped[i][at]))));
    const read = uses.map((use, i) => {
        const plane = planes[i];
        const marks = new Uint8Array(8192);
        if (!use.reads) {
            return marks;
        }
        const last = Math.min(guard + (use.rows + around.rows) * plane.pitch, 8192);
        for (let at = guard - use.margin; at < last; ++at) {
            for (const value of [0x00, 0xff, 0x80]) {
                const changed = run(() => { whole(plane)[at] = value; });
                if (changed.some((bytes, j) => bytes.some((byte, k) => byte !== usual[j][k] && !(j === i && k === at)))
                    || (use.writes && changed[i][at] !== value)) {
                    marks[at] = 1;
                    break;
                }
            }
        }
        return marks;
    });
    run();
    const found = uses.map((use, i) => {
        const {pitch} = planes[i];
        const shown = (at) => at >= guard && at < guard + (use.rows + use.spareRows + around.rows) * pitch;
        const outside = written[i].reduce((sum, mark, at) => sum + Number(mark && !shown(at)), 0);
        return {written: written[i].subarray(guard), read: read[i].subarray(guard), values: usual[i].subarray(guard), outside};
    });
    return {call, uses, found};
}

function planeFigure(use, plane, {written, read, values}) {
    const columns = plane.pitch;
    const rows = use.rows + use.spareRows + around.rows;
    const cells = [];
    for (let row = 0; row < rows; ++row) {
        const line = [];
        for (let column = 0; column < columns; ++column) {
            const at = row * columns + column;
            const inside = column < use.rowBytes && row < use.rows;
            const kind = written[at] ? (inside ? 'written' : 'spare') : read[at] ? 'read' :
                use.reads && !use.writes && inside ? 'unread' : 'left';
            line.push(element('td', {class: kind}, kind === 'left' ? '··' : hex(values[at])));
        }
        cells.push(element('tr', {}, ...line));
    }
    const count = (marks) => marks.reduce((sum, mark) => sum + mark, 0);
    const about = [use.reads && `${count(read)} read`, use.writes && `${count(written)} written`].filter(Boolean).join(', ');
    return element('figure', {},
        element('figcaption', {}, element('code', {}, use.name), ` ${use.rowBytes} × ${use.rows} bytes, ${about}`),
        element('div', {class: 'scroll', tabIndex: 0, role: 'group', 'aria-label': `Bytes of ${use.name}`},
            element('table', {class: 'grid'}, element('tbody', {}, ...cells))));
}
