// The long runs, away from the page's own thread: all digests of a set, and the speed of every function of two sets.
import {Library} from './library.mjs';
import {speedCall} from './speed.mjs';
import {functions} from './functions.mjs';

async function proveSet(bytes) {
    const library = await Library.load(bytes, (key, value) => postMessage({kind: 'digest', key, value}),
        (count) => postMessage({kind: 'progress', part: count / functions.length}));
    const start = performance.now();
    library.makeDigests();
    postMessage({kind: 'done', target: library.target, seconds: (performance.now() - start) / 1000});
}

async function measureSets(sets, width, height) {
    const libraries = [];
    for (const bytes of sets) {
        libraries.push(await Library.load(bytes));
    }
    for (const {name} of functions) {
        const runs = libraries.map((library) => library.prepare(speedCall(library, name, width, height)));
        const times = runs.map(() => []);
        const counts = runs.map(burstLength);
        // Bursts of the sets alternate, so that a disturbance hits both.
        const best = () => times.map((set) => Math.min(...set));
        // Where the vector set seems slower, both get more bursts: on a busy machine nine may all be disturbed.
        for (let round = 0; round < 9 || (round < 45 && best()[1] > best()[0]); ++round) {
            runs.forEach((run, i) => times[i].push(burst(run, counts[i]) / counts[i]));
        }
        postMessage({kind: 'speed', name, seconds: best()});
    }
    postMessage({kind: 'done', targets: libraries.map((library) => library.target)});
}

function burst(run, count) {
    const start = performance.now();
    for (let i = 0; i < count; ++i) {
        run();
    }
    return (performance.now() - start) / 1000;
}

// Clocks of browsers tell tenths of a millisecond: a burst of four and more is right to a few in a hundred.
function burstLength(run) {
    let count = 1;
    // The shorter of two, as one that was interrupted says nothing.
    while (Math.min(burst(run, count), burst(run, count)) < 0.004 && count < 1 << 16) {
        count *= 2;
    }
    return count;
}

onmessage = async ({data}) => {
    try {
        await (data.kind === 'prove' ? proveSet(data.bytes) : measureSets(data.sets, data.width, data.height));
    } catch (error) {
        postMessage({kind: 'failed', message: String(error)});
    }
};
