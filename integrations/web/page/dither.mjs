// Levels of dither side by side on a slow gradient, and the spectrum of their noise.
import {i420, toRgba} from './frames.mjs';
import {byId, element, paint, say} from './dom.mjs';
import {levels} from './library.mjs';

const rampWidth = 320;
const rampHeight = 96;
const enlarged = {width: 80, height: 24};
const transformLength = 256;  // of the transform
const noiseRows = 256;

export class Dither {
    constructor(library) {
        this.library = library;
        this.figures = levels.map((level) => {
            const canvas = element('canvas', {role: 'img', 'aria-label': `Gradient at level ${level}, as it is`});
            const close = element('canvas', {role: 'img', 'aria-label': `Gradient at level ${level}, four times enlarged`});
            byId('ramps').append(element('figure', {}, element('figcaption', {},
                level === 'Off' ? 'Off: rounding alone' : `Level ${level}`), canvas, close));
            return {canvas, close};
        });
        for (const id of ['ramp-from', 'ramp-codes', 'ramp-gain']) {
            byId(id).addEventListener(byId(id).type === 'number' ? 'input' : 'change', () => this.draw());
        }
    }

    draw() {
        const number = (id, least, most) => Math.max(least, Math.min(Math.round(Number(byId(id).value)) || least, most));
        const codes = number('ramp-codes', 2, 32);
        const from = Math.min(number('ramp-from', 16, 220), 235 - codes);
        const gain = Number(byId('ramp-gain').value);
        const {library} = this;
        const [width, height] = [rampWidth, rampHeight];
        const planes = i420(library, ['rampY', 'rampU', 'rampV'], width, height);
        for (let y = 0; y < height; ++y) {
            for (let x = 0; x < width; ++x) {
                planes[0].bytes[y * planes[0].pitch + x] = Math.round(from + codes * x / (width - 1));
            }
        }
        const middle = 149 * (from + codes / 2) / 128 - 19;
        levels.forEach((_, level) => {
            const picture = library.plane('ramp', 4 * width, height);
            library.serveSeed(1);
            library.run({name: 'KorI420ToRGBA', planes: [...planes, picture], options: {width, height, ditherLevel: level}});
            const rgba = toRgba(picture, ['R', 'G', 'B', 'A'], width, height);
            if (gain > 1) {
                rgba.forEach((byte, i) => { rgba[i] = i % 4 === 3 ? 255 : 128 + gain * (byte - middle); });
            }
            const {canvas, close} = this.figures[level];
            paint(canvas, rgba, width, height);
            [close.width, close.height] = [width, height];
            const context = close.getContext('2d');
            context.imageSmoothingEnabled = false;
            context.drawImage(canvas, width / 2 - enlarged.width / 2, 0, enlarged.width, enlarged.height, 0, 0, width, height);
        });
        this.drawSpectrum();
    }

    drawSpectrum() {
        if (this.drawn === this.library) {
            return;
        }
        this.drawn = this.library;
        const spectra = [1, 2, 3].map((level) => spectrum(this.library, level));
        byId('spectrum').replaceChildren(chart(spectra));
        const low = spectra.map(({power}) => {
            const most = Math.round(0.15 * transformLength);
            return 10 * Math.log10(power.slice(1, most).reduce((a, b) => a + b, 0) / (most - 1));
        });
        say(byId('spectrum-about'), 'Power of the luma noise along a row, in decibels; white noise of the same deviation has 0. ' +
            `Below 0.15 cycles per pixel the mean is ${low.map((value, i) => `${value.toFixed(1)} dB at level ${i}`).join(', ')}. ` +
            `Deviations: ${spectra.map(({deviation}) => deviation.toFixed(2)).join(', ')} codes.`);
    }
}

// The power of a level's luma noise at the frequencies 0 to 1/2, relative to white noise of the same deviation.
export function spectrum(library, level) {
    const value = 100;
    const length = transformLength;
    const planes = i420(library, ['flatY', 'flatU', 'flatV'], length, noiseRows);
    planes[0].bytes.fill(value);
    const out = ['noiseY', 'noiseU', 'noiseV'].map((name, i) => library.plane(name, planes[i].rowBytes, planes[i].rows));
    library.serveSeed(1);
    library.run({
        name: 'KorI420Dither', planes: [...planes, ...out],
        options: {width: length, height: noiseRows, ditherLevel: level, randomizeNoiseOffsets: 1},
    });
    const bytes = out[0].bytes;
    const power = new Float64Array(length / 2 + 1);
    let squares = 0;
    for (let row = 0; row < noiseRows; ++row) {
        const real = Float64Array.from({length}, (_, i) => bytes[row * length + i] - value);
        const imaginary = new Float64Array(length);
        squares += real.reduce((sum, noise) => sum + noise * noise, 0);
        transform(real, imaginary);
        power.forEach((_, k) => { power[k] += real[k] ** 2 + imaginary[k] ** 2; });
    }
    const variance = squares / (length * noiseRows);
    return {power: power.map((sum) => sum / (noiseRows * length * variance)), deviation: Math.sqrt(variance)};
}

// The Fourier transform in place; the length is a power of two.
function transform(real, imaginary) {
    const count = real.length;
    for (let i = 1, j = 0; i < count; ++i) {
        let bit = count >> 1;
        for (; j & bit; bit >>= 1) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            [real[i], real[j]] = [real[j], real[i]];
            [imaginary[i], imaginary[j]] = [imaginary[j], imaginary[i]];
        }
    }
    for (let size = 2; size <= count; size *= 2) {
        for (let k = 0; k < size / 2; ++k) {
            const [c, s] = [Math.cos(-2 * Math.PI * k / size), Math.sin(-2 * Math.PI * k / size)];
            for (let i = k; i < count; i += size) {
                const j = i + size / 2;
                const [r, m] = [real[j] * c - imaginary[j] * s, real[j] * s + imaginary[j] * c];
                [real[j], imaginary[j]] = [real[i] - r, imaginary[i] - m];
                real[i] += r;
                imaginary[i] += m;
            }
        }
    }
}

function svg(name, attributes, ...children) {
    const made = document.createElementNS('http://www.w3.org/2000/svg', name);
    Object.entries(attributes).forEach(([key, value]) => made.setAttribute(key, value));
    made.append(...children);
    return made;
}

function chart(spectra) {
    const [left, top, right, bottom] = [52, 14, 700, 270];
    const [least, most] = [-30, 10];
    const x = (frequency) => left + (right - left) * frequency / 0.5;
    const y = (decibels) => top + (bottom - top) * (most - Math.max(least, decibels)) / (most - least);
    const parts = [];
    for (let decibels = least; decibels <= most; decibels += 10) {
        parts.push(svg('line', {class: 'grid-line', x1: left, x2: right, y1: y(decibels), y2: y(decibels)}),
            svg('text', {x: left - 8, y: y(decibels) + 4, 'text-anchor': 'end'}, `${decibels} dB`.replace('-', '−')));
    }
    for (const frequency of [0, 0.1, 0.2, 0.3, 0.4, 0.5]) {
        parts.push(svg('text', {x: x(frequency), y: bottom + 18, 'text-anchor': 'middle'}, String(frequency)));
    }
    parts.push(svg('text', {x: (left + right) / 2, y: bottom + 38, 'text-anchor': 'middle'}, 'cycles per pixel'),
        svg('line', {class: 'axis', x1: left, x2: right, y1: bottom, y2: bottom}),
        svg('line', {class: 'white', x1: left, x2: right, y1: y(0), y2: y(0)}),
        svg('text', {x: right + 8, y: y(0) + 4}, 'white noise'));
    spectra.forEach(({power}, level) => {
        // A running mean over three frequencies: one draw of the noise is rough.
        const points = [...power.keys()].slice(1).map((k) => {
            const near = [k - 1, k, k + 1].filter((i) => i >= 1 && i < power.length);
            const mean = near.reduce((sum, i) => sum + power[i], 0) / near.length;
            return `${x(k / transformLength).toFixed(1)},${y(10 * Math.log10(Math.max(mean, 1e-9))).toFixed(1)}`;
        });
        parts.push(svg('polyline', {class: `series s${level}`, points: points.join(' ')}));
        const at = top + 60 + 20 * level;
        parts.push(svg('line', {class: `series s${level}`, x1: right + 8, x2: right + 36, y1: at + 80, y2: at + 80}),
            svg('text', {x: right + 42, y: at + 84}, `level ${level}`));
    });
    return svg('svg', {viewBox: '0 0 800 315', role: 'img', 'aria-label': 'Spectrum of the dither noise; the caption gives its numbers'}, ...parts);
}
