#!/usr/bin/env python3
"""bundle.py PORTABLE.wasm SIMD.wasm BUILD: makes BUILD/index.html, one file with everything in it, from page/, and
BUILD/node/, the same modules for Node. What the page knows of the functions is read from the library's own headers."""
import base64
import gzip
import hashlib
import json
import pathlib
import re
import shutil
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent

# Parameters that differ in name only.
OPTIONS = {"widthSrc": "width", "heightSrc": "height"}


def functions():
    """Name, family, parameters and edges of each function, from the list, the header and the documents."""
    header = re.sub(r"/\*.*?\*/", "", (ROOT / "Kor/Video/Common/KorYuv420.h").read_text(), flags=re.S)
    declared = dict(re.findall(r"KOR_API void (Kor\w+)\(([^;]*)\);", header))
    listed = (ROOT / "Kor/Video/Common/KorYuv420Functions_.inc").read_text()
    rules = edges()
    result = []
    for name, family in re.findall(r"^KOR_FUNCTION\((\w+), \w+, (\w+),", listed, flags=re.M):
        parameters = []
        for text in declared[name].split(","):
            parameter = re.search(r"(\w+)\)?(\[3\])?$", text.strip()).group(1)
            pointer = "*" in text
            parameters.append({"name": parameter, "option": OPTIONS.get(parameter, parameter), "pointer": pointer,
                               "pitch": "itch" in parameter and not pointer})
        result.append({"name": name, "family": family, "parameters": parameters, "edges": rules[name]})
    return result


def edges():
    """What each function does at its edges, from the table of docs/edge-behaviour.md: {name: {column: text}}."""
    rows = [line.strip("| \n").split(" | ") for line in (ROOT / "docs/edge-behaviour.md").read_text().splitlines()
            if line.startswith("| ")]
    titles = rows[0][1:]
    return {name: dict(zip(titles, row[1:])) for row in rows[1:] for name in re.findall(r"(\w+)_C_\(\)", row[0])}


def digests():
    lines = (ROOT / "conformance/digests.txt").read_text().splitlines()
    return [line.split() for line in lines if not line.startswith("#")]


def generated(digests):
    version = re.findall(r"#define KOR_VERSION_\w+ (\d+)", (ROOT / "Kor/Utils/SysDep/KorBaseTypes.h").read_text())
    return (f"export const version = '{'.'.join(version)}';\n"
            f"export const functions = {json.dumps(functions())};\n"
            f"export const digests = {json.dumps(digests)};\n")


def bundle(modules, entry):
    """All modules that the entry imports, each before what uses it, as one text. Names are unique across modules: a
    name that is defined twice is an error when the browser reads the text."""
    done = []
    texts = []

    def add(name):
        if name in done:
            return
        done.append(name)
        imports = re.compile(r"^import \{[^}]*\} from '\./(.*?)';\n", flags=re.M)
        for needed in imports.findall(modules[name]):
            add(needed)
        texts.append(re.sub(r"^export ", "", imports.sub("", modules[name]), flags=re.M))

    add(entry)
    return "'use strict';\n" + "\n".join(texts)


def compressed(data):
    return base64.b64encode(gzip.compress(data, mtime=0)).decode()


def sha256(text):
    return "'sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() + "'"


def page(portable, simd, digests):
    """The page as text, and the modules that it is made of by name."""
    modules = {path.name: path.read_text() for path in (HERE / "page").glob("*.mjs")}
    modules["functions.mjs"] = generated(digests)

    script = bundle(modules, "main.mjs")
    style = (HERE / "page/style.css").read_text()
    policy = ("default-src 'none'; "
              f"script-src {sha256(script)} 'wasm-unsafe-eval'; style-src {sha256(style)}; "
              "worker-src blob:; img-src data: blob:; base-uri 'none'; form-action 'none'")
    parts = {
        "policy": policy,
        "style": style,
        "script": script,
        "worker": bundle(modules, "worker.mjs").replace("</", "<\\/"),
        "portable": compressed(portable.read_bytes()),
        "simd": compressed(simd.read_bytes()),
    }
    text = (HERE / "page/index.html").read_text()
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match.group(1)], text), modules


def main():
    portable, simd, build = (pathlib.Path(argument) for argument in sys.argv[1:4])
    text, modules = page(portable, simd, digests())
    (build / "index.html").write_text(text)

    node = build / "node"
    node.mkdir(exist_ok=True)
    for name, module in modules.items():
        (node / name).write_text(module)
    shutil.copy(portable, node / "portable.wasm")
    shutil.copy(simd, node / "simd.wasm")
    print(f"{build / 'index.html'}: {len(text.encode()):,} bytes")


if __name__ == "__main__":
    main()
