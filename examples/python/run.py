"""Runs notebooks without a notebook server: python3 run.py [--write] NOTEBOOK...

--write keeps what each cell shows in the file, as text and HTML.
"""

from __future__ import annotations

import ast
import contextlib
import io
import json
import sys
from typing import Any, Dict, List, Optional


def run_cell(source: str, names: Dict[str, Any], title: str) -> List[Dict[str, Any]]:
    """The outputs of a cell in the form of notebooks: what it printed, and its last expression."""
    tree = ast.parse(source, title)
    last: Optional[ast.Expr] = None
    if tree.body and isinstance(tree.body[-1], ast.Expr):
        last = tree.body.pop()  # type: ignore[assignment]
    outputs: List[Dict[str, Any]] = []
    printed = io.StringIO()
    value = None
    with contextlib.redirect_stdout(printed):
        exec(compile(tree, title, "exec"), names)
        if last is not None:
            value = eval(compile(ast.Expression(last.value), title, "eval"), names)
    if printed.getvalue():
        text = printed.getvalue().splitlines(keepends=True)
        outputs.append({"output_type": "stream", "name": "stdout", "text": text})
    if value is not None:
        data = {"text/plain": repr(value).splitlines(keepends=True)}
        if hasattr(value, "_repr_html_"):
            data["text/html"] = value._repr_html_().splitlines(keepends=True)
        outputs.append(
            {"output_type": "execute_result", "execution_count": None, "metadata": {}, "data": data}
        )
    return outputs


def run(path: str) -> Dict[str, Any]:
    """The notebook with the outputs of its cells."""
    with open(path, encoding="utf-8") as file:
        notebook: Dict[str, Any] = json.load(file)
    names: Dict[str, Any] = {"__name__": "__main__"}
    count = 0
    for i, cell in enumerate(notebook["cells"]):
        if cell["cell_type"] != "code":
            continue
        count += 1
        cell["outputs"] = run_cell("".join(cell["source"]), names, f"{path}, cell {i + 1}")
        cell["execution_count"] = count
        for output in cell["outputs"]:
            if "execution_count" in output:
                output["execution_count"] = count
    return notebook


def main(arguments: List[str]) -> None:
    write = "--write" in arguments
    for path in arguments:
        if path == "--write":
            continue
        notebook = run(path)
        if write:
            with open(path, "w", encoding="utf-8") as file:
                file.write(json.dumps(notebook, indent=1, ensure_ascii=False) + "\n")


if __name__ == "__main__":
    main(sys.argv[1:])
