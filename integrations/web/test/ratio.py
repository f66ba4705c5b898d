#!/usr/bin/env python3
"""ratio.py BUILD [PASSES]: compares every function in WebAssembly, in Node, with the native library, at 1280x720, and
prints the table of docs/performance.md. Passes of the two alternate; the best of each counts. Node runs the optimised
code of its engine, which a page that runs for a while has as well."""
import ctypes
import json
import pathlib
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
import bundle  # noqa: E402

BUILD = pathlib.Path(sys.argv[1]).resolve()
PASSES = int(sys.argv[2]) if len(sys.argv) > 2 else 5
WIDTH, HEIGHT = 1280, 720
CAPTURE = (ctypes.c_int32 * 9)(47, 157, 16, -26, -87, 112, 112, -102, -10)
RENDER = (ctypes.c_int32 * 9)(298, 0, 459, 298, -55, -136, 298, 541, 0)


class WebPlane(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), *((name, ctypes.c_uint32) for name in (
        "access", "rowBytes", "rows", "pitch", "spareColumns", "spareRows", "margin", "drifts"))]


def arguments(library, index, function, width):
    """Those of speed.mjs."""
    name = function["name"]
    values = {"width": width, "height": HEIGHT // 2 if name == "KorPlanarUV422To420" else HEIGHT, "alpha": 77,
              "rotationDegree": 90 if name.endswith("Rotation") else 0, "ditherLevel": 2 if name == "KorI420Dither" else 0}
    count = library.KorWebLayOut(index, WIDTH, values["height"], 0, values["rotationDegree"], 0, 0)
    library.KorWebPlanes.restype = ctypes.POINTER(WebPlane)
    planes = iter(library.KorWebPlanes()[:count])
    memory, result = [], []
    for parameter in function["parameters"]:
        if parameter["name"] == "coeffs":
            result.append(CAPTURE if name == "KorBGRAToI420General" else RENDER)
        elif parameter["pointer"]:
            plane = next(planes)
            size = plane.pitch * (plane.rows + plane.spareRows + 1)
            memory.append(ctypes.create_string_buffer(bytes((i * 167 + i // 251) % 256 for i in range(4096)) * (size // 4096 + 1)))
            result.append(memory[-1])
        elif parameter["pitch"]:
            result.append(ctypes.c_ssize_t(plane.pitch))
        else:
            result.append(ctypes.c_ssize_t(values.get(parameter["option"], 0)))
    return result


def best(call, given, rounds=15):
    """Processor time of a call, of which other programs take nothing."""
    def burst(count):
        start = time.thread_time()
        for _ in range(count):
            call(*given)
        return (time.thread_time() - start) / count

    count = max(1, int(0.002 / max(burst(4), 1e-6)))
    return min(burst(count) for _ in range(rounds))


def native(library):
    result = {}
    for index, function in enumerate(bundle.functions()):
        call = library[function["name"]]
        # What a call from Python costs is that of a call that writes nothing.
        empty = best(call, arguments(library, index, function, 0))
        result[function["name"]] = best(call, arguments(library, index, function, WIDTH)) - empty
    return result


def main():
    library = ctypes.CDLL(str(BUILD / "native/libkorweb.so"))
    library.KorYuv420Target.restype = ctypes.c_char_p
    times = {}
    for _ in range(PASSES):
        web = json.loads(subprocess.run(["node", "--no-liftoff", HERE / "speed.mjs", BUILD / "node"], check=True, capture_output=True).stdout)
        here = native(library)
        for name in web:
            found = [*web[name], here[name]]
            times[name] = [min(pair) for pair in zip(times.get(name, found), found)]
    print(f"Native: target {library.KorYuv420Target().decode()}; best of {PASSES} passes.\n")
    print("| function | portable, ms | `wasm`, ms | native, ms | `wasm` / portable | `wasm` / native |\n|---|--:|--:|--:|--:|--:|")
    for name, (portable, simd, here) in times.items():
        print(f"| `{name}` | {portable * 1e3:.3f} | {simd * 1e3:.3f} | {here * 1e3:.4f} | {simd / portable:.2f} | {simd / here:.1f} |")
    slower = [name for name, (portable, simd, _) in times.items() if simd > 1.05 * portable]
    print(f"\nMore than 5% slower in SIMD than in plain WebAssembly: {', '.join(slower) or 'none'}.")


if __name__ == "__main__":
    main()
