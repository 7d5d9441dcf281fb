"""What a disk was told before its power went, and what may be on it then.

A disk may hold written sectors in a cache that dies with the power. What a
flush promises is that the writes answered before it began are kept once it is
answered. Of all others any sector may be there or not.
"""

import dataclasses
import random
import struct
import subprocess

SECTOR = 512
HEADER = struct.Struct("<QQQII")
WRITE = 1
FLUSH = 2

# Of the writes that no flush covers: all are there, none, those up to one of
# them, random sectors, or all up to somewhere inside the last one.
FATES = ("all", "none", "front", "random", "torn")


@dataclasses.dataclass(frozen=True)
class Entry:
    begin_ns: int  # the disk had it
    end_ns: int  # the disk answered
    offset: int
    size: int
    is_flush: bool
    at: int  # of a write's bytes in the journal


@dataclasses.dataclass(frozen=True)
class Cut:
    moment_ns: int
    fate: str
    seed: int

    def __str__(self):
        return f"{self.fate} of what was not flushed, seed {self.seed}"


class Journal:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.entries = list(self._entries())

    def _entries(self):
        at = 0
        while at < len(self.bytes):
            begin, end, offset, size, kind = HEADER.unpack_from(self.bytes, at)
            at += HEADER.size
            yield Entry(begin, end, offset, size, kind == FLUSH, at)
            at += size

    def data(self, entry):
        return self.bytes[entry.at:entry.at + entry.size]

    def between(self, begin_ns, end_ns):
        return [entry for entry in self.entries
                if begin_ns <= entry.begin_ns <= end_ns]

    def bytes_written(self, begin_ns, end_ns):
        return sum(entry.size for entry in self.between(begin_ns, end_ns))


class Replay:
    """The disk after cuts, each later than the one before it."""

    def __init__(self, journal, image):
        """`image` is what the disk held first; it is changed on the way."""
        self.journal = journal
        self.image = image
        self.pending = []  # writes in their order that no flush covers
        self.next = 0

    def make(self, cut, path):
        """Leaves at `path` what the disk holds after the cut."""
        self._go_on_to(cut.moment_ns)
        # Holes stay holes, and memory is saved.
        subprocess.run(["cp", "--sparse=always", self.image, path], check=True)
        with open(path, "r+b", buffering=0) as file:
            for offset, data in self._survivors(cut):
                file.seek(offset)
                file.write(data)

    def _go_on_to(self, moment_ns):
        entries = self.journal.entries
        while (self.next < len(entries) and
               entries[self.next].begin_ns <= moment_ns):
            entry = entries[self.next]
            if not entry.is_flush:
                self.pending.append(entry)
            elif entry.end_ns <= moment_ns:
                self._settle(entry)
            else:
                break  # under way when the power went
            self.next += 1

    def _settle(self, flush):
        covered = [write for write in self.pending
                   if write.end_ns <= flush.begin_ns]
        self.pending = self.pending[len(covered):]
        with open(self.image, "r+b", buffering=0) as file:
            for write in covered:
                file.seek(write.offset)
                file.write(self.journal.data(write))

    def _survivors(self, cut):
        """Where and what, in the order of the writes."""
        chance = random.Random(cut.seed)
        pieces = [(write.offset, self.journal.data(write))
                  for write in self.pending]
        if cut.fate == "none" or not pieces:
            return []
        if cut.fate == "front":
            return pieces[:chance.randint(0, len(pieces))]
        if cut.fate == "random":
            share = chance.choice((0.1, 0.5, 0.9))
            return [sector for piece in pieces for sector in sectors_of(piece)
                    if chance.random() < share]
        if cut.fate == "torn":
            last = list(sectors_of(pieces[-1]))
            return pieces[:-1] + last[:chance.randrange(len(last))]
        return pieces


def sectors_of(piece):
    offset, data = piece
    for start in range(0, len(data), SECTOR):
        yield offset + start, data[start:start + SECTOR]
