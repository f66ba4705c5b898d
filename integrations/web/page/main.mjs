// The page: loads the modules that this browser can run, and sets the sections going.
import {Dither} from './dither.mjs';
import {byId, element, say} from './dom.mjs';
import {Explorer} from './explore.mjs';
import {version} from './functions.mjs';
import {Lens} from './lens.mjs';
import {Library, hasSimd} from './library.mjs';
import {setUpProof, setUpSpeed} from './proof.mjs';
import {Stages} from './stages.mjs';

async function inlined(id) {
    const packed = Uint8Array.from(atob(byId(id).textContent), (letter) => letter.charCodeAt(0));
    const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

// The portable set comes first, the one that the page uses last.
async function loadSets() {
    const sets = [{name: 'portable', bytes: await inlined('module-portable')}];
    if (hasSimd()) {
        sets.push({name: 'vector', bytes: await inlined('module-simd')});
    }
    for (const set of sets) {
        set.library = await Library.load(set.bytes);
    }
    return sets;
}

async function start() {
    const sets = await loadSets();
    const choice = byId('set');
    choice.append(...sets.map(({name}) => element('option', {}, name)));
    choice.value = sets.at(-1).name;
    const chosen = () => sets.find(({name}) => name === choice.value).library;
    const tellTarget = () => say(byId('target'), `target ${chosen().target}`);

    const stages = new Stages(chosen(), () => lens.draw());
    const lens = new Lens(stages);
    const explorer = new Explorer(chosen());
    const dither = new Dither(chosen());
    stages.useCard();
    stages.update();
    performance.mark('first-picture');
    tellTarget();
    say(byId('version'), version);
    explorer.draw();
    dither.draw();
    setUpProof(sets);
    setUpSpeed(sets);

    choice.addEventListener('change', () => {
        explorer.library = dither.library = stages.library = chosen();
        explorer.draw();
        dither.draw();
        tellTarget();
    });
    // For the console, and for the page's tests.
    globalThis.kor = {sets, stages, lens, explorer, get path() { return stages.path; }};
    document.documentElement.dataset.ready = 'yes';
}

start().catch((error) => {
    byId('notice').hidden = false;
    say(byId('notice'), `The page could not start: ${error.message}`);
});
