"""What it costs to know how long a capture is, and if the answer is right.

Kept of a reader, under its name:
  rounds                  of looks at the long one
  cpu_s, wall_s           median, least and most of them
  cpu_ratio, wall_ratio   of the medians, against one pass of reads
  max_rss_kib             likewise measured, not compared
  off_s                   by how much its answer is off on the long capture,
                          null where it has none, 0 where it is exact to
  resolution_s            what its answer is rounded to
  off_s_by_damage         the same on each of the damaged ones
"""

import os

from captures import damaged_captures, long_capture, make_room
from contenders import (BIT_RATE, CHANNELS, FAST_ROUNDS, RATE, READ_LIMIT,
                        READERS, RECORDERS, SLOW_ROUNDS, command_block,
                        present)
from measure import measure_success, rotated
from takes import MIB, figures, record, target

TITLE = "The exact duration of a night's capture"
TIMES = 161  # takes in the long one: 22.7 hours of 507 s each
OURS = "corvane finalize"
# At most this part of the time that each of these takes.
MOST_SHARES = {"ffprobe -count_packets": 1 / 30, "ffmpeg, remux": 1 / 45,
               "faad -i": 1 / 2.5}


def run(bench):
    readers = {r.name: r for r in present(bench, READERS)}
    take = make_take(bench, 30 if bench.quick else 507)
    offs = look_at_damage(bench, readers, take)
    capture = long_capture(take, TIMES)
    path = bench.folder / "long.aac"
    make_room(bench.folder, take.stat().st_size * TIMES)
    try:
        capture.write(path)
        os.sync()  # or the first to look would pay for the writing
        costs = look_at_length(bench, readers, path)
        size = path.stat().st_size
    finally:
        path.unlink(missing_ok=True)
    rows = {name: row_of(readers[name], costs, capture, offs[name])
            for name in readers}
    return {"bytes": size, "seconds": capture.seconds,
            "damaged_seconds": 2 * capture.seconds / TIMES, "readers": rows}


def make_take(bench, seconds):
    corvane = next(r for r in RECORDERS if r.name == "corvane")
    path = target(bench, "for the durations")
    record(corvane, bench.pcm(seconds, RATE, CHANNELS), path)
    return path


def off_by(reader, capture, cost):
    """The answer's error in seconds: 0 where it is exact, None without one."""
    said = reader.says(cost)
    if said is None:
        return None
    off = said - capture.seconds
    return 0.0 if abs(off) < reader.resolution_s else off


def look_at_damage(bench, readers, take):
    """{reader: {kind of damage: error}}; each gets a copy of its own."""
    bench.say("asking every reader about damaged captures")
    path = bench.folder / "damaged.aac"
    return {name: {
        capture.name: off_by(reader, capture, measure_success(
            reader.words(capture.write(path))))
        for capture in damaged_captures(take)
    } for name, reader in readers.items()}


def look_at_length(bench, readers, path):
    """{reader: [Cost]}. A round of the slow ones holds several of the fast."""
    by_rounds = {rounds: [name for name, reader in readers.items()
                          if reader.rounds == rounds]
                 for rounds in (FAST_ROUNDS, SLOW_ROUNDS, 1)}
    fast_in_slow = FAST_ROUNDS // SLOW_ROUNDS
    bench.say(f"asking about {path.stat().st_size / 1e6:.0f} MB, "
              f"{SLOW_ROUNDS} rounds and one of who takes longest")

    def ask(name):
        return measure_success(readers[name].words(path))

    return {**rotated(by_rounds[FAST_ROUNDS] * fast_in_slow
                      + by_rounds[SLOW_ROUNDS], SLOW_ROUNDS, ask),
            **rotated(by_rounds[1], 1, ask)}


def row_of(reader, costs, capture, offs):
    limit = figures(costs[READ_LIMIT])
    row = figures(costs[reader.name])
    for field in ("cpu", "wall"):
        row[f"{field}_ratio"] = (row[f"{field}_s"]["median"]
                                 / limit[f"{field}_s"]["median"])
    return {**row, "rounds": len(costs[reader.name]),
            "off_s": off_by(reader, capture, costs[reader.name][-1]),
            "off_s_by_damage": offs, "resolution_s": reader.resolution_s}


def off_text(off, seconds, resolution_s):
    if off is None:
        return "no answer"
    if off == 0:
        return "exact" if resolution_s < 1 else "right second"
    if abs(off) < seconds / 1000:
        return f"{off * 1000:+.0f} ms"
    return f"{off / seconds * 100:+.1f}%"


def cost_table(result):
    rows = ["| reader | rounds | CPU, s | from, to | ratio | wall, s "
            "| from, to | ratio | MiB | answer |",
            "|:--|--:|--:|:-:|--:|--:|:-:|--:|--:|:--|"]
    for name, row in result["readers"].items():
        cells = [name, str(row["rounds"])]
        for field in ("cpu", "wall"):
            time = row[f"{field}_s"]
            cells += [f"{time['median']:.3f}",
                      f"{time['least']:.3f}, {time['most']:.3f}",
                      f"{row[f'{field}_ratio']:.1f}"]
        cells += [f"{row['max_rss_kib']['median'] / MIB:.0f}",
                  off_text(row["off_s"], result["seconds"],
                           row["resolution_s"])
                  if name != READ_LIMIT else ""]
        rows.append(f"| {' | '.join(cells)} |")
    return "\n".join(rows)


def damage_table(result):
    rows = None
    for name, row in result["readers"].items():
        offs = row["off_s_by_damage"]
        if rows is None:
            rows = [f"| reader | {' | '.join(offs)} |",
                    "|:--" * (len(offs) + 1) + "|"]
        if name != READ_LIMIT:
            texts = [off_text(off, result["damaged_seconds"],
                              row["resolution_s"]) for off in offs.values()]
            rows.append(f"| {name} | {' | '.join(texts)} |")
    return "\n".join(rows)


def tables(result):
    return "\n".join([
        f"{result['bytes'] / 1e6:.0f} MB, {result['seconds'] / 3600:.1f} "
        f"hours at {RATE} Hz, {CHANNELS} channels, {BIT_RATE // 1000} kbit/s, "
        "synced and in the page",
        "cache. Medians of so many rounds; the ratios are to one pass of "
        "reads.", "",
        cost_table(result), "",
        "How far the same readers are off on two takes behind one another, "
        "whole and damaged:", "",
        damage_table(result), "",
        command_block(result["readers"], READERS)])


def bounds(result):
    ours = result["readers"][OURS]
    wrong = [off for off in (ours["off_s"], *ours["off_s_by_damage"].values())
             if off != 0]
    held_to = [(name, share) for name, share in MOST_SHARES.items()
               if name in result["readers"]]
    return [*((f"{OURS}, {word} in percent of {name}'s",
               100 * ours[field]["median"]
               / result["readers"][name][field]["median"], 100 * share)
              for name, share in held_to
              for field, word in (("cpu_s", "CPU"), ("wall_s", "wall time"))),
            (f"answers of {OURS} that are not exact", len(wrong), 0)]
