"""Prints what was run of each file, and what was not.

Run by scripts/coverage with what llvm-cov exported: the lines as lcov's text,
the branches as JSON. A header is compiled into the plugin and into tests that
take it in; what either of them ran, was run.
"""

import collections
import json
import pathlib
import sys


class File:
    """One source file."""

    def __init__(self):
        # By line: times run. By (line, column): times true, times false.
        self.lines = collections.Counter()
        self.branches = collections.defaultdict(lambda: [0, 0])

    def missing(self):
        """Yields (line, what was never seen there)."""
        for line, count in self.lines.items():
            if count == 0:
                yield line, "never run"
        for (line, column), counts in self.branches.items():
            for count, outcome in zip(counts, ("true", "false")):
                if count == 0:
                    yield line, f"never {outcome} (column {column})"

    def row(self) -> tuple[int, int, int, int]:
        """Lines run, lines, branches taken, branches."""
        outcomes = [count for counts in self.branches.values()
                    for count in counts]
        return (sum(count > 0 for count in self.lines.values()),
                len(self.lines),
                sum(count > 0 for count in outcomes), len(outcomes))


def read_lines(path: str, files: dict[str, File]):
    """Reads "SF:file" and "DA:line,count"."""
    name = ""
    for text in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        key, _, value = text.partition(":")
        if key == "SF":
            name = value
        elif key == "DA":
            line, count = value.split(",")[:2]
            files[name].lines[int(line)] += int(count)


def read_branches(path: str, files: dict[str, File]):
    """Adds up all copies of a branch, which stand one after another."""
    exported = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    for file in exported["data"][0]["files"]:
        for line, column, _, _, true, false, *_ in file.get("branches", []):
            counts = files[file["filename"]].branches[line, column]
            counts[0] += true
            counts[1] += false


def share(part: int, whole: int) -> str:
    """As a table's cell."""
    if whole == 0:
        return f"{'none':>22}"
    return f"{part:5} of {whole:4} {100 * part / whole:7.2f} %"


def main():
    """Takes the paths of both exports."""
    files: dict[str, File] = collections.defaultdict(File)
    read_lines(sys.argv[1], files)
    read_branches(sys.argv[2], files)
    here = str(pathlib.Path.cwd()) + "/"
    named = sorted((name.removeprefix(here), files[name]) for name in files)
    print(f"{'':34}{'lines':>22}  {'branches':>22}")
    totals = [0, 0, 0, 0]
    for name, file in named:
        row = file.row()
        totals = [total + part for total, part in zip(totals, row)]
        print(f"{name:34}{share(*row[:2])}  {share(*row[2:])}")
    print(f"{'all':34}{share(*totals[:2])}  {share(*totals[2:])}")
    for name, file in named:
        source = pathlib.Path(name).read_text(encoding="utf-8").splitlines()
        for line, what in sorted(file.missing()):
            print(f"{name}:{line}: {what}: {source[line - 1].strip()}")


if __name__ == "__main__":
    main()
