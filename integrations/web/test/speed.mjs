// The speed of every function in Node: prints a line of JSON, {function: [portable, simd]} in seconds, for 1280x720.
// Argument: build/web/node. The bursts of the two modules alternate; the best of them counts.
import {readFileSync} from 'node:fs';
import {pathToFileURL} from 'node:url';

const node = `${pathToFileURL(process.argv[2]).href}/`;
const {Library} = await import(`${node}library.mjs`);
const {functions} = await import(`${node}functions.mjs`);
const {speedCall} = await import(`${node}speed.mjs`);

// Processor time, of which other programs take nothing.
function burst(run, count) {
    const start = process.cpuUsage();
    for (let i = 0; i < count; ++i) {
        run();
    }
    const {user, system} = process.cpuUsage(start);
    return (user + system) / 1e6;
}

const libraries = [];
for (const set of ['portable', 'simd']) {
    libraries.push(await Library.load(readFileSync(new URL(`${set}.wasm`, node))));
}
const result = {};
for (const {name} of functions) {
    const runs = libraries.map((library) => library.prepare(speedCall(library, name, 1280, 720)));
    const best = runs.map(() => Infinity);
    const counts = runs.map((run) => Math.max(1, Math.ceil(0.002 / Math.max(burst(run, 4) / 4, 1e-6))));
    for (let round = 0; round < 15; ++round) {
        runs.forEach((run, i) => { best[i] = Math.min(best[i], burst(run, counts[i]) / counts[i]); });
    }
    result[name] = best;
}
console.log(JSON.stringify(result));
