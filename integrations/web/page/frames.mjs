// A frame's path without the page around it: what the camera delivers, and the calls that take it to the screen.
import {Upwards} from './library.mjs';

const half = (size) => (size + 1) >> 1;
const evenUp = (size) => size + (size & 1);

// Layouts of the camera. order: the components of one pixel, or of two pixels that share chroma.
export const layouts = {
    YUY2: {order: ['Y0', 'U', 'Y1', 'V'], capture: 'KorYUY2ToI420', pack: 'KorI420ToYUY2', rotates: true},
    UYVY: {order: ['U', 'Y0', 'V', 'Y1'], capture: 'KorUYVYToI420', pack: 'KorI420ToUYVY', rotates: true},
    Yuv2: {order: ['Y0', 'U', 'Y1', 'V'], capture: 'KorYuv2ToI420', pack: 'KorI420toYuv2'},
    BGRA: {order: ['B', 'G', 'R', 'A'], capture: 'KorBGRAToI420', capture709: 'KorBGRAToI420UsingBT709'},
    RGBA: {order: ['R', 'G', 'B', 'A'], capture: 'KorRGBAToI420'},
    ARGB: {order: ['A', 'R', 'G', 'B'], capture: 'KorARGBToI420'},
    ABGR: {order: ['A', 'B', 'G', 'R'], capture: 'KorABGRToI420'},
    Raw: {order: ['R', 'G', 'B'], capture: 'KorRawToI420'},
    '24BG': {order: ['B', 'G', 'R'], capture: 'Kor24BGToI420'},
    NV12: {order: ['Y'], pairs: true},
    M420: {order: ['Y'], pairs: true, capture: 'KorM420ToI420'},
};

export const renderers = {
    KorI420ToBGRA: ['B', 'G', 'R', 'A'],
    KorI420ToBGRAUsingBT709: ['B', 'G', 'R', 'A'],
    KorI420ToRGBA: ['R', 'G', 'B', 'A'],
    KorI420ToARGB: ['A', 'R', 'G', 'B'],
    KorI420ToABGR: ['A', 'B', 'G', 'R'],
    KorI420To24BG: ['B', 'G', 'R'],
};

export function isRgb(layout) {
    return layouts[layout].order.includes('R');
}

// Planes y, u, v of a picture, with room for the spare column and row that captures may write. What nothing writes
// stays grey.
export function i420(library, names, width, height, clear = true) {
    const luma = library.plane(names[0], width, height, evenUp(width), evenUp(width) * evenUp(height));
    const [u, v] = [1, 2].map((i) => library.plane(names[i], half(width), half(height)));
    if (clear) {
        for (const plane of [luma, u, v]) {
            plane.bytes.fill(128);
        }
    }
    return [luma, u, v];
}

// Rotates RGBA pixels clockwise by a multiple of 90 degrees.
export function rotateRgba({width, height, data}, degree) {
    if (degree === 0) {
        return {width, height, data};
    }
    const sideways = degree !== 180;
    const [w, h] = sideways ? [height, width] : [width, height];
    const from = new Uint32Array(data.buffer, data.byteOffset, width * height);
    const to = new Uint32Array(w * h);
    for (let y = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x) {
            const [column, row] =
                degree === 90 ? [height - 1 - y, x] : degree === 180 ? [width - 1 - x, height - 1 - y] : [y, width - 1 - x];
            to[row * w + column] = from[y * width + x];
        }
    }
    return {width: w, height: h, data: new Uint8Array(to.buffer)};
}

function packRgb(picture, order, plane) {
    const size = order.length;
    const places = order.map((component) => 'RGBA'.indexOf(component));
    const bytes = plane.bytes;
    const pixels = picture.width * picture.height;
    for (let i = 0; i < pixels; ++i) {
        for (let c = 0; c < size; ++c) {
            bytes[size * i + c] = picture.data[4 * i + places[c]];
        }
    }
}

function reverseRows(plane) {
    const rows = Array.from({length: plane.rows}, (_, i) => plane.bytes.slice(i * plane.pitch, (i + 1) * plane.pitch));
    rows.reverse().forEach((row, i) => plane.bytes.set(row, i * plane.pitch));
}

// The frame as a camera would deliver it: mounted at an angle, so that a rotation by it sets the picture upright, and
// perhaps with its bottom row first. Returns its size and planes.
export function film(library, scene, {layout, degree, bottomUp}) {
    const picture = rotateRgba(scene, (360 - degree) % 360);
    const {width, height} = picture;
    const {order, pack} = layouts[layout];
    if (isRgb(layout)) {
        const frame = library.plane('frame', order.length * width, height);
        packRgb(picture, order, frame);
        if (bottomUp) {
            reverseRows(frame);
        }
        return {width, height, planes: [frame]};
    }
    const source = library.plane('scene', 4 * width, height);
    source.bytes.set(picture.data);
    const planes = i420(library, ['sceneY', 'sceneU', 'sceneV'], width, height);
    library.run({name: 'KorRGBAToI420', planes: [...planes, source], options: {width, height}});
    if (layout === 'M420' && bottomUp) {
        // Blocks keep the order of their rows, so that a picture that is upside down is so in its planes already.
        library.run({name: 'KorI420FlipVertical', planes, options: {width, height}});
    }
    const [y, u, v] = planes;
    if (layout === 'NV12') {
        const luma = library.plane('luma', width, height);
        const chroma = library.plane('chroma', 2 * half(width), half(height));
        copyRows(y, luma, 0, width);
        interleave(u, v, chroma, 0, half(width), half(height), chroma.pitch);
        if (bottomUp) {
            reverseRows(luma);
            reverseRows(chroma);
        }
        return {width, height, planes: [luma, chroma]};
    }
    if (layout === 'M420') {
        const block = 2 * width + 2 * (width >> 1);
        const frame = library.plane('frame', block, height >> 1);
        for (let i = 0; i < height >> 1; ++i) {
            frame.bytes.set(rowOf(y, 2 * i, width), i * block);
            frame.bytes.set(rowOf(y, 2 * i + 1, width), i * block + width);
        }
        interleave(u, v, frame, 2 * width, width >> 1, height >> 1, block);
        return {width, height, planes: [frame]};
    }
    const frame = library.plane('frame', 4 * half(width), height);
    // A packed frame of odd size has a last pair and a last row all the same.
    const evenPlanes = i420(library, ['evenY', 'evenU', 'evenV'], evenUp(width), evenUp(height));
    copyRows(y, evenPlanes[0], 0, width);
    copyRows(u, evenPlanes[1], 0, half(width));
    copyRows(v, evenPlanes[2], 0, half(width));
    const whole = library.plane('evenFrame', 4 * half(width), evenUp(height));
    library.run({name: pack, planes: [...evenPlanes, whole], options: {width: evenUp(width), height: evenUp(height)}});
    frame.bytes.set(whole.bytes.subarray(0, height * frame.pitch));
    if (bottomUp) {
        reverseRows(frame);
    }
    return {width, height, planes: [frame]};
}

function rowOf(plane, row, count) {
    return plane.bytes.slice(row * plane.pitch, row * plane.pitch + count);
}

function copyRows(from, to, column, count) {
    for (let row = 0; row < from.rows; ++row) {
        to.bytes.set(rowOf(from, row, count), row * to.pitch + column);
    }
}

function interleave(u, v, to, first, columns, rows, pitch) {
    const [a, b, bytes] = [u.bytes, v.bytes, to.bytes];
    for (let row = 0; row < rows; ++row) {
        for (let i = 0; i < columns; ++i) {
            bytes[first + row * pitch + 2 * i] = a[row * u.pitch + i];
            bytes[first + row * pitch + 2 * i + 1] = b[row * v.pitch + i];
        }
    }
}

// The calls that turn the frame into upright planes y, u, v.
export function captureCalls(library, frame, {layout, degree, bottomUp, matrix}) {
    const {width, height} = frame;
    const sideways = degree % 180 !== 0;
    const upright = i420(library, ['y', 'u', 'v'], sideways ? height : width, sideways ? width : height);
    const {capture, capture709, rotates} = layouts[layout];
    const size = {width, height};
    if (layout === 'NV12') {
        const [luma, chroma] = frame.planes.map((plane) => bottomUp ? new Upwards(plane) : plane);
        return [
            {name: 'KorPlanarRotation', planes: [luma, upright[0]], options: {...size, rotationDegree: degree}},
            {
                name: 'KorPlanarUVDeinterlaceRotation',
                planes: [chroma, upright[1], upright[2]],
                options: {width: half(width), height: half(height), rotationDegree: degree},
            },
        ];
    }
    if (rotates && degree !== 0) {
        const options = {...size, flip: bottomUp, rotationDegree: degree};
        return [{name: `${capture}WithRotation`, planes: [...upright, frame.planes[0]], options}];
    }
    const name = matrix === '709' && capture709 ? capture709 : capture;
    const first = degree === 0 ? upright : i420(library, ['yTmp', 'uTmp', 'vTmp'], width, height);
    const flip = bottomUp && layout !== 'M420';
    const calls = [{name, planes: [...first, frame.planes[0]], options: {...size, flip}}];
    if (bottomUp && !flip) {
        calls.push({name: 'KorI420FlipVertical', planes: first, options: size});
    }
    if (degree !== 0) {
        first.forEach((from, i) => calls.push({
            name: 'KorPlanarRotation',
            planes: [from, upright[i]],
            options: {width: from.rowBytes, height: from.rows, rotationDegree: degree},
        }));
    }
    return calls;
}

// An overlay as planes and, for each of them, weights. Takes RGBA pixels; their alpha is what shapes it.
export function prepareOverlay(library, picture, opacity) {
    const {width, height, data} = picture;
    const rgba = library.plane('overlayRgba', 4 * width, height);
    rgba.bytes.set(data);
    const planes = i420(library, ['overlayY', 'overlayU', 'overlayV'], width, height);
    library.run({name: 'KorRGBAToI420', planes: [...planes, rgba], options: {width, height}});
    const weights = i420(library, ['alphaY', 'alphaU', 'alphaV'], width, height);
    const weight = (x, y) => Math.round(data[4 * (Math.min(y, height - 1) * width + Math.min(x, width - 1)) + 3] * opacity / 255);
    for (const [i, step] of [1, 2, 2].entries()) {
        for (let y = 0; y < weights[i].rows; ++y) {
            for (let x = 0; x < weights[i].rowBytes; ++x) {
                weights[i].bytes[y * weights[i].pitch + x] = weight(step * x, step * y);
            }
        }
    }
    return {width, height, planes, weights};
}

export function blendCall(background, overlay, {xPosition, yPosition, opacity, perSample}) {
    const {width, height} = overlay;
    const planes = [...background, ...overlay.planes];
    return perSample ?
        {name: 'KorI420AlphaArrayBlend', planes: [...planes, ...overlay.weights], options: {width, height, xPosition, yPosition}} :
        {name: 'KorI420AlphaBlend', planes, options: {width, height, xPosition, yPosition, alpha: opacity}};
}

export function renderCall(library, name, planes, width, height, ditherLevel, target = 'picture') {
    const picture = library.plane(target, renderers[name].length * width, height);
    return {name, planes: [...planes, picture], options: {width, height, ditherLevel}};
}

// RGBA for a canvas. What the renderer left alone is transparent.
export function toRgba(plane, order, width, height) {
    const rgba = new Uint8ClampedArray(4 * width * height);
    const size = order.length;
    const places = ['R', 'G', 'B'].map((component) => order.indexOf(component));
    const bytes = plane.bytes;
    const [columns, rows] = [width & ~1, height & ~1];
    for (let y = 0; y < rows; ++y) {
        for (let x = 0; x < columns; ++x) {
            const to = 4 * (y * width + x);
            const from = y * plane.pitch + size * x;
            rgba[to] = bytes[from + places[0]];
            rgba[to + 1] = bytes[from + places[1]];
            rgba[to + 2] = bytes[from + places[2]];
            rgba[to + 3] = 255;
        }
    }
    return rgba;
}

// A badge with soft edges, drawn without a canvas so that it is the same everywhere.
export function drawBadge(size) {
    const data = new Uint8Array(4 * size * size);
    const centre = (size - 1) / 2;
    for (let y = 0; y < size; ++y) {
        for (let x = 0; x < size; ++x) {
            const radius = Math.hypot(x - centre, y - centre) / (size / 2);
            const ring = radius > 0.78 && radius < 0.92;
            const tick = Math.abs(Math.abs(x - centre * 0.8) * 0.9 - (centre * 1.35 - y)) < size * 0.07 &&
                x > centre * 0.45 && x < centre * 1.5 && y > centre * 0.6 && y < centre * 1.5;
            const at = 4 * (y * size + x);
            const light = ring || tick;
            data[at] = light ? 255 : 18;
            data[at + 1] = light ? 255 : 110 + 60 * y / size;
            data[at + 2] = light ? 255 : 150;
            data[at + 3] = Math.max(0, Math.min(255, Math.round((1 - radius) * 1275)));
        }
    }
    return {width: size, height: size, data};
}
