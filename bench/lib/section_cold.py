"""Sealing a long capture that is not in the page cache, beside reading it.

Only the capture is taken out of the cache before a look: with everything else
gone too, more than half of what the seal takes longer is the loading of
libavcodec and the libraries behind it. That is a row of its own, START.

Kept under "wall_s": {command: median, least and most}, and "ratio": likewise of
the rounds' own, for the disk is not as fast in each.
"""

import os
import pathlib

from captures import long_capture, make_room
from contenders import READ_LIMIT, READERS
from measure import Failed, measure_success, median_and_range, rotated
from section_duration import OURS, TIMES, make_take

TITLE = "The same capture, not in the page cache"
MOST_RATIO = 1.15
START = "corvane --version, nothing in the page cache"
START_COMMAND = ["build/bench/corvane", "--version"]
CACHES = pathlib.Path("/proc/sys/vm/drop_caches")


def forget(path):
    """Drops the file's pages: clean ones, so it has to be synced by now."""
    fd = os.open(path, os.O_RDONLY)
    try:
        os.posix_fadvise(fd, 0, 0, os.POSIX_FADV_DONTNEED)
    finally:
        os.close(fd)


def forget_everything():
    """proc(5): 3 drops clean pages, and the names and inodes too."""
    try:
        CACHES.write_text("3")
    except PermissionError as error:
        raise Failed("only root can empty the page cache") from error


def run(bench):
    readers = {r.name: r for r in READERS if r.name in (READ_LIMIT, OURS)}
    rounds = 3 if bench.quick else 15
    take = make_take(bench, 30 if bench.quick else 507)
    path = bench.folder / "cold.aac"
    make_room(bench.folder, take.stat().st_size * TIMES)

    def look(name):
        if name == START:
            forget_everything()
            return measure_success(START_COMMAND)
        measure_success(START_COMMAND)  # its libraries are there again
        forget(path)
        return measure_success(readers[name].words(path))

    try:
        long_capture(take, TIMES).write(path)
        os.sync()
        size = path.stat().st_size
        costs = rotated([START, *readers], rounds, look)
    finally:
        path.unlink(missing_ok=True)
    return {"bytes": size, "rounds": rounds,
            "wall_s": {name: median_and_range([c.wall_s for c in costs[name]])
                       for name in costs},
            "ratio": median_and_range(
                [ours.wall_s / read.wall_s for ours, read
                 in zip(costs[OURS], costs[READ_LIMIT])])}


def tables(result):
    rows = ["| command | wall, s | from, to |", "|:--|--:|:-:|"]
    for name, wall in result["wall_s"].items():
        rows.append(f"| {name} | {wall['median']:.2f} "
                    f"| {wall['least']:.2f}, {wall['most']:.2f} |")
    ratio = result["ratio"]
    return "\n".join([
        f"{result['bytes'] / 1e6:.0f} MB, taken out of the page cache before "
        f"each look; medians of {result['rounds']} rounds.",
        f"Round by round the seal takes {ratio['median']:.2f} times as long as "
        f"the read ({ratio['least']:.2f} to {ratio['most']:.2f}).", "", *rows])


def bounds(result):
    return [("sealing to reading, not in the page cache",
             result["ratio"]["median"], MOST_RATIO)]
