"""One function over many files: on this machine, or on many through Dask.

    >>> import zu, zu.batch
    >>> found = zu.batch.map(zu.check_file, ["samples/chessboard/left.prj", "samples/none.prj"], jobs=1)
    >>> found.failed[0].error
    "FileNotFoundError: [Errno 2] No such file or directory: 'samples/none.prj'"

A job is one file. What a job raises is told with its file, and the other jobs go on. Where results
are kept in files, a run that was broken off goes on with those that are not there yet.
"""

from __future__ import annotations

import concurrent.futures
import html
import json
import multiprocessing
import os
import tempfile
import traceback
import warnings
from collections import deque
from concurrent.futures.process import BrokenProcessPool
from pathlib import Path
from typing import (
    Any,
    Callable,
    Deque,
    Dict,
    Generic,
    Iterable,
    Iterator,
    List,
    NamedTuple,
    Optional,
    Sequence,
    Tuple,
    TypeVar,
    Union,
    cast,
)

__all__ = ["BatchError", "Job", "Results", "map"]

T = TypeVar("T")
PathLike = Union[str, "os.PathLike[str]"]

_UNFINISHED = ".zu-"  # begins the name of a file that is being written
_WAITING_EACH = 4  # jobs handed to each worker ahead of those that are done


class Job(Generic[T]):
    """One file of a run and what came of it.

    file: as given. state: "done", "kept" (its result file was there and is not older than the
    file), "failed". value: what the function returned; where it went to a result file what that
    holds, read when it is asked for: that of a .json or .npy file, else its path. result: the
    result file or None. error: one line, and traceback, of a failed job. warnings: one line each.
    """

    def __init__(self, file: str, result: Optional[Path]) -> None:
        self.file = file
        self.result = result
        self.state = "waiting"
        self.error = ""
        self.traceback = ""
        self.warnings: List[str] = []
        self._value: Optional[T] = None

    @property
    def value(self) -> T:
        if self.state == "failed":
            raise BatchError([cast("Job[Any]", self)])
        if self._value is None and self.result is not None:
            self._value = _load(self.result)
        return cast(T, self._value)

    def __repr__(self) -> str:
        return f"Job({self.file!r}, {self.state}{': ' + self.error if self.error else ''})"


class BatchError(Exception):
    """Jobs failed; failed: these jobs."""

    def __init__(self, failed: Sequence[Job[Any]]) -> None:
        lines = [f"{job.file}: {job.error}" for job in failed[:5]]
        more = f"\nand {len(failed) - 5} more" if len(failed) > 5 else ""
        super().__init__("\n".join(lines) + more)
        self.failed = list(failed)


class Results(Sequence[Job[T]]):
    """The jobs of a run in the order of the files, whatever order they ended in."""

    def __init__(self, jobs: List[Job[T]]) -> None:
        self._jobs = jobs

    def __len__(self) -> int:
        return len(self._jobs)

    def __getitem__(self, index: Any) -> Any:
        return self._jobs[index]

    def __iter__(self) -> Iterator[Job[T]]:
        return iter(self._jobs)

    @property
    def failed(self) -> List[Job[T]]:
        return [job for job in self._jobs if job.state == "failed"]

    @property
    def values(self) -> List[T]:
        """The values of all jobs. Raises BatchError where one failed."""
        if self.failed:
            raise BatchError(self.failed)
        return [job.value for job in self._jobs]

    def _headline(self) -> str:
        counts = {state: sum(job.state == state for job in self._jobs) for state in ("done", "kept", "failed")}
        told = ", ".join(f"{n} {state}" for state, n in counts.items() if n or state == "done")
        return f"Results of {len(self)} jobs: {told}"

    def __repr__(self) -> str:
        return "\n".join([self._headline(), *(f"  {job.file}: {job.error}" for job in self.failed[:20])])

    def _repr_html_(self) -> str:
        rows = "".join(
            f"<tr><td>{html.escape(job.file)}</td><td>{html.escape(job.error)}</td></tr>" for job in self.failed[:20]
        )
        table = f"<table><tr><th>file</th><th>error</th></tr>{rows}</table>" if rows else ""
        return f"<p>{self._headline()}</p>{table}"


# --- Result files --------------------------------------------------------------------------------


def _store(value: Any, path: Path) -> None:
    """Writes a value by the ending of the path; the file is whole or not there."""
    path.parent.mkdir(parents=True, exist_ok=True)
    with _Whole(path) as temp:
        if path.suffix == ".json":
            Path(temp).write_text(json.dumps(value, indent=1, ensure_ascii=False, default=_plain) + "\n", "utf-8")
        elif path.suffix == ".npy":
            import numpy

            with open(temp, "wb") as stream:
                numpy.save(stream, value, allow_pickle=False)
        elif hasattr(value, "write"):
            value.write(temp)
        elif isinstance(value, bytes):
            Path(temp).write_bytes(value)
        elif isinstance(value, str):
            Path(temp).write_text(value, "utf-8")
        else:
            raise TypeError(
                f"{path}: a {type(value).__name__} goes into .json or .npy, or has a method write(path); "
                "text and bytes go into any file"
            )


def _plain(value: Any) -> Any:
    """Arrays and numbers of numpy, paths and named tuples as JSON has them."""
    for name in ("tolist", "_asdict", "__fspath__"):
        if hasattr(value, name):
            return getattr(value, name)()
    raise TypeError(f"a {type(value).__name__} is nothing that JSON holds")


def _load(path: Path) -> Any:
    if path.suffix == ".json":
        return json.loads(path.read_text("utf-8"))
    if path.suffix == ".npy":
        import numpy

        return numpy.load(path, allow_pickle=False)
    return path


class _Whole:
    """A file written beside its place, with its ending, and put there at the end."""

    def __init__(self, path: Path) -> None:
        self._path = path
        self._temp = ""

    def __enter__(self) -> str:
        handle, self._temp = tempfile.mkstemp(self._path.suffix, f"{_UNFINISHED}{self._path.name}-", self._path.parent)
        os.close(handle)
        return self._temp

    def __exit__(self, kind: Any, *_: Any) -> None:
        if kind is None:
            mask = os.umask(0)
            os.umask(mask)
            os.chmod(self._temp, 0o666 & ~mask)
            os.replace(self._temp, self._path)
        elif os.path.exists(self._temp):
            os.remove(self._temp)


def _sweep(jobs: Iterable[Job[Any]]) -> None:
    """Removes what workers that died were writing."""
    results = {job.result for job in jobs if job.result is not None}
    for folder in {result.parent for result in results}:
        for path in folder.glob(_UNFINISHED + "*"):
            if folder / path.name[len(_UNFINISHED) :].rpartition("-")[0] in results:
                path.unlink(missing_ok=True)


def _result_path(pattern: str, file: str) -> Path:
    path = Path(file)
    try:
        return Path(pattern.format(stem=path.stem, name=path.name, folder=path.parent))
    except (KeyError, IndexError, ValueError):
        raise ValueError(f"results: {pattern!r}; {{stem}}, {{name}} and {{folder}} would be right") from None


def _is_kept(job: Job[Any]) -> bool:
    if job.result is None:
        return False
    try:
        return job.result.stat().st_mtime_ns >= os.stat(job.file).st_mtime_ns
    except OSError:
        return False


# --- A job in its worker -------------------------------------------------------------------------


class _Outcome(NamedTuple):
    value: Any
    error: str
    traceback: str
    warnings: List[str]


def _work(function: Callable[..., Any], file: str, result: Optional[Path], writes: bool,
          arguments: Dict[str, Any]) -> _Outcome:
    """Runs in a worker. An exception comes back as text: not every one can travel."""
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        value, error, trace = None, "", ""
        try:
            if writes and result is not None:
                result.parent.mkdir(parents=True, exist_ok=True)
                with _Whole(result) as temp:
                    value = function(file, temp, **arguments)
            else:
                value = function(file, **arguments)
                if result is not None:
                    _store(value, result)
            if result is not None:
                value = None  # stands in its file: it need not travel
        except Exception as caught:  # KeyboardInterrupt ends the run
            error = f"{type(caught).__name__}: {caught}"
            trace = traceback.format_exc()
        return _Outcome(value, error, trace, [f"{w.category.__name__}: {w.message}" for w in told])


def _one_thread() -> None:
    """Workers share the cores: each computes on one. Before anything loads the library."""
    os.environ["OMP_NUM_THREADS"] = "1"


# --- Executors -----------------------------------------------------------------------------------


class _Here:
    """Jobs one after the other in this process."""

    def submit(self, call: Callable[..., _Outcome], *arguments: Any) -> "concurrent.futures.Future[_Outcome]":
        future: "concurrent.futures.Future[_Outcome]" = concurrent.futures.Future()
        future.set_result(call(*arguments))
        return future


def _pool(jobs: int) -> concurrent.futures.ProcessPoolExecutor:
    # Not by fork: threads of the library do not live on in a forked process.
    return concurrent.futures.ProcessPoolExecutor(jobs, multiprocessing.get_context("spawn"), _one_thread)


def _adapted(executor: Any) -> Any:
    """An executor of concurrent.futures; of a client of Dask the one that stands for it."""
    if hasattr(executor, "get_executor"):
        return executor.get_executor(pure=False)
    if hasattr(executor, "submit"):
        return executor
    raise TypeError("executor: one of concurrent.futures, or a Client of dask.distributed, would be right")


class _Run(Generic[T]):
    """The waiting jobs, a few of them handed to the executor at a time."""

    def __init__(self, function: Callable[..., T], writes: bool, arguments: Dict[str, Any],
                 done: Callable[[Job[T]], None]) -> None:
        self._function = function
        self._writes = writes
        self._arguments = arguments
        self._done = done

    def _submit(self, executor: Any, job: Job[T]) -> "concurrent.futures.Future[_Outcome]":
        future: "concurrent.futures.Future[_Outcome]" = executor.submit(
            _work, self._function, job.file, job.result, self._writes, self._arguments
        )
        return future

    def _take(self, job: Job[T], outcome: _Outcome) -> None:
        job.state = "failed" if outcome.error else "done"
        job._value, job.error, job.traceback, job.warnings = outcome
        self._done(job)

    def fail(self, job: Job[T], error: BaseException) -> None:
        self._take(job, _Outcome(None, f"{type(error).__name__}: {error}", "", []))

    def run(self, executor: Any, waiting: Deque[Job[T]], most: int) -> List[Job[T]]:
        """Returns the jobs that a worker which died took with it."""
        running: Dict["concurrent.futures.Future[_Outcome]", Job[T]] = {}
        lost: List[Job[T]] = []
        try:
            while waiting or running:
                while waiting and len(running) < most and not lost:
                    job = waiting.popleft()
                    try:
                        running[self._submit(executor, job)] = job
                    except BrokenProcessPool:
                        lost.append(job)
                if lost and not running:
                    break
                done, _ = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
                for future in done:
                    job = running.pop(future)
                    try:
                        outcome = future.result()
                    except BrokenProcessPool:
                        lost.append(job)
                    except Exception as error:  # what is no result of the job: it could not travel
                        self.fail(job, error)
                    else:
                        self._take(job, outcome)
        except BaseException:
            for future in running:
                future.cancel()
            raise
        return lost

    def run_in_processes(self, waiting: Deque[Job[T]], jobs: int) -> None:
        """A job whose worker dies is tried once more, alone; the pool is made anew for the others."""
        while waiting:
            pool = _pool(jobs)
            try:
                lost = self.run(pool, waiting, jobs * _WAITING_EACH)
            except BaseException:
                _end_now(pool)
                raise
            pool.shutdown()
            for job in lost:
                with _pool(1) as alone:
                    if self.run(alone, deque([job]), 1):
                        self.fail(job, RuntimeError("its process died, twice; killed, or out of memory"))


def _end_now(pool: concurrent.futures.ProcessPoolExecutor) -> None:
    for process in list((getattr(pool, "_processes", None) or {}).values()):
        process.terminate()
    pool.shutdown(wait=False, cancel_futures=True)


# --- The call ------------------------------------------------------------------------------------


def map(
    function: Callable[..., T],
    files: Iterable[PathLike],
    *,
    results: Optional[PathLike] = None,
    writes: bool = False,
    executor: Any = None,
    jobs: Optional[int] = None,
    resume: bool = True,
    progress: Optional[Callable[[int, int], Any]] = None,
    **arguments: Any,
) -> Results[T]:
    """Calls function(file, **arguments) for each file and gathers what it returns.

    results: the result file of each job, as "out/{stem}.json" ({stem}, {name}, {folder} of the
    file). The value goes there as JSON or, for .npy, as an array; text, bytes and objects with a
    method write(path) go into files of any ending. With writes=True the function writes the file
    itself: it is called as function(file, result, **arguments), with a name beside the final one.
    A result file is whole or not there.
    resume: a job whose result file is there, and not older than its file, is not run again ("kept").
    executor: None: processes of this machine, as many as jobs (default: one a core), each with one
    thread; jobs=1: in this process. Or an executor of concurrent.futures, or a Client of
    dask.distributed: the function, its arguments and values must travel there by pickle, and file
    names mean the same there.
    progress: called as progress(done, all) when a job ends; what it raises ends the run.

    Returns Results in the order of the files. What a function raises makes its job "failed" and
    the rest go on; so does a worker that dies (its job is tried once more). Ctrl-C ends the run:
    finished result files stay, unfinished ones do not.
    """
    if jobs is not None and jobs < 1:
        raise ValueError(f"jobs: {jobs}; 1 or more would be right")
    if writes and results is None:
        raise ValueError("writes=True: results names the files to write")
    pattern = None if results is None else os.fspath(results)
    all_jobs: List[Job[T]] = []
    for entry in files:
        file = os.fspath(entry)
        all_jobs.append(Job(file, None if pattern is None else _result_path(pattern, file)))
    _check_results(all_jobs)

    ended = 0

    def end(job: Job[T]) -> None:
        nonlocal ended
        ended += 1
        if progress is not None:
            progress(ended, len(all_jobs))

    waiting: Deque[Job[T]] = deque()
    for job in all_jobs:
        if resume and _is_kept(job):
            job.state = "kept"
            end(job)
        else:
            waiting.append(job)
    run = _Run(function, writes, arguments, end)
    count = jobs or len(os.sched_getaffinity(0))
    try:
        if executor is not None:
            # Dask balances the load itself, and needs to see more than a few jobs.
            lost = run.run(_adapted(executor), waiting, max(len(waiting), 1))
            for job in [*lost, *waiting]:
                run.fail(job, RuntimeError("the executor broke: a worker of it died"))
        elif jobs == 1 or len(waiting) < 2:
            run.run(_Here(), waiting, 1)
        else:
            run.run_in_processes(waiting, min(count, len(waiting)))
    finally:
        _sweep(all_jobs)
    return Results(all_jobs)


def _check_results(jobs: Sequence[Job[Any]]) -> None:
    seen: Dict[Path, Tuple[str]] = {}
    for job in jobs:
        if job.result is None:
            continue
        if job.result in seen:
            raise ValueError(f"{job.file} and {seen[job.result][0]} would both write {job.result}")
        seen[job.result] = (job.file,)
