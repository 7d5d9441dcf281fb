"""The cuts of the power in one picture: what four recorders kept of each.

Times are seconds of the take; lanes come from power_demo.py.
"""

import matplotlib.pyplot as plt
import numpy
from PIL import Image

from crash_picture import INK, KEPT, LOST, SOUND, Picture, envelope, told

COLOURS = 16  # in the file; it needs no more, and is small that way
NOTE = ("All four write onto one ext4 and hear the same. Each bar is what was "
        "left when the power was cut at its end: the disk has all that it was "
        "sent by then, and what is red had\nnot left the memory. Corvane "
        "flushes every second; the others leave it to the system. arecord "
        "reads from a device of ALSA's file plugin that is fed in real time.")


def draw(path, pcm, rate, moments, lanes):
    samples = numpy.frombuffer(pcm, dtype="<i2")
    length = len(samples) / rate
    plt.rcParams.update({"font.family": "DejaVu Sans", "font.size": 12,
                         "text.color": INK, "xtick.color": INK})
    figure = plt.figure(figsize=(10, 7.4), facecolor="white")
    rows = figure.add_gridspec(
        1 + len(lanes), 1, height_ratios=[0.6] + [1] * len(lanes), left=0.15,
        right=0.86, top=0.815, bottom=0.135, hspace=0.2)
    sound = figure.add_subplot(rows[0])
    draw_title(figure, len(moments), length)
    draw_sound(sound, samples, length, moments)
    for number, lane in enumerate(lanes, 1):
        axes = figure.add_subplot(rows[number], sharex=sound)
        draw_lane(axes, lane, moments)
    axes.tick_params(axis="x", labelbottom=True, length=4)
    axes.xaxis.set_major_formatter(lambda x, _: f"{x:.0f} s")
    figure.savefig(path, dpi=150)
    plt.close(figure)
    make_small(path)


def make_small(path):
    with Image.open(path) as picture:
        few = picture.convert("RGB").quantize(COLOURS, dither=Image.Dither.NONE)
    few.save(path, optimize=True)


def draw_title(figure, count, length):
    figure.text(0.02, 0.94, f"Four recorders, one disk, the power cut {count} "
                f"times in {length:.0f} seconds", fontsize=17,
                fontweight="bold")
    for left, colour, word in ((0.02, KEPT, "kept"), (0.105, LOST, "lost")):
        figure.text(left, 0.893, f"■ {word}", color=colour, fontsize=13,
                    fontweight="bold")
    figure.text(0.02, 0.018, NOTE, fontsize=7.9, color=SOUND, linespacing=1.4)


def draw_sound(axes, samples, length, moments):
    height = envelope(samples, 700)
    axes.fill_between(numpy.linspace(0, length, len(height)), -height, height,
                      color=SOUND, linewidth=0)
    axes.set_xlim(0, length)
    Picture.bare(axes)
    name(axes, "the speech", "")
    for number, moment in enumerate(moments, 1):
        axes.annotate(f"✖\n{number}", (moment, 1),
                      xycoords=("data", "axes fraction"), xytext=(0, 2),
                      textcoords="offset points", ha="center", va="bottom",
                      fontsize=10, fontweight="bold", linespacing=1.0)
        axes.axvline(moment, color=INK, linewidth=0.8,
                     linestyle=(0, (3, 2)))


def draw_lane(axes, lane, moments):
    """A bar for each cut, the first on top."""
    for number, (moment, kept) in enumerate(zip(moments, lane.kept_s)):
        axes.barh(-number, kept, height=0.72, color=KEPT)
        axes.barh(-number, moment - kept, left=kept, height=0.72, color=LOST)
        axes.text(moment + 0.8, -number, lost_words(moment - kept, kept),
                  color=LOST, va="center", fontsize=8.5, fontweight="bold")
    axes.set_ylim(0.6 - len(moments), 0.6)
    Picture.bare(axes)
    name(axes, lane.name, lane.manner)
    worst = max(moment - kept for moment, kept in zip(moments, lane.kept_s))
    axes.text(1.015, 0.62, "at worst", transform=axes.transAxes, va="center",
              fontsize=9.5, color=SOUND)
    axes.text(1.015, 0.4, f"{told(worst)} lost", transform=axes.transAxes,
              va="center", color=LOST, fontsize=12, fontweight="bold")


def lost_words(lost, kept):
    return told(lost) if kept else f"all {told(lost)}"


def name(axes, word, manner):
    axes.text(-0.015, 0.62 if manner else 0.5, word, ha="right", va="center",
              transform=axes.transAxes, fontsize=13, fontweight="bold")
    axes.text(-0.015, 0.45, manner, ha="right", va="top",
              transform=axes.transAxes, fontsize=9, color=SOUND)
