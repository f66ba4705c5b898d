#!/usr/bin/env python3
"""Mutation testing of the library's source: can the tests fail?

Makes one small change at a time, compiles the changed library as a shared object and runs the test programs with it,
the quickest first, until one of them fails. A change that no test notices has survived: it needs a new test, or a line
in equivalent.txt that says why no result can depend on it.

With --target, it changes the files of the kernels, or the one that --source names, and the dispatched functions are
judged under that target; results are kept in a file of their own for each file and target.

usage: mutate.py --build DIR [--sanitized DIR] [--results FILE] [--sample N] [--only REGEX]
                 [--kind KIND] [--jobs N] [--target NAME [--source FILE]]
       mutate.py --planted --build DIR
       mutate.py --list | --check
"""
import argparse
import collections
import concurrent.futures
import hashlib
import json
import math
import os
import pathlib
import random
import re
import resource
import shlex
import subprocess
import sys
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
SOURCE = TOP / "Kor/Video/Common/C/KorYuv420_C_.cpp"
VECTOR = "Kor/Video/Common/Vector"
EQUIVALENT = HERE / "equivalent.txt"
PLANTED = HERE / "planted.txt"

# A line of the source before and after, and its definition: PLACE, or PLACE[2] for the second line of a definition that
# reads the same and changes in the same way.
Mutant = collections.namedtuple("Mutant", "line place before after kind nth")


# ---- Reading the source ---------------------------------------------------------------------------------------------

def code_of(line):
    """The line without its comment; the source has no comments inside lines and no // inside strings."""
    at = line.find("//")
    return line if at < 0 else line[:at]


def is_code(line):
    text = line.strip()
    return text and not text.startswith(("//", "#", "static_assert", "namespace", "template", "using"))


def definitions(lines):
    """For each line, the name of its top-level definition."""
    names, name = [], ""
    for line in lines:
        if line and (line[0].isalpha() or line.startswith("[[")) and is_code(line):
            found = (re.match(r"(?:struct|class) (?:alignas\(\w+\) )?(\w+)", line) or re.match(r"constexpr \w+ (\w+) =", line)
                     or re.search(r"(\w+)(?:\(| KOR_PARAMETERS_)", line))
            name = found.group(1) if found else name
        names.append(name)
    return names


# ---- Changes to a line ----------------------------------------------------------------------------------------------

BINARY = {
    "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"], "%": ["/"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"],
    "<": ["<=", ">="], ">": [">=", "<="], "<=": ["<", ">"], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+=": ["-=", "="], "-=": ["+=", "="],
}


def closing(text, at):
    """The index of the parenthesis that closes the one at `at`, or -1."""
    depth = 0
    for i in range(at, len(text)):
        depth += (text[i] in "([{") - (text[i] in ")]}")
        if depth == 0:
            return i
    return -1


def top_level_split(text, separator):
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text):
        depth += (c in "([{") - (c in ")]}")
        if c == separator and depth == 0:
            parts.append(text[start:i])
            start = i + 1
    return parts + [text[start:]]


def constants(code):
    for m in re.finditer(r"(?<![\w.])(0x[0-9a-fA-F]+|\d+)(u?)(?![\w.])", code):
        hexadecimal = m.group(1).startswith("0x")
        value = int(m.group(1), 0)
        for other in (value + 1, value - 1):
            if other >= 0:
                text = hex(other) if hexadecimal else str(other)
                yield "constant", code[:m.start()] + text + m.group(2) + code[m.end():]
    for word, other in (("true", "false"), ("false", "true")):
        for m in re.finditer(rf"\b{word}\b", code):
            yield "constant", code[:m.start()] + other + code[m.end():]


def operators(code):
    kinds = {"<<": "shift", ">>": "shift", "&": "mask", "|": "mask", "^": "mask", "&&": "condition", "||": "condition"}
    # The formatter puts spaces around binary operators and nowhere else.
    for m in re.finditer(r"(?<= )(\+=|-=|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%<>&|^])(?= )", code):
        kind = kinds.get(m.group(1)) or ("comparison" if m.group(1)[0] in "<>=!" else "arithmetic")
        for other in BINARY[m.group(1)]:
            yield kind, code[:m.start()] + other + code[m.end():]
    for m in re.finditer(r"\+\+(?=\w)", code):
        yield "arithmetic", code[:m.start()] + "--" + code[m.end():]
    for m in re.finditer(r"(?<=[ (\[{,])[-~!](?=[\w(])", code):
        yield "sign", code[:m.start()] + code[m.end():]


def bounds(code):
    for m in re.finditer(r"\bMin\(", code):
        end = closing(code, m.end() - 1)
        parts = top_level_split(code[m.end():end], ",") if end > 0 else []
        if len(parts) == 2 and "KorSizeT a" not in parts[0]:
            for part in parts:
                yield "bound", code[:m.start()] + part.strip() + code[end + 1:]


def choices(code):
    for m in re.finditer(r" \? ", code):
        rest = code[m.end():]
        parts = top_level_split(rest, ":")
        end = re.search(r"[,;)]*\s*$", rest).start()
        if len(parts) == 2 and "::" not in rest:
            yield "condition", code[:m.end()] + parts[1].strip()[:end - len(parts[0]) - 2 or None].rstrip(",;) ") \
                + " : " + parts[0].strip() + rest[end:]
    m = re.match(r"(\s*(?:\} else )?if) \(", code)
    if m:
        start = m.end() - 1
        end = closing(code, start)
        if end > 0:
            for value in ("true", "false"):
                yield "condition", code[:start] + f"({value})" + code[end + 1:]


def deletions(code):
    text = code.strip()
    indent = code[:len(code) - len(code.lstrip())]
    if not indent or not text.endswith(";"):
        return
    statement = re.match(r"[\w.\[\]*>()+ -]+? [-+]?= ", text) and not re.match(r"(const|constexpr|return)\b", text)
    declaration = re.match(r"(const |constexpr )?[\w:<>]+[&*]* (const )?\w+(\[.*\])*( = .*| = \{.*)?;$", text) \
        and not text.startswith(("return", "break"))
    call = re.match(r"\w+(<[\w, ]+>)?\(.*\);$", text)
    if (statement and not declaration) or call or text in ("return;", "break;"):
        yield "deletion", indent + ";"


def casts(code):
    """Pitches, offsets and numbers of rows that lose their upper bits: the faults of code that was written for 32 bits, or
    that keeps an offset in a lane of 16."""
    if not code.startswith(" ") or "static_assert" in code:
        return
    # A pitch that is passed on; a declaration has a type before it.
    for m in re.finditer(r"(?<=[({,*] )(?:\w+\.)?(pitch\w*|\w+Pitch)(?=[,})])|(?<=\{|\()(pitch\w*|\w+Pitch)(?=[,})])", code):
        if not re.search(r"Kor\w+ $", code[:m.start()]):
            for type_ in ("KorUint16", "KorUint"):
                yield "narrowing", code[:m.start()] + f"static_cast<{type_}>({m.group(0)})" + code[m.end():]
    # What is multiplied by a pitch.
    for m in re.finditer(r"\w+ \* pitch\b|static_cast<KorDistanceT>\(\w+\) \* (?:dst\.)?(?:pitch|column|row)\b", code):
        for type_ in ("KorInt16", "KorInt"):
            yield "narrowing", code[:m.start()] + f"static_cast<{type_}>({m.group(0)})" + code[m.end():]
    # Offsets that are added to a pointer, and numbers of rows.
    for m in re.finditer(r"(?<=[+] )(\d+ \* )?(run\.)?(start|left|drift|entry|column)\b( / 2)?", code):
        yield "narrowing", code[:m.start()] + f"static_cast<KorUint16>({m.group(0)})" + code[m.end():]
    for m in re.finditer(r"\b(?:Row|At)\(", code):
        end = closing(code, m.end() - 1)
        arguments = top_level_split(code[m.end():end], ",") if end > 0 else []
        if arguments and "KorSizeT" not in arguments[0]:
            for i, argument in enumerate(arguments):
                # A row of a tile has a small number.
                if re.search(r"[a-z]", argument) and argument.strip() not in ("r", "k"):
                    changed = [*arguments[:i], f" static_cast<KorUint16>({argument.strip()})", *arguments[i + 1:]]
                    yield "narrowing", code[:m.end()] + ",".join(changed).strip() + code[end:]


# Loops over a few things, whatever the picture.
SHORT_LOOPS = re.compile(r"\b(h|half|bytes|kRun|8)$")


def limits(code):
    """Loops that end too early beyond a limit of rows or columns, as in vector code tested with small pictures only."""
    m = re.match(r"(\s*for \(.*?; )(?:(\d) \* )?(\w+) < ((?:\w+)(?: / 2)?)(; .*)$", code)
    if not m or SHORT_LOOPS.search(m.group(4)) or m.group(4) in ("n", "w") and m.group(3) in ("k", "r"):
        return
    head, scale, name, bound, rest = m.groups()
    scaled = f"{scale} * {name}" if scale else name
    # The runs of a row have at most 128 samples, or 64 pairs.
    for limit in (50,) if bound in ("n", "whole", "end") else (100, 1100):
        yield "limit", f"{head}{scaled} < {bound} && {name} < {limit}{rest}"


def mutants_of(lines):
    places = definitions(lines)
    made = []
    alike = collections.Counter()
    asserting = False
    for number, line in enumerate(lines, 1):
        # A static assertion is itself a test, up to its last line.
        asserting = line.strip().startswith("static_assert") or asserting
        if asserting or not is_code(line):
            asserting = asserting and not code_of(line).rstrip().endswith(";")
            continue
        code = code_of(line)
        seen = {code}
        for make in (constants, operators, bounds, choices, deletions, casts, limits):
            for kind, after in make(code):
                if after not in seen:
                    seen.add(after)
                    key = (places[number - 1], code.strip(), after.strip())
                    alike[key] += 1
                    made.append(Mutant(number, key[0], key[1], after.rstrip(), kind, alike[key]))
    return made


# ---- What is known to be equivalent ---------------------------------------------------------------------------------

class Equivalents:
    """Lines of the form `PLACE: BEFORE ==> AFTER`, each with its reason in the comment above. AFTER may be *, and PLACE
    has the number of the line where several read the same."""

    def __init__(self, path):
        self.known = {}
        self.used = set()
        for line in path.read_text().splitlines() if path.exists() else []:
            if line.strip() and not line.startswith("#"):
                place, rest = line.split(": ", 1)
                before, after = rest.split(" ==> ", 1)
                self.known[(place.strip(), before.strip(), after.strip())] = line

    def explains(self, mutant):
        place = mutant.place if mutant.nth == 1 else f"{mutant.place}[{mutant.nth}]"
        for after in (mutant.after.strip(), "*"):
            key = (place, mutant.before, after)
            if key in self.known:
                self.used.add(key)
                return True
        return False

    def stale(self):
        return [line for key, line in self.known.items() if key not in self.used]


# ---- Faults that are planted by hand --------------------------------------------------------------------------------

Planted = collections.namedtuple("Planted", "function line text after")


def read_planted(path, lines):
    """Lines of the form `FUNCTION: PLACE: BEFORE ==> AFTER`; the function whose conformance run must fail."""
    places = definitions(lines)
    found, stale = [], []
    for text in path.read_text().splitlines():
        if text.strip() and not text.startswith("#"):
            function, place, rest = text.split(": ", 2)
            before, after = rest.split(" ==> ", 1)
            at = [i for i, line in enumerate(lines) if places[i] == place and code_of(line).strip() == before.strip()]
            if at:
                found.append(Planted(function, at[0], text, after))
            else:
                stale.append(text)
    return found, stale


def try_planted(workshop, planted, build):
    """Each fault alone: the conformance run of its function must find a difference, and none in the source as it is."""
    where = workshop.directory / "planted"
    program = [build / "tests/conformance/KorConformanceTest", "--seed", "420", "--function"]
    environment = dict(os.environ, LD_LIBRARY_PATH=str(where))

    def status(lines, function):
        done = workshop.compile("\n".join(lines) + "\n", FAST, where)
        if done.returncode != 0:
            sys.exit(f"mutate: does not compile:\n{done.stderr}")
        return subprocess.run([*program, function], env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)

    missed = 0
    for fault in planted:
        lines = list(workshop.lines)
        lines[fault.line] = fault.after
        done = status(lines, fault.function)
        title = re.search(r"DIFFERS.*\n +(.*)", done.stdout)
        caught = done.returncode == 1 and title
        missed += not caught
        print(f"{'caught' if caught else 'MISSED'} {fault.text}" + (f"\n       {title.group(1)}" if caught else ""), flush=True)
    for function in sorted({fault.function for fault in planted}):
        if status(workshop.lines, function).returncode != 0:
            sys.exit(f"mutate: {function} of the source as it is differs from the reference")
    print(f"{len(planted)} faults planted, {len(planted) - missed} caught")
    return 1 if missed else 0


# ---- Running the tests ----------------------------------------------------------------------------------------------

class Stage:
    def __init__(self, name, build, flags, command, target="portable"):
        self.target = target  # of programs that call the dispatched functions
        self.name = name
        self.build = build
        self.flags = flags
        self.command = command
        self.cpu_seconds = 300
        self.report = ""

    def run(self, library):
        environment = dict(os.environ, LD_LIBRARY_PATH=str(library.parent), UBSAN_OPTIONS="print_stacktrace=0",
                           ASAN_OPTIONS="detect_leaks=0", KOR_TARGET=self.target)
        # The limit is processor time, so that no mutant looks hung on a busy machine.
        done = subprocess.run(["prlimit", f"--cpu={self.cpu_seconds}", "--core=0", *self.command], cwd=self.build,
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, errors="replace")
        self.report = done.stdout
        return done.returncode == 0


QUICK = ["g++", "-O0"]
FAST = ["g++", "-O1"]
SANITIZED = ["g++", "-O1", "-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
# Clang compiles some loops differently.
CLANG = ["clang++", "-O1"]


FAMILIES = ["RgbToYuv", "YuvToRgb", "PackedYuv", "PlaneGeometry", "Compositing"]


def functions():
    """The names of all functions, family by family."""
    listed = re.findall(r"^KOR_FUNCTION\((\w+), \w+, (\w+),", (TOP / "Kor/Video/Common/KorYuv420Functions_.inc").read_text(), re.M)
    return {family: [name for name, of in listed if of == family] for family in FAMILIES}


def fuzzers(*arguments, families=FAMILIES):
    calls = [f"fuzz/KorFuzz{name} " + " ".join(arguments).format(corpus=f"{TOP}/fuzz/corpus/{name}.txt")
             for name in families]
    return ["sh", "-c", " && ".join(calls)]


LONG = ["conformance run", "exhaustive tests"]
# Of the stages of a target, the quick ones that try the units of a changed header one by one.
PER_UNIT = 5


def stages_of_target(build, target, families):
    """For the kernels of a target that these families use."""
    # Function by function, to end with the first that differs.
    kit = f"tests/conformance/KorConformanceDispatched --seed 420 --target {target} --function"
    names = " ".join(name for family in families for name in functions()[family])

    def each(options):
        return ["sh", "-c", f"for name in {names}; do {kit} $name {options} || exit 1; done"]

    return [
        Stage("stored inputs of the fuzzers", build, FAST, fuzzers("--stored", "{corpus}", families=families), target),
        Stage("random inputs of the fuzzers", build, FAST, fuzzers("--random", "5000", families=families), target),
        Stage("alignments", build, FAST, ["env", "KOR_STREAMING=always", "tests/vector/KorAlignments", target], ""),
        Stage("edges of captures", build, FAST, ["tests/vector/KorCaptureEdges", target], ""),
        Stage("short conformance run", build, FAST, each("--quick"), ""),
        Stage("noise of a product", build, FAST,
              ["env", "KOR_STREAMING=always", "tests/conformance/KorDispatchedNoiseTest", target], ""),
        Stage("short conformance run, always streaming", build, FAST,
              ["env", "KOR_STREAMING=always", *each("--quick")], ""),
        Stage("conformance run", build, FAST, each(""), ""),
        Stage("exhaustive tests", build, FAST, ["tests/vector/KorExhaustive", target], ""),
    ]


def stages(build, sanitized):
    """The quickest first; a change that passes all of them has survived."""
    brief = ["--gtest_brief=1", "--gtest_fail_fast"]

    # Function by function, to end with the first that differs.
    kit = "tests/conformance/KorConformanceTest"
    each = f"names=$({kit} --list) && for name in $(echo \"$names\" | cut -d' ' -f1); do {kit} --seed 420 --function $name || exit 1; done"
    unit = ["tests/KorUnitTests", "--gtest_filter=-*Kit*:*MatricesOf*:SharedMemory*", *brief]
    listed = [
        Stage("stored inputs of the fuzzers", build, QUICK, fuzzers("--stored", "{corpus}")),
        Stage("unit tests", build, QUICK, unit),
        Stage("property tests", build, QUICK, ["tests/KorPropertyTests", *brief]),
        Stage("random inputs of the fuzzers", build, QUICK, fuzzers("--random", "1000")),
        Stage("unit tests of matrices", build, FAST,
              ["tests/KorUnitTests", "--gtest_filter=*MatricesOf*:SharedMemory*", *brief]),
        Stage("stored inputs, Clang", build, CLANG, fuzzers("--stored", "{corpus}")),
        Stage("unit tests, Clang", build, CLANG, unit),
        Stage("short conformance run, Clang", build, CLANG, [kit, "--quick"]),
        Stage("short conformance run", build, FAST, [kit, "--quick"]),
        Stage("conformance run", build, FAST, ["sh", "-c", each]),
        Stage("exhaustive tests", build, FAST, ["tests/KorExhaustiveTests", *brief]),
    ]
    if sanitized:
        listed += [
            Stage("stored inputs, sanitized", sanitized, SANITIZED, fuzzers("--stored", "{corpus}")),
            Stage("unit tests, sanitized", sanitized, SANITIZED, unit),
            Stage("conformance run, sanitized", sanitized, SANITIZED,
                  [kit, "--quick"]),
        ]
    return listed


def cpu_time_of_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


class Workshop:
    """Compiles and tests mutants, each worker in a directory of its own."""

    def __init__(self, lines, listed, soname, directory):
        self.lines = lines
        self.stages = listed
        self.soname = soname
        self.directory = directory

    def compile(self, text, flags, where):
        where.mkdir(parents=True, exist_ok=True)
        source = where / "library.cpp"
        source.write_text(text)
        return subprocess.run(
            [*flags, "-std=c++17", "-w", "-fPIC", "-shared", "-fvisibility=hidden", "-DKOR_SHARED",
             "-DKOR_BUILDING", f"-I{TOP}", source, "-o", where / self.soname, f"-Wl,-soname,{self.soname}"],
            capture_output=True, text=True)

    def judge(self, text, kind):
        """The name of the stage that the text fails, or "" if it passes all."""
        where = self.directory / threading.current_thread().name
        compiled = None
        # Only the kit has pictures that are large enough for some kinds.
        large = kind in ("narrowing", "limit")
        for stage in sorted(self.stages, key=lambda s: large and s.flags != FAST or large and "conformance" not in s.name):
            if stage.flags != compiled:
                done = self.compile(text, stage.flags, where)
                compiled = stage.flags
                if done.returncode != 0:
                    return "static assertion" if re.search("static[ _]assert", done.stderr) else "does not compile"
            if not stage.run(where / self.soname):
                return stage.name
        return ""

    def mutated(self, mutant):
        lines = list(self.lines)
        lines[mutant.line - 1] = mutant.after
        return "\n".join(lines) + "\n"

    def calibrate(self):
        """The unchanged source must pass; the time it takes sets the limit after which a mutant counts as hung."""
        text = "\n".join(self.lines) + "\n"
        where = self.directory / "calibration"
        for stage in self.stages:
            done = self.compile(text, stage.flags, where)
            if done.returncode != 0:
                sys.exit(f"mutate: the source does not compile:\n{done.stderr}")
            start = cpu_time_of_children()
            if not stage.run(where / self.soname):
                sys.exit(f"mutate: the unchanged source fails: {stage.name}: {' '.join(map(str, stage.command))}")
            took = cpu_time_of_children() - start
            stage.cpu_seconds = math.ceil(1 + 2 * took)
            print(f"{stage.name}: {took:.1f} s", flush=True)
            # A library without functions must fail, or the programs load another one.
            self.compile("", stage.flags, where)
            if stage.run(where / self.soname):
                sys.exit(f"mutate: {stage.name} does not load the given library")


class VectorWorkshop(Workshop):
    """For the kernels of a target: the dispatched library as it was built, but for the units that the change is in. A unit
    that the compiler makes the same code of as before needs no test: most of these changes are to what other targets
    compile."""

    def __init__(self, lines, soname, directory, build, target, brief):
        self.target = target
        self.build = build
        self.brief = brief
        self.limits = {}  # of processor time, once a stage has been calibrated
        self.cases = collections.defaultdict(list)  # of the kit that found other changes, the latest first, by family
        self.units = {}  # the compiler's command, up to the output
        self.objects = []  # of the rest of the library
        self.portable = build / "Kor/libKorYuv420C.so"
        for entry in json.loads((build / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            to = build / words[words.index("-o") + 1]
            unit = pathlib.Path(entry["file"])
            if not re.search(r"/KorYuv420(?!C\.dir)\w*\.dir/", str(to)):
                continue
            if f"KorYuv420{target.title()}.dir" in str(to) and (unit == SOURCE or self.includes(unit, SOURCE)):
                # Without a launcher before the compiler, and compiled faster.
                compiler = next(i for i, word in enumerate(words) if word.endswith(("c++", "g++", "clang++")))
                words = words[compiler:words.index("-o")]
                self.units[unit] = [word for word in words if not word.startswith(("-O3", "-fstack-usage", "-W"))] + ["-O1", "-w"]
            else:
                self.objects.append(to)
        if not self.units:
            sys.exit(f"mutate: {build} was not built with the target {target}")
        super().__init__(lines, self.stages_for(self.units), soname, directory)

    @staticmethod
    def includes(unit, header):
        names = re.findall(r'#include "(Kor/Video/Common/Vector/\w+\.h)"', unit.read_text())
        return any(TOP / name == header or VectorWorkshop.includes(TOP / name, header) for name in names)

    def compiled_lines(self):
        """The lines of the changed file that this target compiles: whole branches of #if are in or out."""
        branch, branches = 0, []
        for line in self.lines:
            branch += line.startswith("#")
            branches.append(branch)
        compiled = set()
        for unit, words in self.units.items():
            text = subprocess.run([*words, "-E", unit], capture_output=True, text=True, check=True).stdout
            number, inside = 0, False
            for line in text.splitlines():
                marker = re.match(r'# (\d+) "(.*)"', line)
                if marker:
                    number, inside = int(marker.group(1)), marker.group(2).endswith(f"{VECTOR}/{SOURCE.name}")
                    continue
                if inside and line.strip():
                    compiled.add(branches[number - 1])
                number += 1
        return {number for number, branch in enumerate(branches, 1) if branch in compiled}

    def stages_for(self, units):
        listed = stages_of_target(self.build, self.target, [unit.stem for unit in units])
        for stage in listed:
            stage.cpu_seconds = self.limits.get(stage.name, stage.cpu_seconds)
        return [stage for stage in listed if not self.brief or stage.name not in LONG]

    def finds(self, stage, library):
        """Whether a stage fails; a case of the kit that does so may find the next change as well."""
        if stage.run(library):
            return False
        again = re.search(r"again: (.* --function (\w+)_C_ .*)", stage.report)
        if again:
            command = shlex.split(again.group(1))
            family = next(family for family, names in functions().items() if again.group(2) in names)
            self.cases[family] = [command, *(known for known in self.cases[family] if known != command)][:20]
        return True

    def known_cases(self, family):
        listed = [Stage("short conformance run" if "--quick" in command else "conformance run", self.build, FAST, command, "")
                  for command in self.cases[family]]
        for stage in listed:
            stage.cpu_seconds = 2
        return listed

    def calibrate(self):
        # Most of a unit's lines are Highway's.
        target_header = (TOP / VECTOR / "Target.h").read_text()
        prelude = self.directory / "highway.h"
        prelude.parent.mkdir(parents=True, exist_ok=True)
        prelude.write_text("\n".join(re.findall(r"^#define [HT]\w+(?: \d)?\b|^#include <.*", target_header, re.M)) + "\n")
        words = next(iter(self.units.values()))
        subprocess.run([*words, "-x", "c++-header", prelude, "-o", f"{prelude}.gch"], check=True)
        for words in self.units.values():
            words += ["-include", prelude]

        unchanged = "\n".join(self.lines) + "\n"
        self.before = {unit: self.compile_unit(unit, unchanged, self.directory / "before").read_bytes() for unit in self.units}
        if any(self.compile_unit(unit, unchanged, self.directory / "again").read_bytes() != self.before[unit] for unit in self.units):
            sys.exit("mutate: the compiler makes different code of the same source")
        # Long tests take long to calibrate: once for each version of the source and of the programs is enough.
        programs = [program for program in sorted(self.build.glob("tests/*/Kor*")) if program.is_file()]
        version = hashlib.sha256(b"".join(program.read_bytes() for program in programs) + unchanged.encode()).hexdigest()
        kept = self.directory / f"limits-{'brief' if self.brief else 'full'}.json"
        known = json.loads(kept.read_text()) if kept.exists() else {}
        if known.get("version") == version:
            self.limits = known["limits"]
            return
        super().calibrate()
        self.limits = {stage.name: stage.cpu_seconds for stage in self.stages}
        kept.write_text(json.dumps({"version": version, "limits": self.limits}))

    def compile_unit(self, unit, text, where):
        """The object, or what the compiler says."""
        # The changed file hides the one in the tree.
        changed = where / VECTOR / SOURCE.name
        changed.parent.mkdir(parents=True, exist_ok=True)
        changed.write_text(text)
        to = where / f"{unit.name}.o"
        words = self.units[unit]
        done = subprocess.run([words[0], f"-I{where}", *words[1:], "-c", changed if unit == SOURCE else unit, "-o", to],
                              capture_output=True, text=True)
        return to if done.returncode == 0 else done

    def link(self, objects, where):
        return subprocess.run(["g++", "-shared", *objects, "-o", where / self.soname, f"-Wl,-soname,{self.soname}",
                               self.portable, f"-Wl,-rpath,{self.portable.parent}"], capture_output=True, text=True)

    def compile(self, text, flags, where):
        made = [self.compile_unit(unit, text, where) for unit in self.units] if text else []
        failed = [done for done in made if not isinstance(done, pathlib.Path)]
        where.mkdir(parents=True, exist_ok=True)
        return failed[0] if failed else self.link(self.objects + made if text else [], where)

    def judge(self, text, kind):
        where = self.directory / threading.current_thread().name
        changed = {}
        for unit in self.units:
            made = self.compile_unit(unit, text, where)
            if not isinstance(made, pathlib.Path):
                return "static assertion" if re.search("static[ _]assert", made.stderr) else "does not compile"
            if made.read_bytes() == self.before[unit]:
                continue
            changed[unit] = made
            others = [self.directory / "before" / f"{other.name}.o" for other in self.units if other not in changed]
            self.link(self.objects + others + list(changed.values()), where).check_returncode()
            # A header's unit by unit: most changes need only one.
            for stage in self.known_cases(unit.stem) + self.stages_for([unit])[:PER_UNIT]:
                if self.finds(stage, where / self.soname):
                    return stage.name
        if not changed:
            return "same code"
        for stage in self.stages_for(changed)[PER_UNIT:]:
            if self.finds(stage, where / self.soname):
                return stage.name
        return ""


def soname_of(build):
    library = "libKorYuv420" if VECTOR in str(SOURCE) else "libKorYuv420C"
    name = next(build.glob(f"Kor/{library}.so.*.*")).resolve().name
    return ".".join(name.split(".")[:4])


def describe(mutant):
    return f"{SOURCE.name}:{mutant.line}: {mutant.place}: {mutant.before} ==> {mutant.after.strip()}"


def read_results(path, lines):
    """The mutants that an earlier run over the same source killed; survivors are tried again, because there may be new
    tests. A file about a different source is started anew."""
    if not path:
        return {}
    path.parent.mkdir(parents=True, exist_ok=True)
    header = "source\t" + hashlib.sha256("\n".join(lines).encode()).hexdigest()
    found = path.read_text().splitlines() if path.exists() else []
    if not found or found[0] != header:
        path.write_text(header + "\n")
        return {}
    verdicts = (line.split("\t", 1) for line in found[1:])
    return {text: verdict for verdict, text in verdicts if verdict != "survived"}


def check():
    """Every line of the lists of equivalents, of the portable source and of the kernels, and of planted.txt must fit."""
    stale = read_planted(PLANTED, SOURCE.read_text().splitlines())[1]
    for path in [EQUIVALENT, *sorted(HERE.glob("equivalent-*.txt"))]:
        stem = path.stem.partition("-")[2]
        source = next((TOP / VECTOR).glob(f"{stem}.*")) if stem else SOURCE
        equivalents = Equivalents(path)
        for mutant in mutants_of(source.read_text().splitlines()):
            equivalents.explains(mutant)
        stale += equivalents.stale()
    for line in stale:
        print("fits the source no more:", line)
    return 1 if stale else 0


def try_all_kernels(sample):
    """One file after the other; of a sample, each has its share."""
    counts = {path.name: len(mutants_of(path.read_text().splitlines()))
              for path in sorted((TOP / VECTOR).iterdir()) if path.suffix in (".h", ".cpp")}
    survived = 0
    for name, count in counts.items():
        print(name, flush=True)
        share = ["--sample", str(round(sample * count / sum(counts.values())))] if sample else []
        survived |= subprocess.run([sys.executable, __file__, *sys.argv[1:], "--source", name, *share]).returncode
    return survived


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, help="build directory with the test programs, shared library")
    parser.add_argument("--sanitized", type=pathlib.Path, help="the same with AddressSanitizer and UBSan")
    parser.add_argument("--results", type=pathlib.Path, help="results, one line per mutant; read again to resume")
    parser.add_argument("--sample", type=int, help="try a random sample of this many mutants")
    parser.add_argument("--only", help="try the mutants whose description matches this regular expression")
    parser.add_argument("--kind", action="append", help="take the mutants of this kind; may be repeated")
    parser.add_argument("--list", action="store_true", help="print the mutants and do nothing")
    parser.add_argument("--check", action="store_true", help="only check that the lists of this directory still match the sources")
    parser.add_argument("--planted", action="store_true", help="plant the faults of planted.txt one by one")
    parser.add_argument("--brief", action="store_true", help="leave out the long tests of a kernel; the next run has them")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--source", help="of the kernels, change this file only, for example RgbToYuv.cpp")
    parser.add_argument("--target", help="change the kernels, which this target judges, for example avx2")
    options = parser.parse_args()
    if options.source and not options.target:
        parser.error("--source needs --target, for example --target avx2")
    if options.check:
        return check()
    if options.target and not options.source:
        return try_all_kernels(options.sample)
    if options.source:
        global SOURCE, EQUIVALENT
        SOURCE = TOP / VECTOR / pathlib.Path(options.source).name
        EQUIVALENT = HERE / f"equivalent-{SOURCE.stem}.txt"
        if not SOURCE.exists():
            parser.error(f"--source: there is no {VECTOR}/{SOURCE.name}")
        if options.results:
            options.results = options.results.with_name(f"results-{SOURCE.stem}-{options.target}.txt")

    options.build = options.build and options.build.resolve()
    options.sanitized = options.sanitized and options.sanitized.resolve()
    lines = SOURCE.read_text().splitlines()
    made = mutants_of(lines)
    if options.only:
        made = [m for m in made if re.search(options.only, describe(m))]
    if options.kind:
        made = [m for m in made if m.kind in options.kind]
    if options.sample and options.sample < len(made):
        made = sorted(random.Random(420).sample(made, options.sample))
    if options.list:
        for mutant in made:
            print(describe(mutant))
        print(len(made), "mutants")
        return 0

    equivalents = Equivalents(EQUIVALENT)
    explained = [m for m in made if equivalents.explains(m)]
    if options.planted:
        planted, stale = read_planted(PLANTED, lines)
        planted = [fault for fault in planted if re.search(options.only or "", fault.text)]
        workshop = Workshop(lines, [], soname_of(options.build), options.build / "mutants")
        for line in stale:
            print("fits the source no more:", line)
        return try_planted(workshop, planted, options.build) or bool(stale)
    results = read_results(options.results, lines)
    if options.source:
        workshop = VectorWorkshop(lines, soname_of(options.build), options.build / "mutants" / f"{SOURCE.stem}-{options.target}",
                                  options.build, options.target, options.brief)
    else:
        workshop = Workshop(lines, stages(options.build, options.sanitized), soname_of(options.build), options.build / "mutants")
    if options.source:
        compiled = workshop.compiled_lines()
        results.update({describe(m): "same code" for m in made if m.line not in compiled})
    pending = [m for m in made if m not in set(explained) and describe(m) not in results]
    started = time.monotonic()
    if pending:
        workshop.calibrate()
    print(f"{len(made)} mutants, {len(explained)} explained as equivalent, {len(pending)} to try", flush=True)
    log = open(options.results, "a", buffering=1) if options.results else None
    with concurrent.futures.ThreadPoolExecutor(options.jobs, "worker") as workers:
        futures = {workers.submit(workshop.judge, workshop.mutated(m), m.kind): m for m in pending}
        for count, future in enumerate(concurrent.futures.as_completed(futures), 1):
            mutant = futures[future]
            verdict = future.result() or "survived"
            results[describe(mutant)] = verdict
            if log:
                log.write(f"{verdict}\t{describe(mutant)}\n")
            if verdict == "survived":
                print("survived", describe(mutant), flush=True)
            if count % 100 == 0:
                print(f"{count} of {len(pending)}, {time.monotonic() - started:.0f} s", flush=True)

    tried = [m for m in made if m not in set(explained)]
    verdicts = collections.Counter(results[describe(m)] for m in tried)
    rejected = verdicts.pop("does not compile", 0)
    same = verdicts.pop("same code", 0)
    survivors = [m for m in tried if results[describe(m)] == "survived"]
    verdicts.pop("survived", 0)
    print(f"\n{len(made)} mutants made in {time.monotonic() - started:.0f} s: {rejected} do not compile, "
          f"{same} compile to the same code, "
          f"{sum(verdicts.values())} killed, {len(explained)} explained as equivalent, {len(survivors)} survived")
    for name, count in verdicts.most_common():
        print(f"  killed by {name}: {count}")
    for mutant in survivors:
        print("survived", describe(mutant))
    if not options.sample and not options.only and not options.kind:
        for line in equivalents.stale():
            print("matches no mutant any more:", line)
    return 1 if survivors else 0


if __name__ == "__main__":
    sys.exit(main())
