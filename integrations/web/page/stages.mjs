// The six stages on the page: their controls, pictures, calls and times, and where the scene comes from.
import {isRgb, layouts, renderers, toRgba} from './frames.mjs';
import {callText, hex} from './library.mjs';
import {byId, digits3, element, paint, paintGrey, say, showCalls, timeText} from './dom.mjs';
import {Path} from './path.mjs';

const mostBytes = 64 << 20;
const mostPixels = 64e6;
const leastSide = 16;

export class Stages {
    constructor(library, onFrame) {
        this.path = new Path(library);
        this.onFrame = onFrame;
        this.source = null;  // what draws the scene: null for the test card, a bitmap, or a video
        this.times = new Map();
        this.fillChoices();
        this.listen();
    }

    set library(library) {
        const {settings} = this.path;
        this.path = new Path(library);
        this.path.settings = settings;
        this.update();
    }

    fillChoices() {
        byId('layout').append(...Object.keys(layouts).map((name) => element('option', {}, name)));
        byId('renderer').append(...Object.keys(renderers).map((name) => element('option', {}, name)));
    }

    listen() {
        const {settings} = this.path;
        const on = (id, event, change) => byId(id).addEventListener(event, () => {
            change(byId(id));
            this.update();
        });
        on('layout', 'change', (box) => { settings.layout = box.value; });
        on('degree', 'change', (box) => { settings.degree = Number(box.value); });
        on('bottom-up', 'change', (box) => { settings.bottomUp = box.checked; });
        on('matrix', 'change', (box) => { settings.matrix = box.value; });
        on('opacity', 'input', (box) => { settings.opacity = Number(box.value); });
        on('weight', 'change', (box) => { settings.perSample = box.value === 'array'; });
        on('overlay-x', 'change', (box) => { settings.overlayX = wholeNumber(box, 0); });
        on('overlay-y', 'change', (box) => { settings.overlayY = wholeNumber(box, 0); });
        on('renderer', 'change', (box) => { settings.renderer = box.value; });
        on('level', 'change', (box) => { settings.level = Number(box.value); });
        on('seed', 'change', (box) => { settings.seed = wholeNumber(box, 1); });
        on('new-seed', 'click', () => {
            settings.seed = crypto.getRandomValues(new Uint32Array(1))[0];
            byId('seed').value = settings.seed;
        });
        on('size', 'change', () => this.resize());
        on('odd', 'change', () => this.resize());
        on('use-card', 'click', () => this.useCard());
        byId('use-file').addEventListener('click', () => byId('file').click());
        byId('file').addEventListener('change', (event) => this.open(event.target.files[0]));
        byId('use-camera').addEventListener('click', () => this.toggleCamera());
        document.addEventListener('paste', (event) => this.take(event, event.clipboardData));
        document.addEventListener('drop', (event) => this.take(event, event.dataTransfer));
        document.addEventListener('dragover', (event) => {
            event.preventDefault();
            document.body.classList.add('dropping');
        });
        document.addEventListener('dragleave', (event) => {
            if (!event.relatedTarget) {
                document.body.classList.remove('dropping');
            }
        });
        this.listenToHandle(byId('handle'));
    }

    listenToHandle(handle) {
        const {settings} = this.path;
        const moveTo = (x, y) => {
            [settings.overlayX, settings.overlayY] = [Math.round(x), Math.round(y)];
            [settings.overlayX, settings.overlayY] = this.path.overlayPosition();
            this.update();
        };
        let grip = null;
        handle.addEventListener('pointerdown', (event) => {
            handle.setPointerCapture(event.pointerId);
            const scale = this.path.width / byId('blended').getBoundingClientRect().width;
            const [x, y] = this.path.overlayPosition();
            grip = {scale, x: x - event.clientX * scale, y: y - event.clientY * scale};
        });
        handle.addEventListener('pointermove', (event) => {
            if (grip) {
                moveTo(grip.x + event.clientX * grip.scale, grip.y + event.clientY * grip.scale);
            }
        });
        for (const end of ['pointerup', 'pointercancel']) {
            handle.addEventListener(end, () => { grip = null; });
        }
        handle.addEventListener('keydown', (event) => {
            const step = event.shiftKey ? 16 : 1;
            const [dx, dy] = {ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, -step], ArrowDown: [0, step]}[event.key] ?? [];
            if (dx !== undefined) {
                event.preventDefault();
                const [x, y] = this.path.overlayPosition();
                moveTo(x + dx, y + dy);
            }
        });
    }

    // ---- Where the scene comes from ----

    get chosenSize() {
        return {side: Number(byId('size').value), odd: byId('odd').checked};
    }

    // The size of the scene for a source of this shape.
    fit(width, height) {
        const {side, odd} = this.chosenSize;
        const scale = Math.min(1, side / Math.max(width, height));
        const toChosen = (size) => {
            const even = Math.max(leastSide, Math.round(size * scale) & ~1);
            return odd ? even - 1 : even;
        };
        return [toChosen(width), toChosen(height)];
    }

    useCard() {
        this.stopCamera();
        this.source = null;
        this.resize();
        this.explainFailure('');
    }

    resize() {
        const {side, odd} = this.chosenSize;
        if (!this.source) {
            const [width, height] = [side - (odd ? 1 : 0), (side * 9 / 16 & ~1) - (odd ? 1 : 0)];
            this.scene = {width, height, data: this.path.library.testCard(width, height)};
            this.about = 'the built-in test card';
        } else if (this.source instanceof ImageBitmap) {
            this.scene = this.grab(this.source, this.source.width, this.source.height);
        }
        [this.path.settings.overlayX, this.path.settings.overlayY] = [null, null];
    }

    grab(source, width, height) {
        const [w, h] = this.fit(width, height);
        this.canvas ??= new OffscreenCanvas(w, h);
        [this.canvas.width, this.canvas.height] = [w, h];
        const context = this.canvas.getContext('2d', {willReadFrequently: true, colorSpace: 'srgb'});
        context.imageSmoothingQuality = 'high';
        // Cameras have no alpha: what shines through is black.
        context.fillRect(0, 0, w, h);
        context.drawImage(source, 0, 0, w, h);
        const {data} = context.getImageData(0, 0, w, h);
        return {width: w, height: h, data: new Uint8Array(data.buffer)};
    }

    take(event, data) {
        document.body.classList.remove('dropping');
        const file = [...data.files][0];
        if (file || event.type === 'drop') {
            event.preventDefault();
            this.open(file);
        }
    }

    async open(file) {
        try {
            const bitmap = await readPicture(file);
            this.stopCamera();
            this.source = bitmap;
            this.about = `${file.name || 'a pasted picture'}, ${bitmap.width} × ${bitmap.height}`;
            this.resize();
            this.explainFailure('');
            this.update();
        } catch (error) {
            this.explainFailure(error.message);
        }
    }

    explainFailure(message) {
        const notice = byId('notice');
        notice.hidden = !message;
        say(notice, message);
    }

    async toggleCamera() {
        if (this.stream) {
            this.useCard();
            this.update();
            return;
        }
        try {
            if (!navigator.mediaDevices) {
                throw new Error('this page was opened in a way that keeps cameras from it; scripts/web --serve shows it where they work');
            }
            const size = {width: {ideal: 1280}, height: {ideal: 720}};
            this.stream = await navigator.mediaDevices.getUserMedia({video: size, audio: false});
            const video = element('video', {muted: true, playsInline: true});
            video.srcObject = this.stream;
            await video.play();
            this.source = video;
            [this.path.settings.overlayX, this.path.settings.overlayY] = [null, null];
            byId('use-camera').setAttribute('aria-pressed', 'true');
            this.explainFailure('');
            this.follow(video);
        } catch (error) {
            this.stopCamera();
            this.explainFailure(`The camera cannot be used: ${error.message}`);
        }
    }

    stopCamera() {
        this.stream?.getTracks().forEach((track) => track.stop());
        this.stream = null;
        byId('use-camera').setAttribute('aria-pressed', 'false');
    }

    follow(video) {
        let count = 0;
        const {seed} = this.path.settings;
        const step = () => {
            if (this.source !== video || !this.stream) {
                this.path.settings.seed = seed;
                return;
            }
            if (video.videoWidth > 0) {
                this.scene = this.grab(video, video.videoWidth, video.videoHeight);
                this.about = `the camera, ${video.videoWidth} × ${video.videoHeight}, frame ${++count}`;
                // New noise for every frame, as a program would have it.
                this.path.settings.seed = seed + count;
                this.update();
            }
            requestAnimationFrame(step);
        };
        step();
    }

    // ---- One frame ----

    update() {
        this.path.run(this.scene);
        this.draw();
        this.onFrame();
        // Times are taken once the page is at rest, or every now and then while it is not.
        if (!this.stream || !this.measuring) {
            clearTimeout(this.measuring);
            this.measuring = setTimeout(() => {
                this.measuring = null;
                this.measure();
            }, this.stream ? 1000 : 120);
        }
        this.times.clear();
        this.drawCalls();
    }

    draw() {
        const {path} = this;
        const {width, height, settings} = path;
        paint(byId('scene'), new Uint8ClampedArray(path.scene.data), width, height);
        say(byId('scene-about'), `${width} × ${height}, ${this.about}`);

        const shown = path.frame.planes[0];
        if (path.frame.planes.length === 2) {
            const [luma, chroma] = path.frame.planes;
            const both = path.library.plane('both', luma.rowBytes, luma.rows + chroma.rows, Math.max(luma.pitch, chroma.pitch));
            both.bytes.fill(0);
            [[luma, 0], [chroma, luma.rows]].forEach(([plane, first]) => {
                for (let row = 0; row < plane.rows; ++row) {
                    both.bytes.set(plane.bytes.subarray(row * plane.pitch, (row + 1) * plane.pitch), (first + row) * both.pitch);
                }
            });
            paintGrey(byId('frame'), both);
        } else {
            paintGrey(byId('frame'), shown);
        }
        const bytes = path.frame.planes.reduce((sum, plane) => sum + plane.rows * plane.pitch, 0);
        say(byId('frame-about'), `${path.frame.width} × ${path.frame.height}, ${bytes.toLocaleString('en')} bytes, ` +
            `${layoutText(settings.layout)}${path.needsEven && path.scene !== this.scene ? '; cut to an even size' : ''}`);

        ['y', 'u', 'v'].forEach((name, i) => paintGrey(byId(`plane-${name}`), path.captured[i]));
        const [y, u] = path.captured;
        const spare = [width % 2 && 'a spare column', height % 2 && 'a spare row'].filter(Boolean).join(' and ');
        say(byId('planes-about'), `I420: Y ${y.rowBytes} × ${y.rows}, U and V ${u.rowBytes} × ${u.rows}` +
            (spare ? `; Y has room for ${spare}` : ''));
        byId('matrix').disabled = settings.layout !== 'BGRA';

        const {library} = path;
        const view = library.plane('view', 4 * width, height);
        view.bytes.fill(0);
        library.run({name: 'KorI420ToRGBA', planes: [...path.planes, view], options: {width, height, ditherLevel: 0}});
        paint(byId('blended'), new Uint8ClampedArray(view.bytes.slice(0, 4 * width * height)), width, height);
        this.placeHandle();

        const order = renderers[settings.renderer];
        paint(byId('picture'), toRgba(path.picture, order, width, height), width, height);
        say(byId('render-about'), `${order.join(' ')}, ${(order.length * width * height).toLocaleString('en')} bytes` +
            (width % 2 || height % 2 ? '; an odd last column or row is left as it was' : ''));
        this.drawNoise(order);
    }

    placeHandle() {
        const {path} = this;
        const overlay = path.overlay();
        const [x, y] = path.overlayPosition(overlay);
        const percent = (part, whole) => `${100 * part / whole}%`;
        Object.assign(byId('handle').style, {
            left: percent(x, path.width), top: percent(y, path.height),
            width: percent(overlay.width, path.width), height: percent(overlay.height, path.height),
        });
        for (const [id, value, most] of [['overlay-x', x, path.width - overlay.width], ['overlay-y', y, path.height - overlay.height]]) {
            if (document.activeElement !== byId(id)) {
                byId(id).value = value;
            }
            byId(id).max = most;
        }
        say(byId('opacity-value'), String(path.settings.opacity));
        say(byId('blend-about'), `${overlay.width} × ${overlay.height} at ${x}, ${y}` +
            (x % 2 || y % 2 ? '; at an odd position chroma moves by half a sample' : ''));
    }

    drawNoise(order) {
        const {path} = this;
        const {width, height} = path;
        const [before, after] = [path.plain.bytes, path.picture.bytes];
        const rgba = new Uint8ClampedArray(4 * width * height);
        const places = ['R', 'G', 'B'].map((name) => order.indexOf(name));
        const size = order.length;
        let [least, most, sum, squares] = [0, 0, 0, 0];
        for (let i = 0; i < width * height; ++i) {
            for (let c = 0; c < 3; ++c) {
                const difference = after[size * i + places[c]] - before[size * i + places[c]];
                rgba[4 * i + c] = 128 + 16 * difference;
                least = Math.min(least, difference);
                most = Math.max(most, difference);
                sum += difference;
                squares += difference * difference;
            }
            rgba[4 * i + 3] = 255;
        }
        paint(byId('noise'), rgba, width, height);
        const count = 3 * width * height;
        say(byId('noise-about'), path.settings.level === 0 ? 'Off: the bytes are those without dither' :
            `from ${least} to ${most}, mean ${(sum / count).toFixed(3)}, deviation ${Math.sqrt(squares / count).toFixed(2)}`);
    }

    drawCalls() {
        const {path} = this;
        const show = (id, calls) => {
            const time = this.times.get(id);
            showCalls(byId(id), [...new Set(calls.map((call) => call.name))].join(', '), calls.map(callText).join('\n'),
                time ? timeText(time, path.width * path.height, path.library.target) : '…');
        };
        show('capture-call', path.capture);
        show('blend-call', [path.blend]);
        show('render-call', [path.render]);
    }

    measure() {
        const {path, path: {library}} = this;
        const bursts = this.stream ? 3 : 5;
        const time = (calls) => calls.reduce((sum, call) => {
            library.serveSeed(path.settings.seed);
            return sum + library.measure(call, bursts, this.stream ? 1 : 4);
        }, 0);
        this.times.set('capture-call', time(path.capture));
        this.times.set('blend-call', time([path.blend]));
        this.times.set('render-call', time([path.render]));
        this.drawCalls();
    }
}

function wholeNumber(box, otherwise) {
    const value = Math.round(Number(box.value));
    const most = box.max === '' ? Infinity : Number(box.max);
    const whole = Number.isFinite(value) && box.value !== '' ? Math.max(0, Math.min(value, most)) : otherwise;
    box.value = whole;
    return whole;
}

function layoutText(layout) {
    if (layout === 'NV12') {
        return 'a plane of Y, then pairs U V';
    }
    if (layout === 'M420') {
        return 'blocks of two rows of Y and a row of pairs U V';
    }
    const {order} = layouts[layout];
    return `${order.join(' ')} ${isRgb(layout) ? 'for a pixel' : 'for two pixels'}${layout === 'Yuv2' ? ', full range, signed chroma' : ''}`;
}

// The picture in a file, or an error that says what would do.
export async function readPicture(file) {
    if (!file) {
        throw new Error('That was no file; expected a picture such as PNG, JPEG or WebP.');
    }
    const name = file.name || 'The picture';
    if (file.size > mostBytes) {
        throw new Error(`${name} has ${digits3(file.size / 2 ** 20)} MiB; expected at most ${mostBytes >> 20} MiB.`);
    }
    if (file.size === 0) {
        throw new Error(`${name} is empty; expected a picture such as PNG, JPEG or WebP.`);
    }
    // The size is known before the pixels are decoded.
    const url = URL.createObjectURL(file);
    const image = new Image();
    try {
        image.src = url;
        await new Promise((resolve, reject) => {
            image.onload = resolve;
            image.onerror = () => reject(new Error(`${name} is not a picture that this browser reads; expected PNG, JPEG or WebP.`));
        });
        const {naturalWidth: width, naturalHeight: height} = image;
        if (width * height > mostPixels) {
            throw new Error(`${name} is ${width} × ${height}; expected at most ${mostPixels / 1e6} megapixels.`);
        }
        if (Math.min(width, height) < leastSide) {
            throw new Error(`${name} is ${width} × ${height}; expected at least ${leastSide} pixels on each side.`);
        }
    } finally {
        URL.revokeObjectURL(url);
    }
    try {
        return await createImageBitmap(file);
    } catch {
        throw new Error(`${name} is damaged or cut short; it could not be decoded to its end.`);
    }
}

// Bytes in a row, each with the colour of what it holds; framed where some of them are another pixel's.
export function byteChips(bytes) {
    const mixed = bytes.some(({here}) => !here);
    return bytes.map(({name, value, here, offset}) => element('span', {
        class: `byte ${name}${mixed && here ? ' here' : ''}`, title: `${name} at byte ${offset}: ${value}`,
    }, typeof value === 'number' ? hex(value) : value));
}
