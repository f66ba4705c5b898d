// Runs all digests in Node, on each set. Argument: build/web/node.
import {readFileSync} from 'node:fs';
import {pathToFileURL} from 'node:url';

const node = `${pathToFileURL(process.argv[2]).href}/`;
const {Library} = await import(`${node}library.mjs`);
const {digests} = await import(`${node}functions.mjs`);
const expected = new Map(digests.map(([name, option, value]) => [`${name} ${option}`, value]));

for (const set of ['portable', 'simd']) {
    const found = new Map();
    const start = performance.now();
    const library = await Library.load(readFileSync(new URL(`${set}.wasm`, node)), (key, value) => found.set(key, value));
    library.makeDigests();
    const differ = [...expected].filter(([key, value]) => found.get(key) !== value).map(([key]) => key);
    const seconds = ((performance.now() - start) / 1000).toFixed(1);
    console.log(`${set} (target ${library.target}): ${expected.size - differ.length} of ${expected.size} agree, ${seconds} s`);
    differ.forEach((key) => console.log(`  differs: ${key}, expected ${expected.get(key)}, found ${found.get(key)}`));
    if (differ.length || found.size !== expected.size) {
        process.exitCode = 1;
    }
}
