"""What it costs to start: a take too short for the encoder to count."""

from takes import MIB, compare_takes, disagreement_bound, take_table

TITLE = "Start-up: a take of a tenth of a second"
MOST_RATIO = 1.5
MOST_ABOVE_KIB = 3 * MIB


def run(bench):
    return compare_takes(bench, 0.1, 9 if bench.quick else 61)


def tables(result):
    return "\n".join([
        f"{result['seconds']:g} s of the same sound, medians of "
        f"{result['rounds']} rounds: the programs with their libraries",
        "are loaded, the codec is opened, a few frames are written and, by "
        "corvane, sealed.",
        "The commands are those of the long take.", "",
        take_table(result, "ms", 1000, 1)])


def bounds(result):
    ours = result["recorders"]["corvane"]
    return [("CPU of starting up, to the bare loop", ours["cpu_ratio"],
             MOST_RATIO),
            ("peak memory of a short take above the bare loop's, KiB",
             ours["above_kib"], MOST_ABOVE_KIB),
            disagreement_bound(result)]
