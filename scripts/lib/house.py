"""Holds that every include runs down the house: house.py [ROOT].

A room includes from itself and from rooms on floors below it. What a floor
lists stands side by side and doesn't see each other.
"""

import pathlib
import re
import sys

FLOORS = {
    "src": [["plugin"], ["recording"], ["finalize"], ["worker"], ["encoder"],
            ["report", "adts"]],
    "host": [["main.cc"], ["commands"], ["take"], ["looks"], ["terminal"],
             ["audio"], ["engine"]],
}
# Below every room: the public header, and what it is compiled against.
GROUND = ["include", "embedding/include"]
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def floor(house: str, room: str) -> int | None:
    """The number of the floor, counted from the top."""
    for number, rooms in enumerate(FLOORS[house]):
        if room in rooms:
            return number
    return None


def complaint(root: pathlib.Path, house: str, file: pathlib.Path,
              quote: str, include: str) -> str | None:
    """What is wrong with one include of a file."""
    room = file.relative_to(root / house).parts[0]
    other = include.split("/")[0]
    if (root / house / include).is_file():
        here, there = floor(house, room), floor(house, other)
        if here is None or there is None:
            return f"{room if here is None else other} is no room"
        return None if room == other or here < there else "climbs"
    if quote == "<" or any((root / g / include).is_file() for g in GROUND):
        return None
    return "leads nowhere"


def main(root: pathlib.Path) -> int:
    """Prints every include that doesn't run down."""
    count = bad = 0
    for house in FLOORS:
        for file in sorted((root / house).rglob("*.*")):
            if file.suffix not in (".h", ".cc"):
                continue
            for quote, include in INCLUDE.findall(file.read_text("utf-8")):
                count += 1
                wrong = complaint(root, house, file, quote, include)
                if wrong:
                    bad += 1
                    print(f"{file.relative_to(root)}: {include}: {wrong}")
    print(f"{count} includes, {bad} complaints")
    return 1 if bad or not count else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")))
