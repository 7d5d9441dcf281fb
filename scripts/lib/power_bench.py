"""What flushing costs, and what it saves, by file system and interval.

Run by bench/flush at the root of a checkout that is built. A take in real time
for each, on a fresh file system whose disk keeps a journal; its disk is then
made anew as cuts of the power may have left it, and what is missing is counted.
Ends in the tables of docs/benchmarks.md.
"""

import argparse
import math
import os
import pathlib
import random
import resource
import signal
import statistics
import sys

import power_disk
import power_journal
import power_takes
from power_checks import samples_lost
from speech import RATE

INTERVALS = (0.2, 1, 5, 0)  # seconds; 0 is never


def arguments():
    parser = argparse.ArgumentParser(
        prog="bench/flush",
        description="Measures what flushes cost, and what a power cut does.")
    parser.add_argument("--fs", action="append", choices=power_disk.MAKE,
                        help="this file system; may be given again (all)")
    parser.add_argument("--seconds", type=int, default=60,
                        help="length of each take (60)")
    parser.add_argument("--cuts", type=int, default=100,
                        help="of each take (100)")
    parser.add_argument("--seed", type=int, default=random.randrange(10**6),
                        help="where in the takes the cuts are")
    parser.add_argument("--build", type=pathlib.Path,
                        default=pathlib.Path("build/power"),
                        help=argparse.SUPPRESS)
    power_disk.add_inside(parser)
    options = parser.parse_args()
    options.build = options.build.resolve()
    return options


class Measured:
    """A take on a file system of its own."""

    def __init__(self, kind, interval, options, work):
        self.kind = kind
        self.interval = interval
        self.work = work
        with power_disk.disk(options.build / "power_disk", kind,
                             work) as folder:
            recorder = power_takes.Recorder(options.build, work, folder,
                                            interval)
            # What the mount wrote is no part of the take, nor is what a cut
            # makes of it.
            power_disk.run("sync", "-f", folder)
            before = cpu_of_children()
            self.take = recorder.take(options.seconds, "--realtime")
            self.cpu_s = cpu_of_children() - before
            self.take.bytes = (folder / power_takes.TAKE).read_bytes()
        # Once it is unmounted, all that the file system owed has been written.
        self.journal = power_journal.Journal(work / "journal")
        self.lost_s = list(self._losses(options.cuts, options.seed))

    def _losses(self, count, seed):
        """Seconds, at moments anywhere in the take."""
        chance = random.Random(seed)
        replay = power_journal.Replay(self.journal, self.work / "first.img")
        moments = sorted(chance.randint(self.take.began_ns, self.input_end_ns)
                         for _ in range(count))
        for moment_ns in moments:
            replay.make(power_journal.Cut(
                moment_ns, chance.choice(power_journal.FATES),
                chance.randrange(10**9)), self.work / "cut.img")
            with power_disk.mounted(self.kind, self.work / "cut.img",
                                    self.work / "cut", "-o",
                                    "loop") as folder:
                found = [path.read_bytes()
                         for path in folder.glob(power_takes.TAKE)]
            yield samples_lost(self.take, moment_ns, found) / RATE

    @property
    def input_end_ns(self):
        return self.take.reads[-1][0]

    @property
    def flushes(self):
        """Without the syncs of the stop."""
        return [flush for flush in self.take.flushes
                if flush.end_ns < self.input_end_ns]

    def on_disk_at_flush(self):
        """Writes, KiB and flushes of the disk, each the mean of a flush."""
        entries = [entry for flush in self.flushes for entry in
                   self.journal.between(flush.begin_ns, flush.end_ns)]
        writes = [entry for entry in entries if not entry.is_flush]
        return (len(writes) / len(self.flushes),
                sum(entry.size for entry in writes) / 1024 / len(self.flushes),
                (len(entries) - len(writes)) / len(self.flushes))

    def written(self):
        """Bytes that the disk was sent, from the start to the unmounting."""
        return self.journal.bytes_written(self.take.began_ns,
                                          self.journal.entries[-1].begin_ns)


def cpu_of_children():
    """Seconds, user and system, of those that have ended."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def row(*cells):
    return "| " + " | ".join(cells) + " |"


def named(measured):
    return (measured.kind, f"{measured.interval:g} s" if measured.interval
            else "never")


def benefit(measured):
    """A row: what is lost, and the time that a flush takes."""
    took = sorted((flush.end_ns - flush.begin_ns) / 1e6
                  for flush in measured.flushes)
    times = ["", "", ""]
    if took:
        times = [f"{value:.1f}" for value in
                 (statistics.median(took),
                  took[math.ceil(0.99 * len(took)) - 1], took[-1])]
    return row(*named(measured), f"{statistics.median(measured.lost_s):.2f}",
               f"{max(measured.lost_s):.2f}", str(len(took)), *times)


def cost(measured):
    """A row: of the processor, and of the disk."""
    written = measured.written()
    seconds = (measured.input_end_ns - measured.take.began_ns) / 1e9
    flushing = ["", "", ""]
    if measured.flushes:
        flushing = [f"{value:.1f}" for value in measured.on_disk_at_flush()]
    return row(*named(measured), f"{measured.cpu_s:.2f}",
               f"{100 * measured.cpu_s / seconds:.2f}%",
               f"{written / 1024:,.0f}",
               f"{written / len(measured.take.bytes):.1f}",
               f"{written / 1024 / seconds:.1f}", *flushing)


def tables(all_measured):
    print("\n| file system | flush every | lost, s: median | most | flushes | "
          "each took, ms: median | 99th | longest |\n"
          "|:--|--:|--:|--:|--:|--:|--:|--:|")
    for measured in all_measured:
        print(benefit(measured))
    print("\n| file system | flush every | CPU, s | of a core | written, KiB |"
          " to the capture | KiB/s | a flush: writes | KiB | disk's flushes |"
          "\n|:--|--:|--:|--:|--:|--:|--:|--:|--:|--:|")
    for measured in all_measured:
        print(cost(measured))
    late_ms = max(measured.take.machine_late_s
                  for measured in all_measured) * 1000
    print(f"\nA bystander woke up at most {late_ms:.0f} ms late.")


def measure(kind, options):
    """All intervals of one file system."""
    reason = power_disk.why_not(kind)
    if reason:
        print(f"{kind} left out: {reason}", file=sys.stderr)
        return
    for interval in INTERVALS:
        print(f"{kind}, {interval} s", file=sys.stderr, flush=True)
        with power_disk.memory(options.build / "power_bench") as work:
            yield Measured(kind, interval, options, work)


def main():
    options = arguments()
    reason = power_disk.why_impossible()
    if reason:
        sys.exit(f"bench/flush: no power can be cut here: {reason}")
    if not options.inside:
        return power_disk.go_inside()
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    print(f"Seed {options.seed}: takes of {options.seconds} s, {options.cuts} "
          f"cuts each, Linux {os.uname().release}", flush=True)
    tables([measured for kind in options.fs or power_disk.MAKE
            for measured in measure(kind, options)])
    return 0


if __name__ == "__main__":
    sys.exit(main())
