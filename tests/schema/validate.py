#!/usr/bin/env python3
"""validate.py ZU SOURCE: runs every line of lines.txt with --json and holds what is printed against
the schema of its command. Also: every command of `zu --help` has a line and a schema that --help
names, each schema is a valid one, and the keys of all schemas follow docs/conventions.md. Ends with
77 where python3-jsonschema is not installed."""
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile
import warnings

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed")
    sys.exit(77)

import reports

ZU, SOURCE = (os.path.abspath(a) for a in sys.argv[1:3])
FOLDER = os.path.join(SOURCE, "docs", "schema")
HEADER = ["zu_version", "command", "status", "status_text", "unit", "warnings"]
# Radians and a number of pixels by the name that published adjustments have.
BARE = {"angles", "sd_angles", "sd_rotation"}
ANGLE = re.compile(r"(^|_)(angles?|bearing|incidence|convergence|sweep|turn|sd_rotation|azimuth)(_|$)")
faults = []


def load(name):
    with open(os.path.join(FOLDER, name)) as file:
        return json.load(file)


def commands():
    """Names of all commands: "plane", "cloud info"."""
    def listed(*words):
        text = subprocess.run([ZU, *words, "--help"], capture_output=True, text=True).stdout
        return re.findall(r"^  ([a-z0-9_]+) ", text.partition("Subcommands:")[2], re.M)
    for name in listed():
        inner = listed(name)
        yield from (name + " " + i for i in inner) if inner else [name]


def check_keys(schema, place):
    """Properties below a schema keep the conventions."""
    if isinstance(schema, list):
        for i in schema:
            check_keys(i, place)
    if not isinstance(schema, dict):
        return
    for key, value in schema.get("properties", {}).items():
        if ANGLE.search(key) and key not in BARE and not re.search("_(deg|gon|rad)(_sd)?$|_sd_rad$", key):
            faults.append(f"{place}: {key} is an angle without unit")
        if key == "rms" and value.get("$ref") not in (f"common.json#/$defs/{d}" for d in ("rms", "rms_of_photo")):
            faults.append(f"{place}: rms has a shape of its own")
    if "properties" in schema and schema.get("additionalProperties", True) is True:
        faults.append(f"{place}: additionalProperties are not closed")
    for value in schema.values():
        check_keys(value, place)


def validators(names):
    """The validator of each command."""
    warnings.simplefilter("ignore", DeprecationWarning)  # newer versions have another way beside
    schemas = {name: load(name.replace(" ", "_") + ".json") for name in names}
    common = load("common.json")
    resolver = jsonschema.RefResolver("", {}, store={"common.json": common})
    for schema in [common, *schemas.values()]:
        jsonschema.Draft202012Validator.check_schema(schema)
    return {name: jsonschema.Draft202012Validator(s, resolver=resolver) for name, s in schemas.items()}


# Commands of which some results, or all, have nothing to draw.
WITHOUT_PICTURE = {"check", "apply", "cloud normals", "cloud transform", "photo undistort", "plane", "points gsi",
                   "project update", "rectify"}


def with_reports(names):
    """Names of the commands that take --report and --plot."""
    for name in names:
        text = subprocess.run([ZU, *name.split(), "--help"], capture_output=True, text=True).stdout
        if "--report FILE.html" in text and "--plot FILE" in text:
            yield name


def run_report(line, number, folder):
    """Runs a line with both options; what is wrong with page and picture, and that twice the same."""
    kind, times = ("svg", "pdf", "png")[number % 3], 2 if number % 4 == 0 else 1
    name = f"out/report{number}"
    page, plot = os.path.join(folder, name + ".html"), os.path.join(folder, name + "." + kind)
    made = []
    for _ in range(times):
        for path in (page, plot):
            if os.path.exists(path):
                os.remove(path)
        script = f'zu() {{ "{ZU}" "$@" --json --report {name}.html $PLOT; }}\n{line}'
        for option in (f"--plot {name}.{kind}", ""):
            run = subprocess.run(["bash", "-c", script], cwd=folder, capture_output=True, text=True,
                                 env={**os.environ, "PLOT": option})
            if "this result has no picture" not in run.stderr:
                break
        if not run.stdout:
            return [f"{run.returncode}: {run.stderr}"]
        made.append([open(p, "rb").read() if os.path.exists(p) else b"" for p in (page, plot)])
    result = json.loads(run.stdout)
    found = reports.page_faults(made[0][0].decode(), result)
    if made[0] != made[-1]:
        found.append("two runs differ")
    if os.path.exists(plot):
        found += reports.plot_faults(plot)
    elif result["command"] not in WITHOUT_PICTURE:
        found.append("has no picture")
    return found


def run_lines(lines, reporting):
    """(line, exit code, text printed) of each line; `zu` in it is the program with --json."""
    drawn = []
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(os.path.join(SOURCE, "samples"), os.path.join(folder, "samples"))
        os.mkdir(os.path.join(folder, "out"))
        for line in lines:
            script = f'zu() {{ "{ZU}" "$@" --json; }}\n{line}'
            run = subprocess.run(["bash", "-c", script], cwd=folder, capture_output=True, text=True)
            yield line, run.returncode, run.stdout, run.stderr
            if run.stdout and json.loads(run.stdout)["command"] in reporting:
                drawn.append(line)
        # What a line writes for a later one is there by now, and replaced as a whole.
        with concurrent.futures.ThreadPoolExecutor() as pool:
            for line, found in zip(drawn, pool.map(lambda k: run_report(drawn[k], k, folder), range(len(drawn)))):
                faults.extend(f"{line} --report: {fault}" for fault in found)


def main():
    names = list(commands())
    missing = [n for n in names if not os.path.exists(os.path.join(FOLDER, n.replace(" ", "_") + ".json"))]
    faults.extend(f"zu {n}: no schema" for n in missing)
    checks = validators([n for n in names if n not in missing])
    for name, check in checks.items():
        check_keys(check.schema, name)
        branches = check.schema.get("oneOf", [check.schema])
        for branch in branches:
            faults.extend(f"{name}: {k} is not required" for k in HEADER if k not in branch["required"])
        text = subprocess.run([ZU, *name.split(), "--help"], capture_output=True, text=True).stdout
        if name.replace(" ", "_") + ".json" not in text:
            faults.append(f"zu {name} --help does not name its schema")
        wrong = subprocess.run([ZU, *name.split(), "--wrong", "--json"], capture_output=True, text=True)
        if wrong.returncode != 2 or wrong.stdout or not wrong.stderr:
            faults.append(f"zu {name} --wrong --json: {wrong.returncode} {wrong.stdout}")
    check_keys(load("common.json"), "common")

    with open(os.path.join(os.path.dirname(__file__), "lines.txt")) as file:
        lines = [line for line in file.read().splitlines() if line and line[0] != "#"]
    seen = set()
    for line, code, out, err in run_lines(lines, set(with_reports(names))):
        if not out:
            faults.append(f"{line}: {code}: {err}")
            continue
        result = json.loads(out)
        seen.add(result["command"])
        error = jsonschema.exceptions.best_match(checks[result["command"]].iter_errors(result))
        if error is not None:
            place = "/".join(map(str, error.absolute_path))
            faults.append(f"{line}: {place}: {error.message[:400]}")
    faults.extend(f"zu {n}: no line in lines.txt" for n in names if n not in seen)
    print("\n".join(faults) or f"{len(lines)} results of {len(seen)} commands agree with their schemas")
    return 1 if faults else 0


sys.exit(main())
