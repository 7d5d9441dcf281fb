"""The list of mutants: small changes, each of which breaks a rule.

A list is text. Lines with a '#' are comments, and an entry looks like this:

    file: src/adts/window.h
    tests: adts_test

    fill-interrupted: a read that a signal interrupts is tried again
    -    } else if (errno != EINTR) {
    +    } else {

"file" and "tests" hold until they are said again; several test programs may
be named, the likeliest killer first. Behind "tests" there may be "first: " and
a filter of GoogleTest: those tests are tried before all the others. An entry
is its name and the rule that it breaks, then whole lines of the file: '-'
those that go, '+' those that come instead, ' ' those that stay and tell the
place. What it starts from must stand in the file exactly once. An entry that no
test can tell from the original has a further line, "equivalent: " and the
reason.
"""

import dataclasses
import pathlib
import re

LISTS = pathlib.Path("tests/mutants")
SOURCES = pathlib.Path("src")
LEAST_MUTANTS = 60
LEAST_MUTANTS_A_FILE = 3

NAME = re.compile(r"[a-z0-9][a-z0-9-]*")


class ListError(Exception):
    """Something in a list is not as it should be."""


@dataclasses.dataclass
class Mutant:
    """One change to one file."""

    name: str
    rule: str
    file: pathlib.Path
    tests: list[str]
    place: str  # list and line, for messages
    before: str = ""
    after: str = ""
    equivalent: str = ""
    first: str = ""

    def is_linked_into_tests(self) -> bool:
        """Test programs hold a copy of src/adts; the plugin they load."""
        return SOURCES / "adts" in self.file.parents

    def applied_to(self, text: str) -> str:
        """The file's text with the change made."""
        found = ("\n" + text).count("\n" + self.before)
        if found != 1:
            raise ListError(f"{self.place}: {self.name}: what it starts from "
                            f"is found {found} times in {self.file}")
        return ("\n" + text).replace("\n" + self.before, "\n" + self.after)[1:]

    def add(self, line: str):
        """Takes in a line of the change, with its sign."""
        if line[0] in " -":
            self.before += line[1:] + "\n"
        if line[0] in " +":
            self.after += line[1:] + "\n"


class Reader:
    """Reads one list."""

    def __init__(self, path: pathlib.Path):
        self.path = path
        self.held = {"file": "", "tests": "", "first": ""}
        self.mutants: list[Mutant] = []

    def read(self) -> list[Mutant]:
        """All entries, in their order."""
        lines = self.path.read_text(encoding="utf-8").splitlines()
        for number, line in enumerate(lines, 1):
            place = f"{self.path}:{number}"
            if line[:1] in ("-", "+", " ") and self.mutants:
                self.mutants[-1].add(line)
            elif line and not line.startswith("#"):
                self.take_key(line, place)
        return self.mutants

    def take_key(self, line: str, place: str):
        """Takes in a line of the form "key: value"."""
        key, colon, value = line.partition(": ")
        if not colon or not value.strip() or not NAME.fullmatch(key):
            raise ListError(f"{place}: cannot be understood: {line}")
        if key in self.held:
            if key == "tests":
                self.held["first"] = ""
            self.held[key] = value
        elif key == "equivalent":
            self.mutants[-1].equivalent = value
        else:
            self.mutants.append(Mutant(
                key, value, pathlib.Path(self.held["file"]),
                self.held["tests"].split(), place, first=self.held["first"]))


def read_all() -> list[Mutant]:
    """The entries of all lists."""
    mutants = [mutant for path in sorted(LISTS.glob("*.txt"))
               for mutant in Reader(path).read()]
    if not mutants:
        raise ListError(f"no list in {LISTS}")
    return mutants


def complaints(mutants: list[Mutant]) -> list[str]:
    """What is wrong with the lists as a whole; nothing is built for it."""
    found = []
    names = set()
    for mutant in mutants:
        if mutant.name in names:
            found.append(f"{mutant.place}: a second {mutant.name}")
        names.add(mutant.name)
        found += complaints_about(mutant)
    if len(mutants) < LEAST_MUTANTS:
        found.append(f"only {len(mutants)} mutants of {LEAST_MUTANTS}")
    for source in sorted(SOURCES.rglob("*")):
        count = sum(mutant.file == source for mutant in mutants)
        if source.suffix in (".h", ".cc") and count < LEAST_MUTANTS_A_FILE:
            found.append(f"{source} has {count} mutants of "
                         f"{LEAST_MUTANTS_A_FILE}")
    return found


def complaints_about(mutant: Mutant) -> list[str]:
    """What is wrong with one entry."""
    if not mutant.before or mutant.before == mutant.after:
        return [f"{mutant.place}: {mutant.name}: changes nothing"]
    if not mutant.tests:
        return [f"{mutant.place}: {mutant.name}: names no test program"]
    if not mutant.file.is_file():
        return [f"{mutant.place}: {mutant.name}: no file {mutant.file}"]
    try:
        mutant.applied_to(mutant.file.read_text(encoding="utf-8"))
    except ListError as error:
        return [str(error)]
    return []
