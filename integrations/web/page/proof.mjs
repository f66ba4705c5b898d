// The proof and the measurement: long runs in a worker, with progress, results and a file to keep.
import {byId, digits3, element, saveJson, say} from './dom.mjs';
import {digests, functions, version} from './functions.mjs';

const expected = new Map(digests.map(([name, option, value]) => [`${name} ${option}`, value]));

// What the browser tells of itself and of the machine; it has no way to name the processor model.
export async function machine() {
    const data = navigator.userAgentData;
    const more = await data?.getHighEntropyValues(['architecture', 'bitness', 'platformVersion', 'fullVersionList']).catch(() => ({})) ?? {};
    const brand = more.fullVersionList?.find(({brand: name}) => !/not.?a.?brand/i.test(name));
    const browser = brand ? `${brand.brand} ${brand.version}` : navigator.userAgent.match(/(Firefox|Edg|Chrome|HeadlessChrome|Version)\/[\d.]+/)?.[0].replace('/', ' ').replace('Version', 'Safari') ?? navigator.userAgent;
    const processor = [more.architecture && `${more.architecture}${more.bitness ? ` ${more.bitness}-bit` : ''}`, data?.platform ?? navigator.platform,
        `${navigator.hardwareConcurrency} logical processors`].filter(Boolean).join(', ');
    return {browser, processor};
}

function startWorker() {
    const url = URL.createObjectURL(new Blob([byId('worker').textContent.replaceAll('<\\/', '</')], {type: 'text/javascript'}));
    const worker = new Worker(url);
    URL.revokeObjectURL(url);
    return worker;
}

// Sends a job and hands its messages on; resolves with the last one.
function work(job, onMessage) {
    const worker = startWorker();
    return new Promise((resolve, reject) => {
        worker.onmessage = ({data}) => {
            if (data.kind === 'done') {
                resolve(data);
            } else if (data.kind === 'failed') {
                reject(new Error(data.message));
            } else {
                onMessage(data);
            }
        };
        worker.onerror = (event) => reject(new Error(event.message));
        worker.postMessage(job);
    }).finally(() => worker.terminate());
}

async function busy(button, progress, task) {
    button.disabled = true;
    progress.hidden = false;
    progress.value = 0;
    try {
        await task((part) => { progress.value = part; });
    } finally {
        button.disabled = false;
        progress.hidden = true;
    }
}

export function setUpProof(sets) {
    say(byId('digest-count'), String(expected.size));
    let report = null;
    byId('prove').addEventListener('click', () => busy(byId('prove'), byId('prove-progress'), async (advance) => {
        const results = byId('prove-results');
        results.replaceChildren();
        report = {version, date: new Date().toISOString(), ...await machine(), sets: []};
        for (const [index, {name, bytes}] of sets.entries()) {
            const found = new Map();
            try {
                const {target, seconds} = await work({kind: 'prove', bytes}, ({kind, key, value, part}) => {
                    if (kind === 'digest') {
                        found.set(key, value);
                    } else {
                        advance((index + part) / sets.length);
                    }
                });
                const differ = [...expected].filter(([key, value]) => found.get(key) !== value).map(([key, value]) =>
                    ({digest: key, expected: value, found: found.get(key) ?? null}));
                const agree = expected.size - differ.length;
                report.sets.push({set: name, target, agree, of: expected.size, seconds, differ, digests: Object.fromEntries(found)});
                results.append(outcome(differ.length === 0, `${agree} of ${expected.size} agree`,
                    `${name} set, target ${target}, ${seconds.toFixed(1)} s. ${report.browser}; ${report.processor}.`,
                    differ.map((one) => `${one.digest}: expected ${one.expected}, found ${one.found}`)));
            } catch (error) {
                results.append(outcome(false, 'The check stopped', `${name} set: ${error.message}`, []));
            }
        }
        byId('prove-save').hidden = false;
    }));
    byId('prove-save').addEventListener('click', () => saveJson('kor-digests.json', report));
}

function outcome(good, title, about, lines) {
    return element('div', {class: good ? 'outcome' : 'outcome wrong'}, element('p', {}, element('strong', {}, title)),
        element('p', {class: 'quiet'}, about), ...(lines.length ? [element('ul', {}, ...lines.map((line) => element('li', {}, line)))] : []));
}

export function setUpSpeed(sets) {
    let report = null;
    byId('measure').addEventListener('click', () => busy(byId('measure'), byId('measure-progress'), async (advance) => {
        const [width, height] = byId('measure-size').value.split('x').map(Number);
        const rows = [];
        byId('measure-results').replaceChildren();
        report = {version, date: new Date().toISOString(), ...await machine(), width, height, functions: rows};
        const {targets} = await work({kind: 'measure', sets: sets.map(({bytes}) => bytes), width, height}, ({name, seconds}) => {
            rows.push({name, milliseconds: seconds.map((second) => 1e3 * second), megapixels: seconds.map((second) => width * height / second / 1e6)});
            advance(rows.length / functions.length);
        });
        report.targets = targets;
        byId('measure-results').replaceChildren(speedTable(rows, targets));
        const slower = rows.filter(({megapixels: [plain, vector]}) => vector < 0.95 * plain).length;
        say(byId('measure-about'), `${width} × ${height}. ${report.browser}; ${report.processor}. ` +
            (sets.length < 2 ? 'This browser runs no vector set.' :
                targets[1] === 'portable' ? 'The vector module has no vector forms.' :
                slower ? `${slower} of ${rows.length} functions are more than 5% slower in vectors here.` :
                `None of the ${rows.length} functions is slower in vectors.`));
        byId('measure-save').hidden = false;
    }));
    byId('measure-save').addEventListener('click', () => saveJson('kor-speed.json', report));
}

function speedTable(rows, targets) {
    const all = rows.flatMap(({megapixels}) => megapixels);
    const [least, most] = [Math.min(...all) / 2, Math.max(...all)];
    const bar = (value, kind) => {
        const made = element('div', {class: `bar ${kind}`});
        made.style.width = `${100 * Math.log(value / least) / Math.log(most / least)}%`;
        return made;
    };
    const head = element('tr', {}, element('th', {scope: 'col'}, 'Function'), element('th', {scope: 'col', class: 'bars'}, `Mpix/s on a logarithmic scale: ${targets.at(-1)} above, portable below`),
        ...targets.map((target) => element('th', {scope: 'col', class: 'number optional'}, target)), element('th', {scope: 'col', class: 'number'}, 'ratio'));
    return element('table', {}, element('thead', {}, head), element('tbody', {}, ...rows.map(({name, megapixels}) =>
        element('tr', {}, element('th', {scope: 'row'}, element('code', {}, name)),
            element('td', {class: 'bars'}, bar(megapixels.at(-1), 'vector'), bar(megapixels[0], 'plain')),
            ...megapixels.map((value) => element('td', {class: 'number optional'}, digits3(value))),
            element('td', {class: 'number'}, `${(megapixels.at(-1) / megapixels[0]).toFixed(1)} ×`)))));
}
