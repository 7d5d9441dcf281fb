"""Whether the cost of a take, a seal, an append and a repair of a WAV grows as
it should: with the length, the size, and not at all.

Exponents are those of cost = factor * length ^ exponent, by least squares over
the logarithms, after the cost and length of a take of 0.1 s, which is next to
nothing but start-up, were taken off all others.
"""

import math
import shutil

import growth_counts
import growth_takes
from contenders import LIMIT
from growth_counts import WINDOW_BYTES
from measure import Failed

TITLE = "How cost grows"
EXPONENT_LIMIT = 0.02


def run(bench):
    missing = [name for name in ("strace", "valgrind")
               if not shutil.which(name)]
    if missing:
        raise Failed(f"{' and '.join(missing)} not installed")
    return {"takes": growth_takes.run(bench),
            "instructions": growth_counts.takes(bench),
            "seals": growth_counts.seals(bench),
            "wav_repairs": growth_counts.wav_repairs(bench)}


def exponent(points):
    """Of (length, cost), of which the shortest is what a start costs."""
    (start_x, start_y), *rest = sorted(points)
    xs = [math.log(x - start_x) for x, _ in rest]
    ys = [math.log(y - start_y) for _, y in rest]
    mean_x, mean_y = sum(xs) / len(xs), sum(ys) / len(ys)
    return (sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys)) /
            sum((x - mean_x) ** 2 for x in xs))


def exponent_of(rows, key, x="length_s"):
    return exponent([(row[x], row[key]) for row in rows])


def slope(rows, key, x="length_s"):
    """What one more of the length costs, between two rows."""
    (x1, y1), (x2, y2) = ((row[x], row[key]) for row in rows)
    return (y2 - y1) / (x2 - x1)


def late_to_early(rows, key):
    """The cost of a second of audio late in a take to that early in one."""
    return slope(rows[-2:], key) / slope(rows[-3:-1], key)


def reads_to_need(rows):
    """Reads of another stretch of a capture to what its bytes need."""
    return slope(rows[-2:], "reads", "bytes") * WINDOW_BYTES


def takes_table(result):
    found = result["takes"]
    counted = {row["length_s"]: row for row in result["instructions"]}
    rows = ["| take | takes | corvane, s | bare loop, s | ratio "
            "| instructions, M | our own, M |",
            "|--:|--:|--:|--:|--:|--:|--:|"]
    for ours, bare in zip(*(found["cpu_s"][name]
                            for name in ("corvane", LIMIT))):
        count = counted.get(ours["length_s"])
        cells = ([f"{count[key] / 1e6:,.1f}" for key in ("all", "ours")]
                 if count else ["", ""])
        rows.append(f"| {ours['length_s']:,} s | {ours['takes']} "
                    f"| {ours['mean']:,.3f} | {bare['mean']:,.3f} "
                    f"| {ours['mean'] / bare['mean']:.2f} "
                    f"| {' | '.join(cells)} |")
    return "\n".join([*rows, exponent_row(result)])


def exponent_row(result):
    ours, bare = (exponent_of(result["takes"]["cpu_s"][name], "mean")
                  for name in ("corvane", LIMIT))
    every, own = (exponent_of(result["instructions"], key)
                  for key in ("all", "ours"))
    return (f"| exponent | | {ours:.3f} | {bare:.3f} | {ours - bare:+.3f} "
            f"| {every:.4f} | {own:.4f} |")


def takes_text(result):
    found = result["takes"]
    return "\n".join([
        f"CPU time of takes of {found['rate'] // 1000} kHz, mono, "
        f"{found['bit_rate'] // 1000} kbit/s: means of takes that took turns, "
        "the longest stopped in",
        "between for the others to run. The codec has so little to do here "
        "that our own work shows: the",
        "ratio is no measure of usual takes. Instructions are of takes of "
        "silence.", "", takes_table(result), "",
        "Exponents are fitted to what exceeds the take of 0.1 s."])


def halves_text(result):
    halves = result["takes"]["second_half_to_first"]
    late = late_to_early(result["instructions"], "ours")
    return "\n".join([
        "An append costs the same whatever was recorded before: by "
        "instructions of our own a second late",
        f"in a take costs {late:.4f} of one early in it; in CPU time the "
        f"second half of the longest take cost {halves['corvane']:.2f}",
        f"of the first (the bare loop's {halves[LIMIT]:.2f})."])


def seals_text(result):
    found = result["seals"]
    rows = ["| capture | MB | reads | instructions of our own, M | CPU, ms |",
            "|--:|--:|--:|--:|--:|"]
    for row in found:
        rows.append(
            f"| {row['length_s']:,} s | {row['bytes'] / 1e6:,.3f} "
            f"| {row['reads']:,} | {row['ours'] / 1e6:,.2f} "
            f"| {row['cpu_s']['median'] * 1e3:.1f} |")
    return "\n".join([
        "`corvane finalize` on captures of 44.1 kHz, stereo, 64 kbit/s in the "
        "page cache; the CPU time up to",
        "1,000 s is the start of a process:", "", *rows, "",
        f"Exponent of the instructions over the size: "
        f"{exponent_of(found, 'ours', 'bytes'):.4f}."])


def same_calls(result):
    small, large = result["wav_repairs"]
    return all(small[key] == large[key]
               for key in ("calls_on_file", "other_calls"))


def repairs_text(result):
    small, large = result["wav_repairs"]
    ratio = large["wall_s"]["median"] / small["wall_s"]["median"]
    verdict = "the same" if same_calls(result) else "NOT the same"
    return "\n".join([
        f"`corvane repair-wav` on {small['size']} and on {large['size']} "
        f"makes {verdict} system calls,",
        f"{len(large['calls_on_file'])} of them on the file (those by which "
        "threads wait for each other are not counted), and",
        f"takes {ratio:.2f} of the time on {large['size']}."])


def tables(result):
    return "\n\n".join(text(result) for text in (
        takes_text, halves_text, seals_text, repairs_text))


def bounds(result):
    counted = result["instructions"]
    clocked = result["takes"]["cpu_s"]["corvane"]
    return [
        ("CPU time of a take, exponent's distance from 1",
         abs(exponent_of(clocked, "mean") - 1), EXPONENT_LIMIT),
        ("instructions of a take, exponent's distance from 1",
         abs(exponent_of(counted, "all") - 1), EXPONENT_LIMIT),
        ("our own instructions of a take, exponent's distance from 1",
         abs(exponent_of(counted, "ours") - 1), EXPONENT_LIMIT),
        ("our own instructions for a second, late to early in a take, "
         "distance from 1",
         abs(late_to_early(counted, "ours") - 1), EXPONENT_LIMIT),
        ("our own instructions of a seal, exponent's distance from 1",
         abs(exponent_of(result["seals"], "ours", "bytes") - 1),
         EXPONENT_LIMIT),
        ("reads of a seal to what its bytes need", reads_to_need(
            result["seals"]), 1 + EXPONENT_LIMIT),
        ("WAV repair of 4 GiB: system calls that one of 1 KiB has not",
         0 if same_calls(result) else 1, 0),
    ]
