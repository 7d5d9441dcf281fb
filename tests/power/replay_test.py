"""What the replayer makes of a journal, on disks of a few sectors."""

import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts/lib"))

from power_journal import (FATES, FLUSH, HEADER, SECTOR, WRITE, Cut, Journal,
                           Replay)

SECTORS = 16


def write(begin, sector, letter, sectors=1):
    size = sectors * SECTOR
    return HEADER.pack(begin, begin + 2, sector * SECTOR, size,
                       WRITE) + letter.encode() * size


def flush(begin):
    return HEADER.pack(begin, begin + 2, 0, 0, FLUSH)


class ReplayTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def disk_after(self, moment, fate, *told, seed=1):
        """A letter for each sector, a dot for what was never written."""
        (self.folder / "journal").write_bytes(b"".join(told))
        (self.folder / "first").write_bytes(b"." * SECTORS * SECTOR)
        replay = Replay(Journal(self.folder / "journal"),
                        self.folder / "first")
        replay.make(Cut(moment, fate, seed), self.folder / "cut")
        disk = (self.folder / "cut").read_bytes()
        self.assertEqual(len(disk), SECTORS * SECTOR)
        pieces = [disk[at:at + SECTOR] for at in range(0, len(disk), SECTOR)]
        for piece in pieces:
            self.assertEqual(len(set(piece)), 1, "a sector is torn")
        return "".join(chr(piece[0]) for piece in pieces)

    def test_what_a_flush_covers_is_there_whatever_becomes_of_the_rest(self):
        told = [write(10, 0, "a", 4), flush(20), write(30, 8, "b", 4)]
        for fate in FATES:
            for seed in range(20):
                disk = self.disk_after(40, fate, *told, seed=seed)
                self.assertEqual(disk[:8], "aaaa....", fate)
                self.assertLessEqual(set(disk[8:]), set("b."), fate)

    def test_a_flushed_sector_is_never_an_older_one_again(self):
        told = [write(10, 0, "a"), flush(20), write(30, 0, "b"), flush(40),
                write(50, 1, "c")]
        for fate in FATES:
            for seed in range(10):
                disk = self.disk_after(60, fate, *told, seed=seed)
                self.assertEqual(disk[0], "b", fate)

    def test_nothing_is_there_that_came_behind_the_cut(self):
        told = [write(10, 0, "a"), flush(20), write(30, 1, "b"),
                write(40, 2, "c"), flush(50)]
        self.assertEqual(self.disk_after(39, "all", *told)[:4], "ab..")

    def test_a_flush_that_is_not_answered_covers_nothing(self):
        told = [write(10, 0, "a"), flush(20)]
        self.assertEqual(self.disk_after(21, "none", *told)[:2], "..")
        self.assertEqual(self.disk_after(22, "none", *told)[:2], "a.")

    def test_a_sector_that_was_flushed_may_be_the_old_one_or_the_new(self):
        told = [write(10, 0, "a"), flush(20), write(30, 0, "b")]
        disks = {self.disk_after(40, "random", *told, seed=seed)[0]
                 for seed in range(20)}
        self.assertEqual(disks, {"a", "b"})

    def test_a_front_piece_ends_with_a_whole_write(self):
        told = [write(10, 0, "a", 2), write(20, 2, "b", 2),
                write(30, 4, "c", 2)]
        disks = {self.disk_after(40, "front", *told, seed=seed)[:6]
                 for seed in range(40)}
        self.assertEqual(disks, {"......", "aa....", "aabb..", "aabbcc"})

    def test_the_last_write_is_torn_at_every_sector(self):
        told = [write(10, 0, "a"), write(20, 1, "b", 3)]
        disks = {self.disk_after(40, "torn", *told, seed=seed)[:4]
                 for seed in range(40)}
        self.assertEqual(disks, {"a...", "ab..", "abb."})

    def test_random_sectors_are_the_same_for_the_same_seed(self):
        told = [write(10, 0, "a", 16)]
        disks = [self.disk_after(40, "random", *told, seed=seed)
                 for seed in (1, 2, 1)]
        self.assertEqual(disks[0], disks[2])
        self.assertNotEqual(disks[0], disks[1])

    def test_later_cuts_go_on_from_earlier_ones(self):
        told = [write(10, 0, "a"), flush(20), write(30, 1, "b"), flush(40)]
        (self.folder / "journal").write_bytes(b"".join(told))
        (self.folder / "first").write_bytes(b"." * SECTORS * SECTOR)
        replay = Replay(Journal(self.folder / "journal"),
                        self.folder / "first")
        for moment, there in ((15, b".."), (25, b"a."), (45, b"ab")):
            replay.make(Cut(moment, "none", 1), self.folder / "cut")
            disk = (self.folder / "cut").read_bytes()
            self.assertEqual(disk[:2 * SECTOR:SECTOR], there)


if __name__ == "__main__":
    unittest.main()
