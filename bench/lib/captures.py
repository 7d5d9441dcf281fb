"""The captures whose length is asked for: a long one, and damaged ones."""

import dataclasses
import pathlib
import random
import shutil

from contenders import FRAME_SECONDS
from crash_recorders import whole_frames
from measure import Failed

FOREIGN_BYTES = 65536
TORN_BYTES = 100  # of the last frame


@dataclasses.dataclass
class Capture:
    """`seconds` is what whole frames are in it, wherever they lie."""

    name: str
    pieces: list  # of bytes; what follows what in the file
    seconds: float

    def write(self, path: pathlib.Path):
        with open(path, "wb") as file:
            file.writelines(self.pieces)
        return path


def long_capture(take, times):
    """Many takes behind one another, as resuming over and over makes it."""
    return Capture("whole", [take.read_bytes()] * times,
                   whole_frames(take) * times * FRAME_SECONDS)


def damaged_captures(take):
    """Two takes, and what may become of such a file. The foreign bytes lie
    between frames and are either what a file system leaves of pages that it
    never wrote, or noise, in which some bytes look like headers."""
    sound = take.read_bytes()
    seconds = 2 * whole_frames(take) * FRAME_SECONDS
    noise = random.Random(1).randbytes(FOREIGN_BYTES)
    return [
        Capture("whole", [sound, sound], seconds),
        Capture("torn end", [sound, sound[:-TORN_BYTES]],
                seconds - FRAME_SECONDS),
        Capture("zeros inside", [sound, bytes(FOREIGN_BYTES), sound], seconds),
        Capture("noise inside", [sound, noise, sound], seconds),
    ]


def make_room(folder, size):
    """Half as much again must be free, for the disk is others' as well."""
    free = shutil.disk_usage(folder).free
    if free < size * 3 // 2:
        raise Failed(f"{size * 3 // 2 >> 20} MiB must be free on the disk; "
                     f"{free >> 20} are")
