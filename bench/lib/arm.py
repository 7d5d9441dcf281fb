"""Prints what a frame costs on x86-64 and on 64-bit ARM, as a table.

Run by bench/arm: arm.py FRAMES X86-FOLDER ARM-FOLDER, which hold what it counted
of two takes, one of them so many frames longer.
"""

import bisect
import collections
import pathlib
import re
import sys

GROUPS = {
    "libavcodec": ("libavcodec",),
    "libm, libavutil, libhwy": ("libm", "libavutil", "libhwy"),
    "libc, libstdc++": ("libc", "libstdc++", "libgcc_s"),
    "GLib, GObject": ("libglib-2.0", "libgobject-2.0"),
    "the plugin": ("libcorvane_plugin",),
    "the embedding's stand-in": ("libflutter_linux_gtk",),
}
REST = "the program, the loader, others"


def x86_counts(path):
    """{object: instructions} of a profile that was summed up."""
    counts = collections.Counter()
    for line in path.with_suffix(".sums").read_text().splitlines():
        kind, name, number = line.rsplit(" ", 2)
        if kind == "instructions":
            counts[name] += int(number)
    return counts


def arm_counts(path):
    """The same, of pages and of what the loader told: a page that it told
    nothing of is the program's or its own.
    """
    name, places = None, []
    for line in path.with_suffix(".log").read_text().splitlines():
        if told := re.search(r"file=(\S+) \[0\];\s+generating link map", line):
            name = re.sub(r"[.]so.*", "", told[1].rsplit("/", 1)[-1])
        elif told := re.search(r"base: (0x\w+)\s+size: (0x\w+)", line):
            base = int(told[1], 16)
            places.append((base, base + int(told[2], 16), name))
    places.sort()
    counts = collections.Counter()
    for line in path.with_suffix(".pages").read_text().splitlines():
        page, number = line.split()
        address = int(page, 16) << 12
        at = bisect.bisect(places, (address, sys.maxsize)) - 1
        inside = at >= 0 and address < places[at][1]
        counts[places[at][2] if inside else ""] += int(number)
    return counts


def a_frame(counts, folder, frames):
    """{group: instructions a frame}, without what a start costs."""
    more = counts(folder / "more")
    more.subtract(counts(folder / "few"))
    group_of = {name: group for group, names in GROUPS.items()
                for name in names}
    sums = collections.Counter()
    for name, number in more.items():
        sums[group_of.get(name, REST)] += number
    return {group: sums[group] / frames for group in (*GROUPS, REST)}


def main():
    frames, x86, arm = int(sys.argv[1]), *map(pathlib.Path, sys.argv[2:])
    columns = [a_frame(x86_counts, x86, frames),
               a_frame(arm_counts, arm, frames)]
    print("| object | x86-64 | 64-bit ARM |\n|:--|--:|--:|")
    for group in columns[0]:
        print(f"| {group} | {columns[0][group]:,.0f} | {columns[1][group]:,.0f} |")
    totals = [sum(column.values()) for column in columns]
    print(f"| all | {totals[0]:,.0f} | {totals[1]:,.0f} |")
    print(f"ARM takes {totals[1] / totals[0]:.2f} times as many.")


main()
