// A call of each function on planes of its own, filled with noise, for measuring.
import {functionNamed} from './library.mjs';

// The matrices of BT.709 in units of 1/256, for the functions that take one.
const matrices = {
    KorBGRAToI420General: [47, 157, 16, -26, -87, 112, 112, -102, -10],
    KorI420ToBGRAGeneral: [298, 0, 459, 298, -55, -136, 298, 541, 0],
};

export function matrixFor(library, name) {
    const matrix = library.plane('coeffs', 36, 1);
    new Int32Array(library.exports.memory.buffer, matrix.address, 9).set(matrices[name] ?? matrices.KorBGRAToI420General);
    return matrix;
}

export function fillWithNoise(bytes, seed) {
    let state = seed;
    for (let i = 0; i < bytes.length; ++i) {
        state = Math.imul(state, 1664525) + 1013904223 | 0;
        bytes[i] = state >>> 24;
    }
}

// The usual choice of each option: upright, not flipped, dithered where it is all that a function does.
export function usualOptions(name, width, height) {
    const options = {width, height, flip: 0, rotationDegree: 0, ditherLevel: 0, alpha: 77, xPosition: 0, yPosition: 0};
    if (name.endsWith('Rotation')) {
        options.rotationDegree = 90;
    }
    if (name === 'KorI420Dither') {
        options.ditherLevel = 2;
    }
    if (name === 'KorPlanarUV422To420') {
        options.height = height >> 1;
    }
    return options;
}

export function speedCall(library, name, width, height) {
    const options = usualOptions(name, width, height);
    const planes = library.layOut(name, options).map((use, i) => {
        const bytes = use.pitch * (use.rows + use.spareRows) + use.margin + use.pitch;
        // A plane a place in the list, shared by all functions.
        const plane = library.plane(`speed${i}`, use.rowBytes, use.rows, use.pitch, bytes);
        fillWithNoise(plane.bytes, i + 1);
        return plane;
    });
    if (functionNamed(name).parameters.some((parameter) => parameter.name === 'coeffs')) {
        options.coeffs = matrixFor(library, name);
    }
    return {name, planes, options};
}
