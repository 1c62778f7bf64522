"""The notebooks of examples/python run, show something, and know their types."""

import importlib.util
import json
import subprocess
import sys
import types
from pathlib import Path

import pytest
import zu

FOLDER = Path("examples/python")
NOTEBOOKS = sorted(FOLDER.glob("*.ipynb"))


@pytest.mark.parametrize("path", NOTEBOOKS, ids=lambda path: path.stem)
@pytest.mark.filterwarnings("ignore::zu.AdjustmentWarning")
def test_notebooks_run(path, monkeypatch):
    found = importlib.util.spec_from_file_location("run", FOLDER / "run.py")
    runner = importlib.util.module_from_spec(found)
    found.loader.exec_module(runner)
    notebook = runner.run(str(path))
    shown = [o for cell in notebook["cells"] for o in cell.get("outputs", [])]
    assert any("<svg" in "".join(o["data"].get("text/html", "")) or "<img" in
               "".join(o["data"].get("text/html", "")) for o in shown if "data" in o)


def test_notebooks_are_typed(tmp_path):
    pytest.importorskip("mypy")
    files = []
    for path in NOTEBOOKS:
        cells = json.loads(path.read_text())["cells"]
        files.append(tmp_path / f"{path.stem}.py")
        files[-1].write_text("\n\n".join("".join(c["source"]) for c in cells if c["cell_type"] == "code") + "\n")
    command = [sys.executable, "-m", "mypy", "--strict", "--cache-dir", tmp_path / "cache", "--scripts-are-modules"]
    run = subprocess.run([*command, FOLDER / "run.py", *files], capture_output=True, text=True,
                         env={"MYPYPATH": str(Path(zu.__file__).parent.parent), "PATH": "/usr/bin"})
    assert run.returncode == 0, run.stdout


def test_results_are_tables_where_pandas_is_there(monkeypatch):
    monkeypatch.setitem(sys.modules, "pandas", types.SimpleNamespace(DataFrame=dict))
    tests = zu.transform(zu.read_points("samples/datum/local.coo"), zu.read_points("samples/datum/wgs84.coo")).tests
    table = tests.to_frame()
    assert list(table["residuals_x"]) == list(tests.residuals[:, 0]) and len(table["id"]) == 7
    assert list(zu.PointList([[1, 2, 3]]).to_frame())[:5] == ["id", "name", "x", "y", "z"]
