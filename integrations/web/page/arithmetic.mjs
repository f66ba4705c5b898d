// The arithmetic of one pixel, with its numbers put in. Written from the manual, apart from the library: where a value
// here differs from the library's byte, the page says so.
import {isRgb, layouts, renderers} from './frames.mjs';

const matrix601 = {shift: 7, Y: [33, 64, 13], U: [-19, -37, 56], V: [56, -47, -9]};
const matrix709 = {shift: 8, Y: [47, 157, 16], U: [-26, -87, 112], V: [112, -102, -10]};
const matrix24 = {shift: 8, Y: [66, 129, 25], U: [-38, -74, 112], V: [112, -94, -18]};

const average = (a, b) => (a + b + 1) >> 1;
const clip = (value) => Math.max(0, Math.min(255, value));

const minus = '−';
const number = (value) => value < 0 ? minus + -value : String(value);

function sum(weights, names) {
    return weights.map((weight, i) =>
        `${i === 0 ? (weight < 0 ? minus : '') : weight < 0 ? ` ${minus} ` : ' + '}${Math.abs(weight)}·${names[i]}`).join('');
}

function weigh(matrix, component, rgb) {
    return matrix[component].reduce((total, weight, i) => total + weight * rgb[i], 0) >> matrix.shift;
}

// What each captured sample is: {label, formula, numbers, value, actual}; no value where nothing is written.
export function explainCapture(path, x, y) {
    const {settings: {layout, matrix}} = path;
    const actual = path.planeBytes(x, y, path.captured).map((byte) => byte.value);
    if (layout === '24BG' || layout === 'Raw') {
        return explain24(path, x, y, actual);
    }
    if (isRgb(layout)) {
        return explain32(path, x, y, actual, layout === 'BGRA' && matrix === '709' ? matrix709 : matrix601);
    }
    return explainYuv(path, x, y, actual);
}

// The pixels of the block of two by two that a pixel shares chroma with, as [row][column] of R, G, B.
function block(path, x, y) {
    const {scene, width, height} = path;
    const rows = [y & ~1, y | 1].filter((row) => row < height);
    const columns = [x & ~1, x | 1].filter((column) => column < width);
    return rows.map((row) => columns.map((column) => {
        const at = 4 * (row * width + column);
        return [scene.data[at], scene.data[at + 1], scene.data[at + 2]];
    }));
}

function pixelOf(path, x, y) {
    const at = 4 * (y * path.width + x);
    return [...path.scene.data.subarray(at, at + 3)];
}

function transposed(pixels) {
    return pixels[0].map((_, i) => pixels.map((row) => row[i]));
}

function averaged(pixels) {
    return [0, 1, 2].map((c) => {
        const columns = pixels[0].map((_, i) => pixels.length === 2 ? average(pixels[0][i][c], pixels[1][i][c]) : pixels[0][i][c]);
        return columns.length === 2 ? average(columns[0], columns[1]) : columns[0];
    });
}

function explain32(path, x, y, actual, matrix) {
    const rgb = pixelOf(path, x, y);
    // Vertical pairs come first, and those of a camera on its side are horizontal here.
    const pixels = block(path, x, y);
    const mean = averaged(path.settings.degree % 180 ? transposed(pixels) : pixels);
    return ['Y', 'U', 'V'].map((label, i) => {
        const offset = i === 0 ? 16 : 128;
        const names = i === 0 ? ['R', 'G', 'B'] : ['R̄', 'Ḡ', 'B̄'];
        const values = i === 0 ? rgb : mean;
        return {
            label, actual: actual[i],
            formula: `((${sum(matrix[label], names)}) >> ${matrix.shift}) + ${offset}`,
            numbers: `((${sum(matrix[label], values)}) >> ${matrix.shift}) + ${offset}`,
            value: weigh(matrix, label, values) + offset,
        };
    });
}

function explain24(path, x, y, actual) {
    const {width, height} = path;
    const pixels = block(path, x, y);
    const corner = x === width - 1 && y === height - 1 && width % 2 === 1 && height % 2 === 1;
    const luma = {
        label: 'Y', actual: actual[0],
        formula: `((${sum(matrix24.Y, ['R', 'G', 'B'])}) >> 8) + 16`,
        numbers: `((${sum(matrix24.Y, pixelOf(path, x, y))}) >> 8) + 16`,
        value: weigh(matrix24, 'Y', pixelOf(path, x, y)) + 16,
    };
    if (corner) {
        const above = path.captured[0].at(x, y - 1);
        Object.assign(luma, {formula: 'the sample above', numbers: number(above), value: above});
    }
    const chroma = ['U', 'V'].map((label, i) => {
        if (corner) {
            const plane = path.captured[i + 1];
            const [up, left] = [plane.at(x >> 1, (y >> 1) - 1), plane.at((x >> 1) - 1, y >> 1)];
            return {
                label, actual: actual[i + 1], formula: '(above + left + 1) >> 1',
                numbers: `(${up} + ${left} + 1) >> 1`, value: average(up, left),
            };
        }
        const each = pixels.flat().map((rgb) => weigh(matrix24, label, rgb));
        const total = each.reduce((a, b) => a + b, 0);
        const shift = Math.log2(each.length);
        const round = each.length >> 1;
        const text = each.map(number).join(' + ').replaceAll(`+ ${minus}`, `${minus} `);
        return {
            label, actual: actual[i + 1],
            formula: `128 + average of ((${sum(matrix24[label], ['R', 'G', 'B'])}) >> 8)`,
            numbers: shift ? `128 + ((${text} + ${round}) >> ${shift})` : `128 + ${text}`,
            value: 128 + ((total + round) >> shift),
        };
    });
    return [luma, ...chroma];
}

function explainYuv(path, x, y, actual) {
    const {layout} = path.settings;
    const {width, height} = path.frame;
    const {column, reading} = path.inFrame(x, y);
    const bytes = path.frameBytes(x, y);
    const named = (letter) => bytes.find((byte) => byte.here && byte.name[0] === letter)?.value;
    const copied = (label, i) => ({
        label, actual: actual[i], formula: 'copied', numbers: number(named(label)), value: named(label),
    });
    const nothing = (label, i, formula) => ({label, actual: actual[i], formula, numbers: '', value: null});
    if (layout === 'NV12') {
        return ['Y', 'U', 'V'].map(copied);
    }
    if (layout === 'M420') {
        const lastRow = height % 2 === 1 && y === height - 1;
        const lastColumn = width % 2 === 1 && x === width - 1;
        return ['Y', 'U', 'V'].map((label, i) => lastRow || (i > 0 && lastColumn) ?
            nothing(label, i, `not written: odd ${lastRow ? 'height' : 'width'}`) : copied(label, i));
    }
    if (width % 2 === 1 && column === width - 1) {
        return ['Y', 'U', 'V'].map((label, i) => nothing(label, i, 'not read, not written: odd width'));
    }
    // Row pairs are taken in the order of reading.
    const {pitch} = path.frame.planes[0];
    const memoryRow = (row) => path.settings.bottomUp ? height - 1 - row : row;
    const upper = memoryRow(reading & ~1);
    const lower = memoryRow(Math.min(reading | 1, height - 1));
    const chroma = ['U', 'V'].map((label, i) => {
        const at = 4 * (column >> 1) + layouts[layout].order.indexOf(label);
        const [a, b] = [upper, lower].map((row) => path.frame.planes[0].bytes[row * pitch + at]);
        if (layout !== 'Yuv2') {
            return {
                label, actual: actual[i + 1], formula: '(upper + lower + 1) >> 1',
                numbers: `(${a} + ${b} + 1) >> 1`, value: average(a, b),
            };
        }
        const [s, t] = [a, b].map((value) => (113 * (value << 24 >> 24)) >> 7);
        return {
            label, actual: actual[i + 1], formula: '(t(upper) + t(lower) + 257) >> 1, t(c) = (113·c) >> 7',
            numbers: `(${number(s)} + ${number(t)} + 257) >> 1`, value: (s + t + 257) >> 1,
        };
    });
    const luma = layout !== 'Yuv2' ? copied('Y', 0) : {
        label: 'Y', actual: actual[0], formula: '((220·Y) >> 8) + 16',
        numbers: `((220·${named('Y')}) >> 8) + 16`, value: (220 * named('Y') >> 8) + 16,
    };
    return [luma, ...chroma];
}

// The blend of one pixel's samples; empty where the overlay is not.
export function explainBlend(path, x, y) {
    const overlay = path.overlay();
    const [left, top] = path.overlayPosition(overlay);
    const before = path.planeBytes(x, y, path.captured);
    const after = path.planeBytes(x, y, path.planes);
    const {opacity, perSample} = path.settings;
    return ['Y', 'U', 'V'].flatMap((label, i) => {
        const shift = i === 0 ? 0 : 1;
        const [column, row] = [(x >> shift) - (left >> shift), (y >> shift) - (top >> shift)];
        const plane = overlay.planes[i];
        if (column < 0 || row < 0 || column >= plane.rowBytes || row >= plane.rows) {
            return [];
        }
        const alpha = perSample ? overlay.weights[i].at(column, row) : opacity;
        const front = plane.at(column, row);
        const back = before[i].value;
        const s = back * (255 - alpha) + front * alpha;
        return [{
            label, actual: after[i].value,
            formula: `(s + (s >> 8) + 1) >> 8, s = ${label}·(255 ${minus} α) + overlay·α = ${back}·${255 - alpha} + ${front}·${alpha}`,
            numbers: `(${s} + ${s >> 8} + 1) >> 8`, value: (s + (s >> 8) + 1) >> 8,
        }];
    });
}

// The rendered pixel before dither.
export function explainRender(path, x, y) {
    const {renderer} = path.settings;
    const [Y, U, V] = path.planeBytes(x, y, path.planes).map((byte) => byte.value);
    const bytes = path.pictureBytes(x, y, path.plain);
    const actual = (name) => bytes.find((byte) => byte.name === name).value;
    if (x >= (path.width & ~1) || y >= (path.height & ~1)) {
        return ['R', 'G', 'B'].map((label) =>
            ({label, actual: actual(label), formula: 'left unchanged: blocks are two by two', numbers: '', value: null}));
    }
    const [r, g, b] = renderer.endsWith('709') ?
        [['((229·V) >> 7)', 248, 229 * V >> 7, `((229·${V}) >> 7)`], [14, 34, 78], ['((135·U) >> 6)', 289, 135 * U >> 6, `((135·${U}) >> 6)`]] :
        [['((204·V) >> 7)', 223, 204 * V >> 7, `((204·${V}) >> 7)`], [25, 52, 135], ['((129·U) >> 6)', 277, 129 * U >> 6, `((129·${U}) >> 6)`]];
    const luma = 149 * Y >> 7;
    const side = (label, [formula, offset, term, numbers]) => ({
        label, actual: actual(label),
        formula: `clip(((149·Y) >> 7) + ${formula} ${minus} ${offset})`,
        numbers: `clip(((149·${Y}) >> 7) + ${numbers} ${minus} ${offset})`, value: clip(luma + term - offset),
    });
    return [
        side('R', r),
        {
            label: 'G', actual: actual('G'),
            formula: `clip(((149·Y) >> 7) + ${g[2]} ${minus} ((${g[0]}·U + ${g[1]}·V) >> 6))`,
            numbers: `clip(((149·${Y}) >> 7) + ${g[2]} ${minus} ((${g[0]}·${U} + ${g[1]}·${V}) >> 6))`,
            value: clip(luma + g[2] - ((g[0] * U + g[1] * V) >> 6)),
        },
        side('B', b),
    ];
}

// Everything about a pixel, and whether the arithmetic agrees with the library.
export function explain(path, x, y) {
    const stages = [
        ['Captured', explainCapture(path, x, y)],
        ['Blended', explainBlend(path, x, y)],
        [`Rendered, ${renderers[path.settings.renderer].join(' ')}`, explainRender(path, x, y)],
    ].filter(([, lines]) => lines.length > 0);
    const checked = stages.flatMap(([, lines]) => lines).filter((line) => line.value !== null);
    return {stages, checked: checked.length, wrong: checked.filter((line) => line.value !== line.actual).length};
}

// What is special about a pixel at the edge of an odd picture, in the manual's words for the function.
export function edgeOf(path, x, y) {
    const lastColumn = path.width % 2 === 1 && x === path.width - 1;
    const lastRow = path.height % 2 === 1 && y === path.height - 1;
    return {lastColumn, lastRow};
}
