"""What a long take costs: CPU and memory of whole commands."""

import statistics

from contenders import CHANNELS, RATE, RECORDERS
from takes import (MIB, compare_takes, disagreement_bound, record,
                   take_commands, take_table, target)

TITLE = "A take of two minutes"
MOST_RATIO = 1.02
MOST_FFMPEG_RATIO = 1.00
MOST_ABOVE_KIB = 4 * MIB
MOST_GROWTH_KIB = MIB  # between a short take and a long one


def run(bench):
    seconds, rounds = (30, 3) if bench.quick else (116, 25)
    result = compare_takes(bench, seconds, rounds)
    lengths = (1, 10) if bench.quick else (10, 100)
    peaks = {str(length): peak_of_takes(bench, length) for length in lengths}
    ours = result["recorders"]["corvane"]["max_rss_kib"]["median"]
    result["corvane_kib_by_seconds"] = {**peaks, str(seconds): ours}
    return result


def peak_of_takes(bench, seconds):
    corvane = next(r for r in RECORDERS if r.name == "corvane")
    source = bench.pcm(seconds, RATE, CHANNELS)
    return statistics.median(
        record(corvane, source, target(bench, "short")).max_rss_kib
        for _ in range(3))


def tables(result):
    lengths = result["corvane_kib_by_seconds"].items()
    return "\n".join([
        f"{result['seconds']:g} s of {result['channels']} channels at "
        f"{result['rate']} Hz and {result['bit_rate'] // 1000} kbit/s, from "
        "raw PCM in the page cache.",
        f"Medians of {result['rounds']} rounds; CPU is user and system, the "
        "ratio is to the bare loop's median; to ffmpeg: round by round, their "
        "median, least and most.",
        "MiB: peak resident memory, and how far above the bare loop's.", "",
        take_table(result, "s", 1, 2), "",
        "Peak memory of corvane by the length of the take: "
        + ", ".join(f"{seconds} s {kib / MIB:.1f} MiB"
                    for seconds, kib in lengths) + ".", "",
        take_commands(result)])


def bounds(result):
    ours = result["recorders"]["corvane"]
    peaks = list(result["corvane_kib_by_seconds"].values())
    return [("CPU of a take, to the bare loop", ours["cpu_ratio"], MOST_RATIO),
            ("peak memory of a take above the bare loop's, KiB",
             ours["above_kib"], MOST_ABOVE_KIB),
            ("peak memory of the longest take above the shortest's, KiB",
             peaks[-1] - peaks[0], MOST_GROWTH_KIB),
            disagreement_bound(result)] + ffmpeg_bound(ours)


# ffmpeg may be missing where it isn't installed.
def ffmpeg_bound(ours):
    if ours["ffmpeg_ratio"] is None:
        return []
    return [("CPU of a take, to ffmpeg's in the same round",
             ours["ffmpeg_ratio"]["median"], MOST_FFMPEG_RATIO)]
