"""Cuts the power of a disk under the file systems of the running kernel.

Run by scripts/power-cut and by the test command, at the root of a checkout
that is built. It records once on each file system, then makes as many disks as
there are cuts, each as a cut at some moment of the recording may have left it,
mounts them, looks, and recovers.
"""

import argparse
import os
import pathlib
import random
import signal
import sys

import power_checks
import power_disk
import power_journal
import power_report
import power_takes

def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/power-cut",
        description="Cuts the power of a disk while Corvane records on real "
        "file systems, and holds what comes back against what was promised.")
    parser.add_argument("--fs", action="append", choices=power_disk.MAKE,
                        help="this file system; may be given again (all)")
    parser.add_argument("--cuts", type=int, default=300,
                        help="on each file system (300)")
    parser.add_argument("--seconds", type=int, default=60,
                        help="length of the take, 5 or more (60)")
    parser.add_argument("--flush-every", type=float, default=1,
                        metavar="SECONDS",
                        help="between two flushes (1); 0 flushes never, which "
                        "breaks what is promised")
    parser.add_argument("--seed", type=int,
                        default=os.environ.get("CORVANE_TEST_SEED",
                                               random.randrange(10**6)),
                        help="where in the recording the cuts are")
    parser.add_argument("--build", type=pathlib.Path,
                        default=pathlib.Path("build/power"),
                        help=argparse.SUPPRESS)
    power_disk.add_inside(parser)
    options = parser.parse_args()
    options.build = options.build.resolve()
    return options


def choose_cuts(recording, journal, count, seed):
    """In the order of their moments."""
    cuts = []
    for number in range(count):
        # One of its own for each, so that the times drawn for one don't decide
        # which part of the recording the next is in.
        chance = random.Random(f"{seed} {number}")
        begin_ns, end_ns = chance.choices(*zip(*windows(recording)))[0]
        cuts.append(power_journal.Cut(
            moment_in(journal, begin_ns, end_ns, chance),
            chance.choice(power_journal.FATES), chance.randrange(10**9)))
    return sorted(cuts, key=lambda cut: cut.moment_ns)


def windows(recording):
    """Parts of the recording, with how many cuts in a hundred each gets."""
    take = recording.long
    repair = recording.repair
    following = recording.takes[2]
    synced_ns = take.flushes[0].end_ns if take.flushes else take.ended_ns
    return [((take.began_ns, take.ended_ns), 60),
            ((take.began_ns, synced_ns), 5),
            ((take.ended_ns, following.began_ns), 5),
            ((repair.began_ns, repair.ended_ns), 10),
            ((following.began_ns, recording.ended_ns), 20)]


def moment_in(journal, begin_ns, end_ns, chance):
    """Half of them anywhere, half where the disk is just told something."""
    entries = journal.between(begin_ns, end_ns)
    if entries and chance.random() < 0.5:
        entry = chance.choice(entries)
        return chance.randint(entry.begin_ns, entry.end_ns)
    return chance.randint(begin_ns, end_ns)


def keep(replay, cut, path):
    """The disk as the cut left it, to be looked into."""
    replay.make(cut, path)
    print(f"Broken for the first time: {path}", flush=True)


def cut_power(kind, options, work):
    """All of one file system."""
    with power_disk.disk(options.build / "power_disk", kind, work) as folder:
        recorder = power_takes.Recorder(options.build, work, folder,
                                        options.flush_every)
        recording = power_takes.record(recorder, options.seconds)
    journal = power_journal.Journal(work / "journal")
    replay = power_journal.Replay(journal, work / "first.img")
    judge = power_checks.Judge(recording, options.build / "corvane",
                               work / "cut", options.flush_every)
    tally = power_report.Tally(kind)
    for cut in choose_cuts(recording, journal, options.cuts, options.seed):
        replay.make(cut, work / "cut.img")
        moment_s = (cut.moment_ns - recording.long.began_ns) / 1e9
        with power_disk.mounted(kind, work / "cut.img", work / "cut",
                                "-o", "loop"):
            verdict = judge.judge(cut.moment_ns)
        if verdict.broken and not tally.broken:
            keep(replay, cut, options.build / f"power_cut_{kind}.img")
        tally.add(cut, moment_s, verdict)
    return tally, recording, journal


def main():
    options = arguments()
    reason = power_disk.why_impossible()
    if reason:
        return power_report.skip(reason)
    if not options.inside:
        return power_disk.go_inside()
    # A Ctrl-C is for the process outside, which takes all of this down.
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    print(f"Seed {options.seed}: {options.cuts} cuts, {options.seconds} s, a "
          f"flush every {options.flush_every} s\n\n{power_report.HEAD}", flush=True)
    tallies = []
    for kind in options.fs or power_disk.MAKE:
        reason = power_disk.why_not(kind)
        if reason:
            print(f"{kind:6} left out: {reason}")
            continue
        with power_disk.memory(options.build / "power_cut") as work:
            done = cut_power(kind, options, work)
        print(power_report.row(*done), flush=True)
        tallies.append(done[0])
    if not tallies:
        return power_report.skip(reason)
    power_report.report(tallies)
    power_report.write_results(tallies, "")
    return 1 if any(tally.broken for tally in tallies) else 0


if __name__ == "__main__":
    sys.exit(main())
