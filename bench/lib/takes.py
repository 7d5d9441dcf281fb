"""Takes of one length by all recorders, for the sections that compare them.

What is measured of a recorder is kept under its name:
  cpu_s, wall_s, max_rss_kib  median, least and most of the rounds
  cpu_ratio, above_kib        of the medians, against the bare loop
  ffmpeg_ratio                the CPU of each round to ffmpeg's in it, where
                              there is one: median, least and most
  frames, bytes               of its file
  is_identical                whether that is the bare loop's to the byte
"""

from contenders import (BIT_RATE, CHANNELS, LIMIT, RATE, RECORDERS,
                        command_block, present)
from crash_recorders import whole_frames
from measure import Failed, measure_success, median_and_range, rotated

MIB = 1024  # in KiB
RIVAL = "ffmpeg"  # at its default


def target(bench, name):
    words = "".join(letter if letter.isalnum() else " " for letter in name)
    return bench.folder / f"take-{'-'.join(words.split())}.aac"


def record(recorder, source, path):
    """One take; its Cost."""
    path.unlink(missing_ok=True)
    hears = None if "{source}" in recorder.command else source
    return measure_success(recorder.words(source, path), hears)


def compare_takes(bench, seconds, rounds):
    recorders = {r.name: r for r in present(bench, RECORDERS)}
    source = bench.pcm(seconds, RATE, CHANNELS)
    bench.say(f"{rounds} rounds of {len(recorders)} takes of {seconds:g} s")
    files = {name: set() for name in recorders}

    def take(name):
        path = target(bench, name)
        cost = record(recorders[name], source, path)
        files[name].add(path.read_bytes())
        if len(files[name]) > 1:
            raise Failed(f"{name} made another file than the time before")
        return cost

    costs = rotated(list(recorders), rounds, take)
    return {"seconds": seconds, "rate": RATE, "channels": CHANNELS,
            "bit_rate": BIT_RATE, "rounds": rounds,
            "recorders": summarised(costs, files, bench)}


def summarised(costs, files, bench):
    limit = figures(costs[LIMIT])
    return {name: {
        **figures(costs[name]),
        "cpu_ratio": (figures(costs[name])["cpu_s"]["median"]
                      / limit["cpu_s"]["median"]),
        "ffmpeg_ratio": paired_ratio(costs, name),
        "above_kib": (figures(costs[name])["max_rss_kib"]["median"]
                      - limit["max_rss_kib"]["median"]),
        "frames": whole_frames(target(bench, name)),
        "bytes": target(bench, name).stat().st_size,
        "is_identical": files[name] == files[LIMIT],
    } for name in costs}


def paired_ratio(costs, name):
    if RIVAL not in costs:
        return None
    return median_and_range([ours.cpu_s / theirs.cpu_s for ours, theirs
                             in zip(costs[name], costs[RIVAL])])


def figures(costs):
    return {field: median_and_range([getattr(cost, field) for cost in costs])
            for field in ("cpu_s", "wall_s", "max_rss_kib")}


def disagreeing(result):
    """Who encodes as the bare loop does and yet made another file.

    GStreamer converts the samples in its own way, so its frames are others.
    """
    return [name for name, row in result["recorders"].items()
            if not row["is_identical"] and name != "GStreamer"]


def disagreement_bound(result):
    return ("recorders whose file is not the bare loop's to the byte "
            "(GStreamer apart)", len(disagreeing(result)), 0)


def file_text(name, row, limit):
    if name == LIMIT or row["is_identical"]:
        return f"{row['frames']} frames" + ("" if name == LIMIT
                                            else ", same bytes")
    if row["frames"] == limit["frames"]:
        return "as many frames, other bytes"
    return f"{row['frames']} frames"


def take_table(result, unit, scale, digits):
    """`scale` turns seconds into `unit`, told to so many `digits`."""
    rows = [f"| recorder | CPU, {unit} | from, to | ratio | to ffmpeg "
            f"| from, to | wall, {unit} | MiB | above | file |",
            "|:--|--:|:-:|--:|--:|:-:|--:|--:|--:|:--|"]
    limit = result["recorders"][LIMIT]
    for name, row in result["recorders"].items():
        cpu, wall = ({key: f"{value * scale:.{digits}f}"
                      for key, value in row[field].items()}
                     for field in ("cpu_s", "wall_s"))
        rows.append(
            f"| {name} | {cpu['median']} | {cpu['least']}, {cpu['most']} "
            f"| {row['cpu_ratio']:.3f} | {paired_text(row)} "
            f"| {wall['median']} "
            f"| {row['max_rss_kib']['median'] / MIB:.1f} "
            f"| {row['above_kib'] / MIB:.1f} "
            f"| {file_text(name, row, limit)} |")
    return "\n".join(rows)


def paired_text(row):
    paired = row["ffmpeg_ratio"]
    if paired is None:
        return "- | -"
    return (f"{paired['median']:.3f} "
            f"| {paired['least']:.3f}, {paired['most']:.3f}")


def take_commands(result):
    return command_block(result["recorders"], RECORDERS)
