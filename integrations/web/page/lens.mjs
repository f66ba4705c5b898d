// The magnifier: one pixel, its bytes at every stage, and how each came about.
import {edgeOf, explain} from './arithmetic.mjs';
import {layouts, renderers} from './frames.mjs';
import {byId, element, say} from './dom.mjs';
import {functionNamed, hex} from './library.mjs';
import {byteChips} from './stages.mjs';

const reach = 4;  // pixels around the middle one

export class Lens {
    constructor(stages) {
        this.stages = stages;
        [this.x, this.y] = [520, 232];  // a pixel of the test card on which the overlay lies
        this.held = false;
        const scales = {'scene': 0, 'blended': 0, 'picture': 0, 'noise': 0, 'plane-y': 0, 'plane-u': 1, 'plane-v': 1};
        for (const [id, shift] of Object.entries(scales)) {
            this.listen(byId(id), shift);
        }
        for (const id of ['pixel-x', 'pixel-y']) {
            byId(id).addEventListener('input', () => {
                this.held = true;
                this.moveTo(Number(byId('pixel-x').value), Number(byId('pixel-y').value));
            });
        }
        byId('lens-layouts').closest('details').addEventListener('toggle', () => this.draw());
    }

    listen(canvas, shift) {
        const pick = (event) => {
            const box = canvas.getBoundingClientRect();
            // The picture keeps its shape within the canvas.
            const scale = Math.min(box.width / canvas.width, box.height / canvas.height);
            const left = (box.width - canvas.width * scale) / 2;
            const top = (box.height - canvas.height * scale) / 2;
            const column = Math.floor((event.clientX - box.left - left) / scale);
            const row = Math.floor((event.clientY - box.top - top) / scale);
            this.moveTo(column << shift, row << shift);
        };
        canvas.addEventListener('pointermove', (event) => {
            if (!this.held && event.pointerType === 'mouse') {
                pick(event);
            }
        });
        canvas.addEventListener('click', (event) => {
            const wasHeld = this.held && event.pointerType === 'mouse';
            this.held = !wasHeld;
            pick(event);
        });
    }

    moveTo(x, y) {
        [this.x, this.y] = [x, y];
        this.draw();
    }

    draw() {
        const {path} = this.stages;
        const clamp = (value, size) => Math.max(0, Math.min(Math.round(value) || 0, size - 1));
        const x = this.x = clamp(this.x, path.width);
        const y = this.y = clamp(this.y, path.height);
        for (const [id, value, size] of [['pixel-x', x, path.width], ['pixel-y', y, path.height]]) {
            byId(id).max = size - 1;
            if (document.activeElement !== byId(id)) {
                byId(id).value = value;
            }
        }
        say(byId('held'), this.held ? 'held; click a picture to let go' : '');
        this.zoom(byId('zoom-scene'), byId('scene'), x, y);
        this.zoom(byId('zoom-picture'), byId('picture'), x, y);
        this.drawBytes(x, y);
        this.drawArithmetic(x, y);
        this.drawEdge(x, y);
        if (byId('lens-layouts').closest('details').open) {
            this.drawLayouts(x, y);
        }
    }

    zoom(canvas, from, x, y) {
        const context = canvas.getContext('2d');
        const count = 2 * reach + 1;
        const cell = canvas.width / count;
        context.imageSmoothingEnabled = false;
        context.clearRect(0, 0, canvas.width, canvas.height);
        context.drawImage(from, x - reach, y - reach, count, count, 0, 0, canvas.width, canvas.height);
        const corner = reach * cell;
        for (const [colour, grow] of [['#000', 2], ['#fff', 0.5]]) {
            context.strokeStyle = colour;
            context.lineWidth = grow === 2 ? 3 : 1.5;
            context.strokeRect(corner - grow / 2, corner - grow / 2, cell + grow, cell + grow);
        }
    }

    stageBytes(x, y) {
        const {path} = this.stages;
        const at = 4 * (y * path.width + x);
        const scene = ['R', 'G', 'B', 'A'].map((name, i) =>
            ({name, offset: at + i, value: path.scene.data[at + i], here: true}));
        const picture = path.pictureBytes(x, y);
        const plain = path.pictureBytes(x, y, path.plain);
        const noise = picture.filter((byte) => byte.name !== 'A').map((byte) => {
            const difference = byte.value - plain.find((other) => other.name === byte.name).value;
            return {...byte, value: difference > 0 ? `+${difference}` : String(difference)};
        });
        return [
            ['scene', 'Scene', scene],
            ['frame', path.settings.layout, path.frameBytes(x, y)],
            ['planes', 'Captured', path.planeBytes(x, y, path.captured)],
            ['blend', 'Blended', path.planeBytes(x, y, path.planes)],
            ['render', 'Rendered', picture],
            ['noise', 'Dither', noise],
        ];
    }

    drawBytes(x, y) {
        const rows = this.stageBytes(x, y).map(([id, title, bytes]) => {
            const where = element('span', {class: 'where'}, bytes.length ? `@${bytes[0].offset}` : 'not in the frame');
            byId(`${id}-strip`).replaceChildren(...(id === 'noise' ? [] : [where]), ...byteChips(bytes));
            return element('tr', {}, element('th', {scope: 'row'}, title), element('td', {}, ...spaced(byteChips(bytes))));
        });
        byId('lens-stages').replaceChildren(element('table', {}, element('tbody', {}, ...rows)));
    }

    drawArithmetic(x, y) {
        const {stages, checked, wrong} = explain(this.stages.path, x, y);
        byId('lens-arithmetic').replaceChildren(...stages.flatMap(([title, lines]) => [
            element('p', {class: 'quiet formula'}, title),
            ...lines.map(({label, formula, numbers, value}) => element('p', {class: 'formula'}, `${label} = ${formula}`,
                ...(value === null ? [] : [element('span', {class: 'numbers'}, `= ${numbers} = `, element('b', {}, `${value}`), ` (${hex(value)})`)]))),
        ]));
        const verdict = byId('lens-verdict');
        verdict.classList.toggle('wrong', wrong > 0);
        say(verdict, wrong ? `${wrong} of ${checked} differ from the library’s bytes` :
            checked ? `${checked} of ${checked} are the library’s bytes` : 'No byte is written here');
    }

    drawEdge(x, y) {
        const {path} = this.stages;
        const {lastColumn, lastRow} = edgeOf(path, x, y);
        const box = byId('lens-edge');
        box.hidden = !(lastColumn || lastRow);
        if (!box.hidden) {
            const {name} = path.capture[0];
            const {edges} = functionNamed(name);
            const [luma] = path.planes;
            const spare = [
                lastColumn && `right of the picture ${hex(path.captured[0].bytes[y * luma.pitch + path.width])}`,
                lastRow && `below it ${hex(path.captured[0].bytes[(y + 1) * luma.pitch + x])}`,
            ].filter(Boolean).join(', ');
            say(box, `${name}. ` + [lastColumn && `Odd width: ${edges['odd width']}.`, lastRow && `Odd height: ${edges['odd height']}.`,
                `Written outside the picture: ${edges['written outside the picture']}.`, `In the spare memory of Y: ${spare} (80 is grey, as before the call).`].filter(Boolean).join(' '));
        }
    }

    // The same pixel from every function that makes a layout of it.
    drawLayouts(x, y) {
        const {path} = this.stages;
        const {library, width, height, planes} = path;
        const rows = [];
        const add = (title, bytes) => rows.push(element('tr', {}, element('th', {scope: 'row'}, title),
            element('td', {}, `@${bytes[0]?.offset ?? '–'} `, ...spaced(byteChips(bytes)))));
        const size = {width, height, ditherLevel: 0};
        for (const [name, order] of Object.entries(renderers)) {
            const target = library.plane('lens', order.length * width, height);
            target.bytes.fill(0);
            library.run({name, planes: [...planes, target], options: size});
            const first = order.length * (y * width + x);
            add(name.endsWith('709') ? 'BGRA, BT.709' : name.slice('KorI420To'.length),
                order.map((component, i) => ({name: component, offset: first + i, value: target.bytes[first + i], here: false})));
        }
        for (const layout of ['YUY2', 'UYVY', 'Yuv2']) {
            const {order, pack} = layouts[layout];
            const pitch = 2 * (width & ~1);
            if (x >= (width & ~1) || y >= (height & ~1)) {
                add(layout, []);
                continue;
            }
            const target = library.plane('lens', pitch, height);
            library.run({name: pack, planes: [...planes, target], options: {...size, width: width & ~1}});
            const first = y * pitch + 4 * (x >> 1);
            add(layout, order.map((component, i) => ({name: component, offset: first + i, value: target.bytes[first + i], here: component === `Y${x & 1}`})));
        }
        add('I420', path.planeBytes(x, y, planes).map((byte) => ({...byte, here: false})));
        const rgba = library.plane('lensScene', 4 * width, height);
        const places = [2, 1, 0, 3];
        for (let i = 0; i < 4 * width * height; ++i) {
            rgba.bytes[i] = path.scene.data[(i & ~3) + places[i & 3]];
        }
        const full = ['lensY', 'lensU', 'lensV'].map((name) => library.plane(name, width, height));
        library.run({name: 'KorBGRAToI444', planes: [...full, rgba], options: size});
        add('I444, scene', full.map((plane, i) => ({name: 'YUV'[i], offset: y * width + x, value: plane.at(x, y), here: false})));
        byId('lens-layouts').replaceChildren(element('table', {}, element('tbody', {}, ...rows)));
    }
}

function spaced(chips) {
    return chips.flatMap((chip) => [chip, ' ']);
}
