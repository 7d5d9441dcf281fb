"""Four charts of one run of bench/compare: what a kill costs, what the exact
duration costs, CPU time and memory.

Run by bench/charts with the JSON and the folder for the pictures. Each is one
function from the JSON's sections to a figure. Colours tell Corvane, the limit
that none can beat and the others apart, or how right an answer is.
"""

import json
import pathlib
import sys

import matplotlib

matplotlib.use("Agg")  # no display needed

import matplotlib.pyplot as plt

OURS = "#2a9d5c"
OTHERS = "#5b6770"
LIMIT = "#8b9aa5"
RIGHT = OURS
HALF_RIGHT = "#d9820f"
WRONG = "#d62828"
INK = "#1d2429"
FAINT = "#5b6770"
GRID = "#e3e7ea"
LIMIT_NAMES = ("bare loop", "read pass")
LABEL_BOX = {"facecolor": "white", "edgecolor": "none", "pad": 0.5}
WIDTH = 8  # inches; the documents show 100 dots of each, the file holds 150
ROW = 0.42
HEAD, FOOT = 1.0, 0.62  # inches above and below the rows


def is_ours(name):
    return name.startswith("corvane")


def colour_of(name):
    if name in LIMIT_NAMES:
        return LIMIT
    return OURS if is_ours(name) else OTHERS


def told_ms(value):
    """A duration as a person says it."""
    if value < 10:
        return f"{value:.1f} ms"
    return f"{value:.0f} ms" if value < 1000 else f"{value / 1000:.1f} s"


def told_log_ms(value, _):
    return f"{value:g} ms" if value < 1000 else f"{value / 1000:g} s"


def sheet(names, title, story, is_quick, panels=1, left=2.75, right=0.25):
    """A figure with a row for each name, the first on top, and its panels."""
    height = HEAD + ROW * len(names) + FOOT
    figure, every_axes = plt.subplots(
        1, panels, figsize=(WIDTH, height), facecolor="white", squeeze=False)
    figure.subplots_adjust(
        left=left / WIDTH, right=1 - right / WIDTH, wspace=0.12,
        top=1 - HEAD / height, bottom=FOOT / height)
    figure.text(0.25 / WIDTH, 1 - 0.33 / height, title, fontsize=15,
                fontweight="bold", va="center")
    figure.text(0.25 / WIDTH, 1 - 0.52 / height, story, fontsize=9,
                color=FAINT, va="top", linespacing=1.35)
    if is_quick:
        figure.text(0.5, 0.5, "a quick run: no figures", fontsize=30,
                    color=FAINT, alpha=0.3, ha="center", rotation=12)
    for axes in every_axes[0]:
        dress(axes, names)
    label_rows(every_axes[0][0], names)
    return figure, every_axes[0]


def dress(axes, names):
    axes.set_ylim(len(names) - 0.5, -0.5)
    axes.set_yticks(range(len(names)), [""] * len(names))
    axes.tick_params(axis="both", length=0)
    axes.tick_params(axis="x", which="minor", length=0)
    axes.grid(axis="x", color=GRID, linewidth=0.8)
    axes.set_axisbelow(True)
    for side in axes.spines.values():
        side.set_visible(False)


def label_rows(axes, names):
    axes.set_yticks(range(len(names)), names)
    for label, name in zip(axes.get_yticklabels(), names):
        label.set_color(colour_of(name) if is_ours(name) else INK)
        label.set_fontweight("bold" if is_ours(name) else "normal")


def draw_range(axes, row, span, colour, scale=1.0):
    """A line from the least to the most, and a dot for the median."""
    axes.plot([span["least"] * scale, span["most"] * scale], [row, row],
              color=colour, linewidth=3, alpha=0.35, solid_capstyle="round")
    axes.plot(span["median"] * scale, row, "o", color=colour, markersize=8)


def tell(axes, row, figure, colour, words, words_colour):
    """The median in figures to the right of a row, and words below it."""
    across = axes.get_yaxis_transform()
    axes.text(1.03, row - 0.14 * bool(words), figure, color=colour,
              fontweight="bold", va="center", transform=across)
    axes.text(1.03, row + 0.23, words, fontsize=8, color=words_colour,
              va="center", transform=across)


def loss(sections):
    found = sections["kills"]
    rows = sorted(found["recorders"].items(),
                  key=lambda item: item[1]["lost_ms"]["median"])
    least, most = found["kill_between_s"]
    figure, (axes,) = sheet(
        [name for name, _ in rows], "Lost at a kill",
        f"Recording in real time, {found['rate'] / 1000:g} kHz, "
        f"{found['channels']} channels, {found['bit_rate'] // 1000} kbit/s; "
        f"SIGKILL at a random moment {least} to {most} s\nafter the start. A "
        "faint dot is one kill, the bar the median. Logarithmic scale.",
        found["quick"], right=1.55)
    for at, (name, row) in enumerate(rows):
        colour = colour_of(name)
        axes.plot(row["losses_ms"], [at] * row["kills"], "o", color=colour,
                  markersize=5, alpha=0.25, markeredgewidth=0)
        axes.plot(row["lost_ms"]["median"], at, "|", color=colour,
                  markersize=17, markeredgewidth=3)
        empty = (f"{row['kept_nothing']} of {row['kills']} kept nothing"
                 if row["kept_nothing"] else "")
        tell(axes, at, told_ms(row["lost_ms"]["median"]), colour, empty, WRONG)
    axes.set_xscale("log")
    axes.set_xlim(30, 60000)
    axes.set_xticks([100, 1000, 10000])
    axes.xaxis.set_major_formatter(told_log_ms)
    axes.set_xlabel("audio lost")
    return figure


def verdict(row, seconds):
    """(colour, words) on a reader's answers, sound captures and damaged."""
    off = row["off_s"]
    if off is None:
        return WRONG, "does not know"
    if abs(off) >= seconds / 1000:
        return WRONG, f"a guess, {off / seconds * 100:+.1f}%"
    damaged = any(off != 0 for off in row["off_s_by_damage"].values())
    if off != 0:
        worse = ", worse if damaged" * damaged
        return HALF_RIGHT, f"{off * 1000:+.0f} ms{worse}"
    if damaged:
        return HALF_RIGHT, "exact, unless damaged"
    if row["resolution_s"] >= 1:
        return HALF_RIGHT, "right, in whole seconds"
    return RIGHT, "exact"


def duration(sections):
    found = sections["duration"]
    rows = sorted(found["readers"].items(),
                  key=lambda item: item[1]["wall_s"]["median"])
    figure, (axes,) = sheet(
        [name for name, _ in rows], "Time to tell how long a capture is",
        f"Of a capture of {found['seconds'] / 3600:.1f} hours, "
        f"{found['bytes'] / 1e6:.0f} MB, in the page cache. Whole commands, "
        "from start to exit: median and range.\nLogarithmic scale. The colour "
        "tells whether the answer is right, also on damaged captures.",
        found["quick"], right=2.2)
    for at, (name, row) in enumerate(rows):
        colour, words = verdict(row, found["seconds"])
        if name in LIMIT_NAMES:
            colour, words = LIMIT, "the limit: reads it once"
        draw_range(axes, at, row["wall_s"], colour, 1000)
        tell(axes, at, told_ms(row["wall_s"]["median"] * 1000), colour, words,
             colour)
    axes.set_xscale("log")
    axes.margins(x=0.08)
    axes.xaxis.set_major_formatter(told_log_ms)
    axes.set_xlabel("time on the clock")
    return figure


def cpu(sections):
    parts = [(sections["take"],
              f"a take of {sections['take']['seconds']:g} s"),
             (sections["startup"],
              f"a take of {sections['startup']['seconds']:g} s: start-up")]
    names = list(parts[0][0]["recorders"])
    figure, every_axes = sheet(
        names, "CPU time, to what the codec alone costs",
        "User and system time over that of a bare loop around the same "
        "encoder (read, convert, encode, write).\nMedian and range of rounds "
        "that took turns.",
        any(found["quick"] for found, _ in parts), panels=2, left=1.5)
    for axes, (found, label) in zip(every_axes, parts):
        limit_s = found["recorders"][LIMIT_NAMES[0]]["cpu_s"]["median"]
        axes.axvline(1, color=LIMIT, linewidth=1.2, linestyle=(0, (4, 3)))
        for at, name in enumerate(names):
            row = found["recorders"][name]
            draw_range(axes, at, row["cpu_s"], colour_of(name), 1 / limit_s)
            axes.annotate(f"{row['cpu_ratio']:.2f}", (row["cpu_ratio"], at),
                          xytext=(0, 7), textcoords="offset points",
                          ha="center", color=colour_of(name), fontsize=9,
                          fontweight="bold", bbox=LABEL_BOX)
        axes.set_xlabel(label)
        axes.margins(x=0.12)
    return figure


def memory(sections):
    found = sections["take"]
    names = list(found["recorders"])
    lengths = found["corvane_kib_by_seconds"]
    figure, (axes,) = sheet(
        names, "Peak resident memory",
        f"Of a take of {found['seconds']:g} s. Corvane's by the length of the "
        "take: " + ", ".join(f"{kib / 1024:.1f} MiB at {seconds} s"
                             for seconds, kib in lengths.items()) + ".",
        found["quick"], left=1.5, right=0.6)
    for at, name in enumerate(names):
        mib = found["recorders"][name]["max_rss_kib"]["median"] / 1024
        axes.barh(at, mib, height=0.58, color=colour_of(name))
        axes.text(mib, at, f" {mib:.1f}", va="center", fontweight="bold",
                  color=colour_of(name))
    axes.set_xlabel("MiB")
    return figure


CHARTS = {loss: ["kills"], duration: ["duration"], cpu: ["take", "startup"],
          memory: ["take"]}


def main(source, folder):
    sections = json.loads(source.read_text())["sections"]
    plt.rcParams.update({"font.family": "DejaVu Sans", "font.size": 10,
                         "text.color": INK, "axes.labelcolor": FAINT,
                         "xtick.color": FAINT, "ytick.color": INK})
    for draw, needed in CHARTS.items():
        if any(name not in sections for name in needed):
            print(f"Left out, for it was not measured: {draw.__name__}")
            continue
        path = folder / f"benchmark-{draw.__name__}.png"
        figure = draw(sections)
        figure.savefig(path, dpi=150)
        plt.close(figure)
        print(path)


if __name__ == "__main__":
    main(*map(pathlib.Path, sys.argv[1:]))
