#!/usr/bin/env python3
"""Asks the tests whether they notice random mutants of the library.

    tests/mutants/run.py --build build/debug --results before.tsv   # draws, builds and tests 300 mutants
    tests/mutants/run.py --compare before.tsv after.tsv             # what one run kills and the other doesn't

A mutant is one source of zu/ with one place changed: a comparison turned, a constant moved, a statement
dropped, an operator exchanged. The same sources and the same seed give the same mutants. BUILD is a
built tree with a shared library (presets debug and release); it isn't touched: the changed object and
the library linked with it go to --work, where they stay, so that a second run with other tests only has
to run these. --programs names further folders to look for test programs in, before BUILD/tests.
Results are lines "outcome, killed by, mutant"; a run continues the file it finds.
"""

import argparse
import collections
import hashlib
import os
import pathlib
import random
import re
import resource
import shlex
import signal
import subprocess
import sys

FOLDERS = ["foundation", "points", "numerics", "rectify", "transform", "photo", "cad", "cloud"]
COMPARISONS = {" < ": [" >= ", " <= "], " > ": [" <= ", " >= "], " <= ": [" > ", " < "],
               " >= ": [" < ", " > "], " == ": [" != "], " != ": [" == "]}
OPERATORS = {" + ": " - ", " - ": " + ", " * ": " / ", " / ": " * ", " && ": " || ", " || ": " && ",
             " += ": " -= ", " -= ": " += ", "++": "--", "--": "++", "(!": "(", " % ": " * "}
NUMBER = re.compile(r"(?<![\w.'])(\d+\.?\d*(?:e[+-]?\d+)?)(?![\w.'])")
STATEMENT = re.compile(r"^\s+(?:[\w:>.*&\[\]-]+(?:\(.*\))?(?: [-+*/|&]?= .*)?|return|delete .*|break|"
                       r"continue|\+\+.*|--.*);$")
GUARDED = re.compile(r"^\s+(?:else )?(?:if|for|while) \(.*\) ((?:return|\w[\w:>.-]*(?:\(| [-+*/]?=)|break|continue)[^{]*;)$")

Mutant = collections.namedtuple("Mutant", "path line kind begin end text")


def blank(source):
    """The source with its comments, strings and preprocessor lines blanked, at unchanged positions."""
    pattern = r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|^#(?:\\\n|[^\n])*'
    return re.sub(pattern, lambda m: re.sub(r"[^\n]", " ", m.group()), source, flags=re.M | re.S)


def moved(number, rng):
    if re.fullmatch(r"\d+", number):
        return str(int(number) + rng.choice([1, -1] if int(number) else [1]))
    value = float(number)
    return repr(value * rng.choice([0.5, 2.0]) if value else 1.0)


def places(path, root, rng):
    """All mutants of one file, by kind."""
    found = collections.defaultdict(list)
    position = 0
    for index, line in enumerate(blank((root / path).read_text()).splitlines(keepends=True), 1):
        def add(kind, begin, end, text):
            found[kind].append(Mutant(path, index, kind, position + begin, position + end, text))
        bare = line.rstrip("\n")
        for old, news in COMPARISONS.items():
            for m in re.finditer(re.escape(old), bare):
                add("comparison", *m.span(), rng.choice(news))
        for old, new in OPERATORS.items():
            for m in re.finditer(re.escape(old), bare):
                add("operator", *m.span(), new)
        numbers = list(NUMBER.finditer(bare))
        if len(numbers) <= 4 and "static_assert" not in bare:  # more of them: a table
            for m in numbers:
                add("constant", *m.span(), moved(m.group(), rng))
        guarded = GUARDED.match(bare)
        if guarded:
            add("statement", *guarded.span(1), ";")
        elif STATEMENT.match(bare):
            add("statement", len(bare) - len(bare.lstrip()), len(bare), ";")
        position += len(line)
    return found


def draw(root, seed):
    """An endless order of mutants: each kind as often as the others, each place once."""
    rng = random.Random(seed)
    kinds = collections.defaultdict(list)
    for path in sorted(path for folder in FOLDERS for path in (root / "zu" / folder).rglob("*.cpp")):
        for kind, mutants in places(path.relative_to(root), root, rng).items():
            kinds[kind] += mutants
    for kind in sorted(kinds):
        rng.shuffle(kinds[kind])
    while any(kinds.values()):
        kind = rng.choice(sorted(k for k in kinds if kinds[k]))
        yield kinds[kind].pop()


class Build:
    def __init__(self, folder, work):
        self.folder = folder.resolve()
        self.work = work.resolve()
        self.work.mkdir(parents=True, exist_ok=True)
        commands = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", "zu/libzu.so"],
                                  check=True, capture_output=True, text=True).stdout.splitlines()
        self.compile = {}
        for command in commands:
            words = [w for w in shlex.split(command) if not w.endswith("ccache")]
            if "-c" in words:
                self.compile[words[words.index("-c") + 1]] = words
            elif "-shared" in words:
                self.link = words[words.index(":") + 2:words.index("&&", 2)]
        self.soname = next(w for w in self.link if w.startswith("-Wl,-soname,")).split(",")[2]

    def library(self, root, mutant):
        """The folder with the mutant's library; None if it does not compile."""
        source = root / mutant.path
        text = source.read_text()
        text = text[:mutant.begin] + mutant.text + text[mutant.end:]
        folder = self.work / hashlib.sha1((str(mutant.path) + text).encode()).hexdigest()[:16]
        library = folder / self.soname
        if library.exists():
            return folder
        if (folder / "refused").exists():
            return None
        folder.mkdir(exist_ok=True)
        changed, built = folder / source.name, folder / "mutant.o"
        changed.write_text(text)
        words = list(self.compile[str(source)])
        built_as = words[words.index("-o") + 1]
        words[words.index("-o") + 1] = str(built)
        words[words.index("-c") + 1] = str(changed)
        if "-MF" in words:
            words[words.index("-MF") + 1] = str(folder / "mutant.d")
        if subprocess.run(words + ["-O0", "-w"], cwd=self.folder, capture_output=True).returncode:
            (folder / "refused").touch()
            return None
        link = [str(built) if w == built_as else w for w in self.link]
        link[link.index("-o") + 1] = str(library)
        subprocess.run(link + ["-Wl,-s"], cwd=self.folder, check=True, capture_output=True)
        built.unlink()
        return folder


def prepare():
    """In the child: what a job in the background may have lost, and limits that end a mutant's loops."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_CPU, (40, 40))
    resource.setrlimit(resource.RLIMIT_AS, (6 << 30, 6 << 30))


def run(program, folder):
    """The test that fails with the library of the folder; None if all pass."""
    environment = dict(os.environ, LD_LIBRARY_PATH=str(folder))
    command = [str(program), "--gtest_fail_fast", "--gtest_brief=0", "--gtest_color=no"]
    scratch = folder / "scratch"
    scratch.mkdir(exist_ok=True)
    process = subprocess.Popen(command, env=environment, preexec_fn=prepare, cwd=scratch, text=True,
                               errors="replace", start_new_session=True, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    try:
        text, _ = process.communicate(timeout=300)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        text, _ = process.communicate()
    if process.returncode == 0:
        return None
    failed = re.findall(r"^\[  FAILED  \] (\S+?\.[^\s,]+)", text, re.M) or re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
    return f"{program.name.removeprefix('zu_test_')}:{failed[-1] if failed else '?'}"


def programs(folders, names):
    found = {}
    for folder in folders:
        for path in sorted(folder.glob("*/zu_test_*")):
            name = path.name.removeprefix("zu_test_")
            if path.is_file() and os.access(path, os.X_OK) and name not in found and (not names or name in names):
                found[name] = path.resolve()
    order = FOLDERS + sorted(set(found) - set(FOLDERS))
    return [found[name] for name in order if name in found]


def measure(arguments):
    root = arguments.root.resolve()
    build = Build(arguments.build, arguments.work)
    tests = programs([*arguments.programs, arguments.build / "tests"], arguments.only)
    done = {}
    if arguments.results.exists():
        done = {line.split("\t")[2]: line.split("\t")[0] for line in arguments.results.read_text().splitlines()}
    killers = {}
    if arguments.again:
        rows = [line.split("\t") for line in arguments.again.read_text().splitlines()]
        killers = {name: killer.split(":")[0] for outcome, killer, name in rows if outcome == "killed"}
    count = 0
    with arguments.results.open("a") as results:
        for mutant in draw(root, arguments.seed):
            if count == arguments.count:
                break
            text = (root / mutant.path).read_text()
            name = f"{mutant.path}:{mutant.line} {mutant.begin} {' '.join(text[mutant.begin:mutant.end].split())} -> {mutant.text.strip()}"
            if name in done:
                count += done[name] != "refused"
                continue
            if arguments.again and name not in killers:
                continue
            folder = build.library(root, mutant)
            killer = None
            if folder:
                count += 1
                first = killers.get(name, mutant.path.parts[1])
                for program in sorted(tests, key=lambda p: p.name != f"zu_test_{first}"):
                    killer = run(program, folder)
                    if killer:
                        break
            outcome = "refused" if not folder else "killed" if killer else "survived"
            print(outcome, killer or "-", name, sep="\t", file=results, flush=True)


def compare(before, after):
    tables = [{line.split("\t")[2]: line.split("\t")[:2] for line in path.read_text().splitlines()}
              for path in (before, after)]
    both = [name for name in tables[0] if name in tables[1] and tables[0][name][0] != "refused"]
    lost = [n for n in both if tables[0][n][0] == "killed" and tables[1][n][0] == "survived"]
    won = [n for n in both if tables[0][n][0] == "survived" and tables[1][n][0] == "killed"]
    neither = [n for n in both if tables[0][n][0] == tables[1][n][0] == "survived"]
    for title, names in (("lost", lost), ("won", won), ("in neither", neither)):
        for name in names:
            print(f"{title}\t{tables[0][name][1]}\t{name}")
    killed = [sum(table[n][0] == "killed" for n in both) for table in tables]
    print(f"{len(both)} mutants: {killed[0]} killed before, {killed[1]} after; "
          f"{len(lost)} lost, {len(won)} won, {len(neither)} in neither")
    return 1 if lost else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).parents[2])
    parser.add_argument("--build", type=pathlib.Path)
    parser.add_argument("--programs", type=pathlib.Path, action="append", default=[])
    parser.add_argument("--only", nargs="*", help="test programs to run, such as points cli")
    parser.add_argument("--work", type=pathlib.Path, default=pathlib.Path("build/mutants"))
    parser.add_argument("--count", type=int, default=300, help="mutants that compile")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--results", type=pathlib.Path)
    parser.add_argument("--again", type=pathlib.Path,
                        help="results of a run: only what was killed there, the killer first")
    parser.add_argument("--compare", type=pathlib.Path, nargs=2)
    arguments = parser.parse_args()
    if arguments.compare:
        return compare(*arguments.compare)
    if not arguments.build or not arguments.results:
        parser.error("give --build and --results, or --compare")
    measure(arguments)
    return 0


if __name__ == "__main__":
    sys.exit(main())
