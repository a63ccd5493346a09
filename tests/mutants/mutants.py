#!/usr/bin/env python3
"""Changes the kernels, one place at a time, and looks whether the tests notice.

A mutant is a source in which one constant or table entry has become another, or one comparison its
neighbour. It dies when it does not compile (a static_assert is a test too), when a test fails or
takes too long. Survivors stand in survivors.txt beside this script, each with the reason why no
test can tell it from the original; any other survivor is a hole in the tests and an error, and so
is a line of the file that no longer describes a mutant that survives.

Which places are changed depends on the seed and on each place itself, not on its neighbours: an
edit elsewhere in a file leaves the choice alone.

  mutants.py [--seed N] [--count N] [--only TEXT] [--jobs N] [--build DIR] [PATH...]

With paths, only sources whose names begin with one of them. --only TEXT changes all places in lines
with this text instead of a sample. One in each file is the least, so that the standard count is
about 260; each takes some ten seconds of a core.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIST = pathlib.Path(__file__).with_name("survivors.txt")
ROOMS = ("alc", "codecs", "common", "companion", "core", "ec")
COMPANION = "zspcore.dir/"  # the objects of the one library that the tests do not link whole
SLOW_TESTS = "*Exhaustively*"
CPU_SECONDS = 120  # of a step; a mutant that runs longer goes round in circles
WALL_SECONDS = 3600

# What is blanked before places are looked for, so that nothing in it is changed: comments, text,
# includes and other directives, and what only a build with assertions or a compiler sees.
BLANKS = re.compile(
    r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'|^[ \t]*\#(?:\\\n|[^\n])*"""
    r"""|\bstatic_assert\s*\((?:[^;"]|"[^"]*")*;|\bassert\s*\([^;]*;|\balignas\([^)]*\)""",
    re.DOTALL | re.MULTILINE)

NUMBER = re.compile(r"(?<![\w.'])(?:0x[0-9a-fA-F']+|\d[\d']*\.\d*(?:[eE][+-]?\d+)?|\d[\d']*"
                    r"(?:[eE][+-]?\d+)?)[FuUlL]*(?![\w.])")
COMPARISON = re.compile(r"(?<= )(?:<=|>=|==|!=|<|>)(?= )")
NEIGHBOUR = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}


@dataclass(frozen=True)
class Mutant:
    path: str
    line: int  # for people; not part of the identity
    text: str  # the line's text, without indentation
    nth: int  # of the places in lines of this text
    old: str
    new: str
    at: int

    @property
    def key(self):
        return f"{self.path} | {self.text} | {self.nth} | {self.old} -> {self.new}"

    def rank(self, seed):
        return hashlib.sha256(f"{seed}|{self.key}".encode()).hexdigest()


def changed_number(old):
    """The next integer; a real number with a tenth more."""
    digits, suffix = re.fullmatch(r"(0x[0-9a-fA-F']+|[\d'.]+(?:[eE][+-]?\d+)?)(.*)", old).groups()
    plain = digits.replace("'", "")
    if plain.startswith("0x"):
        return f"{int(plain, 16) ^ 1:#x}{suffix}"
    if re.search(r"[.eE]", plain):
        value = float(plain)
        return f"{value * 1.1 if value else 0.1!r}{suffix}"
    return f"{int(plain) + 1}{suffix}"


def mutants_of(path):
    source = (ROOT / path).read_text()
    code = BLANKS.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), source)
    places = [(m.start(), m.group(), changed_number(m.group())) for m in NUMBER.finditer(code)]
    places += [(m.start(), m.group(), NEIGHBOUR[m.group()]) for m in COMPARISON.finditer(code)]
    found, seen = [], {}
    for at, old, new in sorted(places):
        line = source.count("\n", 0, at) + 1
        text = source.splitlines()[line - 1].strip()
        seen[text] = seen.get(text, 0) + 1
        found.append(Mutant(path, line, text, seen[text], old, new, at))
    return found


def choose(sources, seed, count):
    """The same share of every file, at least one; of a file, those of the lowest rank."""
    everything = {path: mutants_of(path) for path in sources}
    total = sum(len(found) ** 0.5 for found in everything.values())
    chosen = []
    for path, found in everything.items():
        share = max(1, round(count * len(found) ** 0.5 / max(total, 1)))
        chosen += sorted(found, key=lambda m: m.rank(seed))[:share]
    return chosen


def suites_near(path):
    """A filter for the test suites of the folder that mirrors the source's."""
    names = set()
    for test in (ROOT / "tests" / path).parent.glob("*_test.cpp"):
        names |= set(re.findall(r"^\s*(?:TYPED_)?TEST(?:_[FP])?\((\w+),", test.read_text(), re.M))
    return ":".join(f"*{name}.*" for name in sorted(names) + ["Contract", "ResultHash"])


def survivors_listed():
    listed = {}
    for line in LIST.read_text().splitlines():
        if line.startswith("#") or not line.strip():
            continue
        key, _, reason = line.rpartition(" :: ")
        if not key or not reason.strip():
            sys.exit(f"{LIST.name}: no reason in: {line}")
        listed[key] = reason
    return listed


class Build:
    """The tests as the sanitizers have them, and what it takes to make them with one file changed:
    the changed file stands in a folder of its own that is looked through before the tree."""

    def __init__(self, folder, jobs):
        self.folder = folder
        subprocess.run(
            ["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
             "-DCMAKE_C_COMPILER=clang", "-DCMAKE_CXX_COMPILER=clang++",
             "-DCMAKE_CXX_FLAGS=-O1 -w", "-DZSPSC_SANITIZE=address,undefined",
             *(f"-DZSPSC_BUILD_{part}=OFF" for part in ("BENCH", "EXAMPLES", "TOOLS"))],
            check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["ninja", "-C", folder, "-j", str(jobs), "--quiet", "zspsc_test"], check=True)
        link = self.ninja("-t", "commands", "bin/zspsc_test").splitlines()[-1]
        self.link = link.split(" && cd ")[0] + " "  # without what is done with the program
        entries = json.loads(self.ninja("-t", "compdb"))
        self.compile = {entry["output"]: entry for entry in entries
                        if f" {entry['output']} " in self.link or COMPANION in entry["output"]}
        self.users = {}
        for block in self.ninja("-t", "deps").split("\n\n"):
            head, *files = block.splitlines() or [""]
            output = head.split(":")[0]
            if output in self.compile:
                for name in files:
                    name = os.path.normpath(os.path.join(folder, name.strip()))
                    self.users.setdefault(name, []).append(output)
        if not self.passes(folder / "bin" / "zspsc_test", "*"):
            sys.exit("the tests fail without any change")

    def ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", self.folder, *arguments], check=True,
                              capture_output=True, text=True).stdout

    def passes(self, program, suites):
        return self.does(f"{program} '--gtest_filter={suites}-{SLOW_TESTS}' --gtest_fail_fast")

    def does(self, command):
        with subprocess.Popen(f"ulimit -t {CPU_SECONDS}; {command}", shell=True, cwd=self.folder,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              start_new_session=True) as process:
            try:
                return process.wait(WALL_SECONDS) == 0
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                return False

    def survives(self, mutant):
        """The tests of the same folder first, then all."""
        original = ROOT / mutant.path
        source = original.read_text()
        # The library's objects first: mostly it is they that no longer compile.
        users = sorted(self.users.get(str(original), []), key=lambda name: "tests/" in name)
        if not users:
            return True  # no test program has it
        with tempfile.TemporaryDirectory(dir=self.folder) as name:
            place = pathlib.Path(name)
            changed = place / "tree" / mutant.path
            changed.parent.mkdir(parents=True)
            changed.write_text(source[:mutant.at] + mutant.new +
                               source[mutant.at + len(mutant.old):])
            link = self.link.replace(" bin/zspsc_test ", f" {place}/test ")
            for i, output in enumerate(users):
                command = self.compile[output]["command"]
                command = command.replace(" -I", f" -I{place}/tree -I", 1)
                command = command.replace(f" -o {output} ", f" -o {place}/{i}.o ")
                command = command.replace(f" -MF {output}.d ", f" -MF {place}/{i}.d ")
                if mutant.path.endswith(".cpp"):
                    command = command.replace(f" -c {original}", f" -c {changed}")
                if not self.does(command):
                    return False
                if COMPANION in output:  # what the program has itself stands before its library's
                    link += f"{place}/{i}.o "
                link = link.replace(f" {output} ", f" {place}/{i}.o ")
            return (self.does(link) and self.passes(place / "test", suites_near(mutant.path)) and
                    self.passes(place / "test", "*"))


def run(chosen, jobs, build):
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = pool.map(build.survives, chosen)
        for done, (mutant, alive) in enumerate(zip(chosen, results), 1):
            print(f"[{done}/{len(chosen)}] {'SURVIVES' if alive else 'dies'}  "
                  f"{mutant.path}:{mutant.line}  {mutant.old} -> {mutant.new}", flush=True)
            if alive:
                yield mutant


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=240, help="about so many mutants")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "mutants")
    parser.add_argument("--only", metavar="TEXT", help="places whose line contains this, all of them")
    parser.add_argument("paths", nargs="*")
    options = parser.parse_args()

    patterns = [f"{room}/*.{kind}" for room in ROOMS for kind in ("cpp", "hpp")]
    sources = subprocess.run(["git", "ls-files", *patterns], cwd=ROOT, check=True,
                             capture_output=True, text=True).stdout.split()
    sources = [s for s in sources if not options.paths or s.startswith(tuple(options.paths))]
    chosen = choose(sources, options.seed, options.count)
    if options.only:
        chosen = [m for path in sources for m in mutants_of(path) if options.only in m.text]
    start = time.monotonic()
    listed = survivors_listed()
    alive = list(run(chosen, options.jobs, Build(options.build.resolve(), options.jobs)))
    holes = [m for m in alive if m.key not in listed]
    gone = [m for m in chosen if m.key in listed and m not in alive]
    known = {m.key for path in sources for m in mutants_of(path)}
    lost = [key for key in listed if key not in known and
            (not options.paths or key.startswith(tuple(options.paths)))]
    print(f"{len(chosen)} mutants, seed {options.seed}: {len(chosen) - len(alive)} died, "
          f"{len(alive) - len(holes)} equivalent, {len(holes)} unnoticed, "
          f"{time.monotonic() - start:.0f} s")
    for m in holes:
        print(f"NOT NOTICED  {m.path}:{m.line}\n    {m.key}")
    for m in gone:
        print(f"LISTED BUT NOTICED  {m.key}")
    for key in lost:
        print(f"LISTED BUT NOT IN THE SOURCES  {key}")
    return 1 if holes or gone or lost else 0


if __name__ == "__main__":
    sys.exit(main())
