"""One soak run in a picture: the memory of the process over the audio.

Run by scripts/soak with the folder that holds samples.csv and soak.json, which
gets soak.png.
"""

import csv
import json
import pathlib
import sys

import matplotlib

matplotlib.use("Agg")  # no display needed

import matplotlib.pyplot as plt

MEMORY = "#2a9d5c"
BOUND = "#d62828"
FAINT = "#5b6770"
INK = "#1d2429"
MINUTE = 60
TOLERANCE_KIB = 1024


def load(folder):
    with open(folder / "samples.csv", newline="") as file:
        rows = [{name: float(value) for name, value in row.items()}
                for row in csv.DictReader(file)]
    return rows, json.loads((folder / "soak.json").read_text())


def reference(rows):
    """What memory is judged against: its value behind the first minute."""
    return next(row["resident_kib"] for row in rows
                if row["audio_s"] >= MINUTE)


def title(figures):
    hours = figures["audio_s"] / 3600
    length = (f"{hours:.0f} hours" if hours >= 2
              else f"{figures['audio_s'] / MINUTE:.0f} minutes")
    return f"{length} of audio in one take"


def story(figures):
    channels = figures["channels"]
    return (f"{channels} channel{'s' if channels > 1 else ''} at "
            f"{figures['rate']} Hz in {figures['run_s'] / MINUTE:.1f} minutes: "
            f"{figures['frames_found']} of {figures['frames_due']} frames, "
            f"{figures['descriptors']} descriptors throughout, resident "
            f"{figures['least_resident_kib']} to "
            f"{figures['most_resident_kib']} KiB")


def draw_memory(axes, rows):
    value = reference(rows) / 1024
    bound = TOLERANCE_KIB / 1024
    unit, name = (3600, "hours") if rows[-1]["audio_s"] > 7200 else (
        MINUTE, "minutes")
    for edge in (value - bound, value + bound):
        axes.axhline(edge, color=BOUND, linewidth=1.2, linestyle=(0, (5, 3)))
    axes.text(1.01, value + bound, "+1 MiB", color=BOUND, va="center",
              transform=axes.get_yaxis_transform())
    axes.text(1.01, value - bound, "\N{MINUS SIGN}1 MiB", color=BOUND,
              va="center", transform=axes.get_yaxis_transform())
    axes.plot([row["audio_s"] / unit for row in rows],
              [row["resident_kib"] / 1024 for row in rows], color=MEMORY,
              linewidth=2)
    lows = [row["resident_kib"] / 1024 for row in rows] + [value - bound]
    highs = [row["resident_kib"] / 1024 for row in rows] + [value + bound]
    room = 0.15 * (max(highs) - min(lows))
    axes.set_ylim(min(lows) - room, max(highs) + room)
    axes.set_xlim(0, rows[-1]["audio_s"] / unit)
    axes.set_xlabel(f"{name} of audio")
    axes.set_ylabel("resident memory, MiB")
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)


def draw(folder):
    rows, figures = load(folder)
    plt.rcParams.update({"font.family": "DejaVu Sans", "font.size": 12,
                         "text.color": INK, "axes.labelcolor": INK,
                         "xtick.color": INK, "ytick.color": INK})
    figure = plt.figure(figsize=(13, 6.5), facecolor="white")
    axes = figure.add_axes((0.085, 0.13, 0.83, 0.65))
    figure.text(0.085, 0.91, title(figures), fontsize=23, fontweight="bold")
    figure.text(0.085, 0.845, story(figures), fontsize=11.5, color=FAINT)
    draw_memory(axes, rows)
    for line, complaint in enumerate(figures["complaints"][:2]):
        figure.text(0.1, 0.74 - 0.045 * line, f"✖ {complaint}", color=BOUND)
    figure.savefig(folder / "soak.png", dpi=100)


if __name__ == "__main__":
    draw(pathlib.Path(sys.argv[1]))
