// Holds what the page explains about every pixel against the bytes that the library writes: every layout, mounting,
// matrix and renderer, even and odd sizes. Argument: build/web/node.
import {readFileSync} from 'node:fs';
import {pathToFileURL} from 'node:url';

const node = `${pathToFileURL(process.argv[2]).href}/`;
const {Library} = await import(`${node}library.mjs`);
const {Path} = await import(`${node}path.mjs`);
const {explain} = await import(`${node}arithmetic.mjs`);
const {layouts, renderers} = await import(`${node}frames.mjs`);

const library = await Library.load(readFileSync(new URL('portable.wasm', node)));
let checked = 0;
const complaints = [];

function noise(width, height) {
    const data = new Uint8Array(4 * width * height);
    let state = width * 77 + height;
    for (let i = 0; i < data.length; ++i) {
        state = Math.imul(state, 1103515245) + 12345 | 0;
        data[i] = state >>> 16;
    }
    return {width, height, data};
}

for (const [width, height] of [[14, 10], [15, 10], [14, 11], [15, 11]]) {
    const scene = noise(width, height);
    for (const layout of Object.keys(layouts)) {
        for (const degree of [0, 90, 180, 270]) {
            for (const bottomUp of [false, true]) {
                for (const renderer of Object.keys(renderers)) {
                    const path = new Path(library);
                    const odd = checked % 2 === 1;
                    Object.assign(path.settings, {
                        layout, degree, bottomUp, renderer, matrix: odd ? '709' : '601', perSample: odd,
                        overlayX: odd ? 3 : 4, overlayY: odd ? 5 : 2,
                    });
                    path.run(scene);
                    for (let y = 0; y < path.height; ++y) {
                        for (let x = 0; x < path.width; ++x) {
                            const result = explain(path, x, y);
                            checked += result.checked;
                            if (result.wrong) {
                                complaints.push({layout, degree, bottomUp, renderer, x, y,
                                    wrong: result.stages.flatMap(([stage, lines]) => lines.filter((line) =>
                                        line.value !== null && line.value !== line.actual).map((line) => ({stage, ...line})))});
                            }
                        }
                    }
                }
            }
        }
    }
}
console.log(`arithmetic: ${checked} values, ${complaints.length} pixels differ`);
complaints.slice(0, 3).forEach((complaint) => console.log(JSON.stringify(complaint, null, 1)));
process.exitCode = complaints.length || !checked ? 1 : 0;
