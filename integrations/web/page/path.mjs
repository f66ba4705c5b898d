// A frame on its way: from a scene in RGBA, through what the camera delivers, to the screen.
import {blendCall, captureCalls, drawBadge, film, i420, layouts, prepareOverlay, renderCall, renderers} from './frames.mjs';

export class Path {
    constructor(library) {
        this.library = library;
        this.settings = {
            layout: 'YUY2', degree: 0, bottomUp: false, matrix: '601', opacity: 224, perSample: true,
            overlayX: null, overlayY: null, renderer: 'KorI420ToBGRA', level: 2, seed: 1,
        };
    }

    // Rotations in one pass, Yuv2 and blocks that are upside down need even sizes.
    get needsEven() {
        const {layout, degree, bottomUp} = this.settings;
        return degree !== 0 || layout === 'Yuv2' || (layout === 'M420' && bottomUp);
    }

    run(scene) {
        const {library, settings} = this;
        this.scene = this.needsEven ? evenScene(scene) : scene;
        const {width, height} = this.scene;
        this.width = width;
        this.height = height;
        this.frame = film(library, this.scene, settings);

        this.capture = captureCalls(library, this.frame, settings);
        this.capture.forEach((call) => library.run(call));
        this.planes = ['y', 'u', 'v'].map((name) => library.named.get(name));
        // The blend works in place: what was captured is kept for the eye.
        this.captured = i420(library, ['capturedY', 'capturedU', 'capturedV'], width, height, false);
        this.captured.forEach((copy, i) => copy.bytes.set(this.planes[i].bytes.subarray(0, copy.bytes.length)));

        const overlay = this.overlay();
        const {opacity, perSample} = settings;
        const [xPosition, yPosition] = this.overlayPosition(overlay);
        this.blend = blendCall(this.planes, overlay, {xPosition, yPosition, opacity, perSample});
        library.run(this.blend);

        const {renderer, level, seed} = settings;
        const plain = renderCall(library, renderer, this.planes, width, height, 0, 'plain');
        this.render = renderCall(library, renderer, this.planes, width, height, level);
        this.plain = plain.planes[3];
        this.picture = this.render.planes[3];
        this.plain.bytes.fill(0);
        this.picture.bytes.fill(0);
        library.run(plain);
        library.serveSeed(seed);
        library.run(this.render);
    }

    overlay() {
        const size = Math.max(8, Math.round(Math.min(this.width, this.height) * 0.4) & ~1);
        const {opacity} = this.settings;
        if (this.badge?.width !== size || this.badgeOpacity !== opacity) {
            this.badge = prepareOverlay(this.library, drawBadge(size), opacity);
            this.badgeOpacity = opacity;
        }
        return this.badge;
    }

    overlayPosition(overlay = this.overlay()) {
        const {overlayX, overlayY} = this.settings;
        const [mostX, mostY] = [this.width - overlay.width, this.height - overlay.height];
        const clamp = (value, most) => Math.max(0, Math.min(value, most));
        return [
            clamp(overlayX ?? mostX - (this.height >> 4), mostX),
            clamp(overlayY ?? mostY - (this.height >> 4), mostY),
        ];
    }

    // Where the pixel of an upright picture lies in the frame: its column, the row by the order of reading, and the row
    // in memory.
    inFrame(x, y) {
        const {width, height} = this.frame;
        const {degree, bottomUp} = this.settings;
        const [column, reading] = degree === 90 ? [y, height - 1 - x] :
            degree === 180 ? [width - 1 - x, height - 1 - y] :
            degree === 270 ? [width - 1 - y, x] : [x, y];
        return {column, reading, row: bottomUp ? height - 1 - reading : reading};
    }

    // The bytes of the frame that a pixel is made of: [{name, offset, value, here, plane}].
    frameBytes(x, y) {
        const {column, row} = this.inFrame(x, y);
        const {layout} = this.settings;
        const {order} = layouts[layout];
        const {width, height, planes} = this.frame;
        const byte = (name, offset, plane = planes[0], here = true) =>
            ({name, offset, value: plane.bytes[offset], here, plane: plane.name});
        if (layout === 'NV12') {
            const chromaHeight = planes[1].rows;
            const reading = this.settings.bottomUp ? chromaHeight - 1 - (height - 1 - row >> 1) : row >> 1;
            const chroma = reading * planes[1].pitch + 2 * (column >> 1);
            return [byte('Y', row * width + column), byte('U', chroma, planes[1]), byte('V', chroma + 1, planes[1])];
        }
        if (layout === 'M420') {
            const block = (row >> 1) * planes[0].pitch;
            const chroma = block + 2 * width + 2 * (column >> 1);
            const bytes = row >> 1 < planes[0].rows ? [byte('Y', block + (row & 1) * width + column)] : [];
            return bytes.length && column >> 1 < width >> 1 ? [...bytes, byte('U', chroma), byte('V', chroma + 1)] : bytes;
        }
        const pixels = order.includes('Y1') ? 2 : 1;
        const first = row * planes[0].pitch + Math.floor(column / pixels) * order.length;
        const other = `Y${1 - (column & 1)}`;
        return order.map((name, i) => byte(name, first + i, planes[0], pixels === 1 || name !== other));
    }

    pictureBytes(x, y, plane = this.picture) {
        const order = renderers[this.settings.renderer];
        const first = y * plane.pitch + order.length * x;
        return order.map((name, i) => ({name, offset: first + i, value: plane.bytes[first + i], here: true}));
    }

    planeBytes(x, y, planes) {
        return planes.map((plane, i) => {
            const shift = i === 0 ? 0 : 1;
            const offset = (y >> shift) * plane.pitch + (x >> shift);
            return {name: 'YUV'[i], offset, value: plane.bytes[offset], here: true};
        });
    }
}

export function evenScene({width, height, data}) {
    const [w, h] = [width & ~1, height & ~1];
    if (w === width && h === height) {
        return {width, height, data};
    }
    const cut = new Uint8Array(4 * w * h);
    for (let y = 0; y < h; ++y) {
        cut.set(data.subarray(4 * y * width, 4 * (y * width + w)), 4 * y * w);
    }
    return {width: w, height: h, data: cut};
}
