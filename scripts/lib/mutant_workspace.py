"""A copy of the sources in which mutants are built and tested.

Nothing here touches the checkout itself. What a compiler or a test program said
of a mutant is left in build/mutants under the mutant's name.
"""

import dataclasses
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

from mutant_list import ListError, Mutant

FOLDER = pathlib.Path("build/mutants")
NOT_COPIED = re.compile(r"build|\..*")  # of the checkout's own entries
# A test program gets this many times what it takes without a change, and the
# tests that are tried first get less: they are only a part of it.
PATIENCE = 6
PATIENCE_FIRST = 2
LEAST_PATIENCE_SECONDS = 60
FAILED_TEST = re.compile(r"\[  FAILED  \] ([\w/.]+)")

KILLED, SURVIVED, EQUIVALENT = "killed", "survived", "equivalent"
# What is wrong with the entry itself.
BROKEN, NOT_EQUIVALENT = "broken", "different"


class Ended(Exception):
    """The run is being ended; nothing more is begun."""


class CompileError(Exception):
    """A change doesn't compile; that is no kill."""


@dataclasses.dataclass
class Verdict:
    """What became of a mutant."""

    mutant: Mutant
    result: str
    detail: str
    seconds: float


class Processes:
    """What is running, so that it can be ended with everything it started."""

    def __init__(self):
        self.lock = threading.Lock()
        self.running: set[subprocess.Popen] = set()
        self.closed = False

    def run(self, command: list[str], cwd: pathlib.Path, log: pathlib.Path,
            timeout: float | None = None) -> int | None:
        """The exit status, or None when it took longer than `timeout`."""
        with open(log, "ab") as output, self.lock:
            if self.closed:
                raise Ended
            process = subprocess.Popen(
                command, cwd=cwd, stdin=subprocess.DEVNULL, stdout=output,
                stderr=subprocess.STDOUT, start_new_session=True)
            self.running.add(process)
        try:
            return process.wait(timeout)
        except subprocess.TimeoutExpired:
            return None
        finally:
            self.end(process)

    def end(self, process: subprocess.Popen):
        """Ends a program and those it has left behind."""
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
        with self.lock:
            self.running.discard(process)

    def end_all(self):
        """Ends them all, and lets no other begin."""
        with self.lock:
            self.closed = True
            running = list(self.running)
        for process in running:
            self.end(process)


class Workspace:
    """A copy of the sources with a build of its own."""

    def __init__(self, number: int, processes: Processes):
        self.tree = FOLDER / str(number) / "tree"
        self.build = FOLDER / str(number) / "build"
        self.processes = processes
        self.changed_programs: set[str] = set()  # built while changed

    def refresh(self):
        """Makes the copy equal to the checkout; what is equal isn't touched."""
        wanted = set()
        for top in pathlib.Path(".").iterdir():
            if not NOT_COPIED.fullmatch(top.name):
                wanted.update(path for path in [top, *top.rglob("*")]
                              if path.is_file())
        for path in wanted:
            copy = self.tree / path
            if not copy.is_file() or copy.read_bytes() != path.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(path, copy)
        for copy in list(self.tree.rglob("*")):
            if copy.is_file() and copy.relative_to(self.tree) not in wanted:
                copy.unlink()

    def prepare(self, programs: list[str]):
        """Builds what is there without a change."""
        self.configure()
        self.must(self.make(programs))

    def configure(self):
        """As usual, but quick to compile; a mutant may cause warnings."""
        cache = self.build / "CMakeCache.txt"
        home = f"CMAKE_HOME_DIRECTORY:INTERNAL={self.tree.resolve()}\n"
        if (self.build / "build.ninja").exists() and home in cache.read_text():
            return  # Ninja runs CMake again by itself where that is needed
        self.must(["cmake", "--fresh", "--preset", "dev",
                   "-B", str(self.build.resolve()),
                   "-DCMAKE_C_COMPILER=gcc", "-DCMAKE_CXX_COMPILER=g++",
                   "-DCMAKE_C_FLAGS_DEBUG=-O0", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                   "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF",
                   "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"])

    def must(self, command: list[str]):
        """Runs what cannot fail unless something is wrong with the checkout."""
        log = self.tree.parent / "build.log"
        log.unlink(missing_ok=True)
        if self.processes.run(command, self.tree, log) != 0:
            sys.stderr.write(log.read_text(errors="replace")[-4000:])
            raise ListError("this must work without a change: "
                            + " ".join(command))

    def make(self, targets: list[str]) -> list[str]:
        """The command that builds targets and what they link."""
        return ["ninja", "-C", str(self.build.resolve()), "-j1", *targets]

    def test(self, program: str, log: pathlib.Path, timeout: float | None,
             *options: str) -> int | None:
        """Runs a test program."""
        return self.processes.run(
            [str((self.build / program).resolve()), "--gtest_brief=1",
             *options], self.build, log, timeout)

    def measure(self, programs: list[str]) -> dict[str, float]:
        """How many seconds each takes; without a change all must pass."""
        seconds = {}
        for program in programs:
            log = FOLDER / f"unchanged.{program}.log"
            log.unlink(missing_ok=True)
            started = time.monotonic()
            if self.test(program, log, None) != 0:
                sys.stderr.write(log.read_text(errors="replace")[-4000:])
                raise ListError(f"{program} fails without a change")
            seconds[program] = time.monotonic() - started
        return seconds

    def judge(self, mutant: Mutant, seconds: dict[str, float]) -> Verdict:
        """Makes the change, builds, tests, and takes the change back."""
        started = time.monotonic()
        if self.changed_programs and not mutant.is_linked_into_tests():
            self.must(self.make(sorted(self.changed_programs)))
            self.changed_programs.clear()
        source = self.tree / mutant.file
        original = source.read_text(encoding="utf-8")
        log = FOLDER / f"{mutant.name}.log"
        log.unlink(missing_ok=True)
        source.write_text(mutant.applied_to(original), encoding="utf-8")
        try:
            killer = self.killer(mutant, log, seconds)
            result = KILLED if killer else SURVIVED
            if mutant.equivalent:
                result = NOT_EQUIVALENT if killer else EQUIVALENT
        except CompileError:
            result, killer = BROKEN, f"see {log}"
        finally:
            source.write_text(original, encoding="utf-8")
        return Verdict(mutant, result,
                       killer or mutant.equivalent or mutant.rule,
                       time.monotonic() - started)

    def killer(self, mutant: Mutant, log: pathlib.Path,
               seconds: dict[str, float]) -> str:
        """The first test that notices; empty when none does.

        The programs load the plugin, so most changes reach them without any
        compiling of tests. What survives that is built into the programs as
        well, since some of them take in parts of the plugin.
        """
        if not mutant.is_linked_into_tests():
            self.compile(["corvane_plugin"], log)
            noticed = self.first_to_notice(mutant, log, seconds)
            if noticed:
                return noticed
        self.changed_programs.update(mutant.tests)
        self.compile(mutant.tests, log)
        return self.first_to_notice(mutant, log, seconds)

    def compile(self, targets: list[str], log: pathlib.Path):
        """Builds with the change in place."""
        if self.processes.run(self.make(targets), self.tree, log) != 0:
            raise CompileError

    def first_to_notice(self, mutant: Mutant, log: pathlib.Path,
                        seconds: dict[str, float]) -> str:
        """Runs the programs one after another until one fails."""
        rounds = [(mutant.first, PATIENCE_FIRST)] if mutant.first else []
        for tests, patience in [*rounds, ("*", PATIENCE)]:
            for program in mutant.tests:
                timeout = max(patience * seconds[program],
                              LEAST_PATIENCE_SECONDS)
                status = self.test(program, log, timeout, "--gtest_fail_fast",
                                   f"--gtest_filter={tests}")
                if status != 0:
                    return f"{program} {cause_of_death(status, log)}"
        return ""


def cause_of_death(status: int | None, log: pathlib.Path) -> str:
    """How a test program noticed the change."""
    failed = FAILED_TEST.search(log.read_text(errors="replace"))
    if failed:
        return failed.group(1)
    if status is None:
        return "hung"
    if status < 0:
        return f"died by {signal.Signals(-status).name}"
    return f"ended with status {status}"
