"""Exceptions, warnings and findings of the package."""

from __future__ import annotations

import logging
import warnings
from typing import Any, List, NamedTuple, Optional, Sequence


class Finding(NamedTuple):
    """What a reader or a check has to tell about one place of a file."""

    file: str
    line: int  # from 1; 0: the file as a whole
    column: int  # from 1, in bytes; 0: the line as a whole
    severity: str  # "note", "warning" or "error"
    keyword: str
    text: str  # what is wrong
    right: str  # what would be right; may be empty

    def __str__(self) -> str:
        place = ":".join([self.file, *(str(n) for n in (self.line, self.column) if n)])
        right = f"; {self.right} would be right" if self.right else ""
        return f"{place}: {self.severity}: {self.text}{right}"


class Error(Exception):
    """Base of all exceptions of the package."""


class ReadError(Error, ValueError):
    """A file does not say what it was meant to say.

    file, line, column: the place of the first error; findings: all that was found.
    """

    def __init__(self, finding: Finding, findings: Sequence[Finding] = ()) -> None:
        super().__init__(str(finding))
        self.file = finding.file
        self.line = finding.line
        self.column = finding.column
        self.findings: List[Finding] = list(findings) or [finding]


class WriteError(Error, OSError):
    """A file could not be written; nothing is left of it."""

    def __init__(self, file: str, reason: str) -> None:
        super().__init__(f"{file}: {reason}")
        self.file = file


class AdjustmentError(Error, ArithmeticError):
    """Observations do not decide what was asked for.

    status: "too few observations", "rank defect", "not converged", "not finite" or that of the
    computation; free: what no observation decides; result: what is known all the same, or None.
    """

    def __init__(self, status: str, reason: str, free: str, result: Optional[Any]) -> None:
        tail = "" if free in reason else free
        super().__init__(": ".join(text for text in (status, reason, tail) if text))
        self.status = status
        self.reason = reason
        self.free = free
        self.result = result


class ReadWarning(UserWarning):
    """Read all the same; the user should know. finding: what and where."""

    def __init__(self, finding: Finding) -> None:
        super().__init__(str(finding))
        self.finding = finding


class AdjustmentWarning(UserWarning):
    """A result that should be looked at."""


_log = logging.getLogger("zu")
_log.addHandler(logging.NullHandler())
_LEVEL = 3  # of the caller of a function of the package


def tell(findings: List[Finding], file: str) -> None:
    """Warns of each warning and raises the first error; file is that of findings without one."""
    findings = [f if f.file else f._replace(file=file) for f in findings]
    for finding in findings:
        if finding.severity == "note":
            _log.info("%s", finding)
        if finding.severity == "warning":
            warnings.warn(ReadWarning(finding), stacklevel=_LEVEL - 1)
    for finding in findings:
        if finding.severity == "error":
            raise ReadError(finding, findings)


def warn(text: str) -> None:
    """Warns of a result."""
    warnings.warn(AdjustmentWarning(text), stacklevel=_LEVEL - 1)


def started(title: str) -> None:
    """Long work begins."""
    _log.debug("%s", title)
