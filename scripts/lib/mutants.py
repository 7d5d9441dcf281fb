"""Applies the mutants of tests/mutants one at a time, and runs the tests.

Run by scripts/mutants at the root of a checkout.
"""

import argparse
import queue
import signal
import sys
import threading

import mutant_list
from mutant_list import ListError, Mutant
from mutant_workspace import (BROKEN, EQUIVALENT, FOLDER, KILLED,
                              NOT_EQUIVALENT, SURVIVED, Ended, Processes,
                              Verdict, Workspace)


def selected(mutants: list[Mutant], wanted: list[str]) -> list[Mutant]:
    """Those named, or of the files or lists named; all when nothing is."""
    chosen = {}
    for word in wanted:
        matching = [mutant for mutant in mutants
                    if word in (mutant.name, str(mutant.file),
                                mutant.place.rpartition(":")[0])]
        if not matching:
            raise ListError(f"no mutant and no file of mutants: {word}")
        chosen.update((mutant.name, mutant) for mutant in matching)
    return list(chosen.values()) if wanted else mutants


class Run:
    """Some mutants, judged by several workers."""

    def __init__(self, mutants: list[Mutant], workers: int):
        self.mutants = mutants
        self.programs = sorted({test for mutant in mutants
                                for test in mutant.tests})
        self.processes = Processes()
        self.spaces = [Workspace(number + 1, self.processes)
                       for number in range(min(workers, len(mutants)))]
        self.seconds: dict[str, float] = {}
        self.waiting: queue.SimpleQueue[Mutant] = queue.SimpleQueue()
        self.judged: queue.SimpleQueue[Verdict | Exception] = (
            queue.SimpleQueue())

    def verdicts(self):
        """Yields them as they come. Nothing is left running behind it."""
        for mutant in self.mutants:
            self.waiting.put(mutant)
        for space in self.spaces:
            space.refresh()
        try:
            # What the others compile meanwhile would only spoil the times.
            self.spaces[0].prepare(self.programs)
            self.seconds = self.spaces[0].measure(self.programs)
            for space in self.spaces:
                threading.Thread(target=self.work, args=[space],
                                 daemon=True).start()
            for _ in self.mutants:
                verdict = self.judged.get()
                if isinstance(verdict, Exception):
                    raise verdict
                yield verdict
        finally:
            self.processes.end_all()

    def work(self, space: Workspace):
        """What each worker does until no mutant waits."""
        try:
            space.prepare(self.programs)
            while True:
                self.judged.put(
                    space.judge(self.waiting.get_nowait(), self.seconds))
        except (queue.Empty, Ended):
            pass
        except Exception as error:  # for the main thread to tell
            self.judged.put(error)


def run(mutants: list[Mutant], workers: int) -> bool:
    """Judges them all and prints as it goes; True when none is left over."""
    FOLDER.mkdir(parents=True, exist_ok=True)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    counts = dict.fromkeys(
        (KILLED, EQUIVALENT, SURVIVED, BROKEN, NOT_EQUIVALENT), 0)
    for verdict in Run(mutants, workers).verdicts():
        counts[verdict.result] += 1
        print(f"{verdict.result:10} {verdict.mutant.name:34} "
              f"{verdict.seconds:4.0f} s  {verdict.detail}", flush=True)
    wrong = counts[BROKEN] + counts[NOT_EQUIVALENT]
    print(f"{len(mutants)} mutants: {counts[KILLED]} killed, "
          f"{counts[EQUIVALENT]} equivalent, {counts[SURVIVED]} survived"
          + (f", {wrong} wrong entries" if wrong else ""))
    return counts[SURVIVED] + wrong == 0


def arguments() -> argparse.Namespace:
    """What was asked for."""
    parser = argparse.ArgumentParser(
        prog="scripts/mutants",
        description="Changes the sources a little, one change at a time, and "
        "sees whether the tests notice. Exits with 1 when a change survives or "
        "the lists in tests/mutants no longer fit the sources.")
    parser.add_argument("wanted", nargs="*", metavar="NAME|FILE",
                        help="a mutant, a source file or a list; all without")
    parser.add_argument("--check", action="store_true",
                        help="only see that the lists fit the sources")
    parser.add_argument("--list", action="store_true",
                        help="only print the names and the rules they break")
    parser.add_argument("--jobs", type=int, default=2, metavar="N",
                        help="mutants at a time, each in its own copy (2)")
    return parser.parse_args()


def main() -> int:
    """Returns the exit status."""
    wishes = arguments()
    try:
        mutants = mutant_list.read_all()
        wrong = mutant_list.complaints(mutants)
        if wrong:
            raise ListError("\n".join(wrong))
        mutants = selected(mutants, wishes.wanted)
        if wishes.list:
            for mutant in mutants:
                print(f"{mutant.file}  {mutant.name}: {mutant.rule}")
            return 0
        if wishes.check:
            print(f"{len(mutants)} mutants fit the sources")
            return 0
        return 0 if run(mutants, wishes.jobs) else 1
    except ListError as error:
        print(error, file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
