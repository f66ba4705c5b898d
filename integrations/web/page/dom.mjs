// Short words for the page's elements.
export const byId = (id) => document.getElementById(id);

export function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        if (key === 'class') {
            made.className = value;
        } else if (key in made && typeof value !== 'string') {
            made[key] = value;
        } else {
            made.setAttribute(key, value);
        }
    }
    made.append(...children);
    return made;
}

// Sets the text only where it changes: screen readers and layout notice every change.
export function say(target, text) {
    if (target.textContent !== text) {
        target.textContent = text;
    }
}

export function paint(canvas, rgba, width, height) {
    if (canvas.width !== width || canvas.height !== height) {
        canvas.width = width;
        canvas.height = height;
    }
    canvas.getContext('2d').putImageData(new ImageData(rgba, width, height), 0, 0);
}

export function paintGrey(canvas, plane, columns = plane.rowBytes, rows = plane.rows) {
    const rgba = new Uint8ClampedArray(4 * columns * rows);
    const words = new Uint32Array(rgba.buffer);
    const bytes = plane.bytes;
    for (let y = 0; y < rows; ++y) {
        for (let x = 0; x < columns; ++x) {
            words[y * columns + x] = 0xff000000 | bytes[y * plane.pitch + x] * 0x010101;
        }
    }
    paint(canvas, rgba, columns, rows);
}

// A number with three significant digits.
export function digits3(value) {
    return value >= 100 ? Math.round(value).toLocaleString('en') : value.toPrecision(3);
}

export function timeText(seconds, pixels, target) {
    return `${digits3(seconds * 1e3)} ms · ${digits3(pixels / seconds / 1e6)} Mpix/s · ${target}`;
}

// A call, or several: their names, the time they take, and the C text behind a fold, ready to copy.
export function showCalls(box, names, text, time) {
    if (!box.firstChild) {
        const copy = element('button', {type: 'button', class: 'copy'}, 'Copy');
        copy.addEventListener('click', async () => {
            await copyText(box.querySelector('pre').textContent);
            copy.textContent = 'Copied';
            setTimeout(() => { copy.textContent = 'Copy'; }, 1200);
        });
        box.append(
            element('div', {class: 'line'}, element('code', {class: 'names'}), element('span', {class: 'quiet time'})),
            element('details', {}, element('summary', {}, 'The call as C'), element('pre', {tabIndex: 0}),
                element('div', {class: 'tools'}, copy)));
    }
    say(box.querySelector('.names'), names);
    say(box.querySelector('pre'), text);
    say(box.querySelector('.time'), time);
}

// The clipboard needs a secure context, which a file is not everywhere.
async function copyText(text) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        const area = element('textarea', {class: 'skip', readOnly: true}, text);
        document.body.append(area);
        area.select();
        document.execCommand('copy');
        area.remove();
    }
}

export function saveJson(name, value) {
    const url = URL.createObjectURL(new Blob([JSON.stringify(value, null, 1)], {type: 'application/json'}));
    element('a', {href: url, download: name}).click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
}
