"""The crash demonstration in one picture: what two recorders kept.

Times are seconds of the take; segments come from crash_demo.py and count
sample frames.
"""

import matplotlib

matplotlib.use("Agg")  # no display needed

import matplotlib.pyplot as plt
import numpy

KEPT = "#2a9d5c"
LOST = "#d62828"
SOUND = "#5b6770"
INK = "#1d2429"
FAINT_LOST = "#eb9a95"


def envelope(samples, bins):
    """The loudest sample of each of `bins` equal stretches, 0 to 1."""
    usable = samples[:len(samples) // bins * bins].astype(numpy.float64)
    return numpy.abs(usable).reshape(bins, -1).max(axis=1) / 32768


def told(duration):
    """A duration as a person says it."""
    return f"{duration * 1000:.0f} ms" if duration < 1 else f"{duration:.1f} s"


class Picture:
    def __init__(self, pcm, rate, moments, ours, theirs):
        self.samples = numpy.frombuffer(pcm, dtype="<i2")
        self.rate = rate
        self.moments = moments
        self.ours = ours
        self.theirs = theirs
        self.length = len(self.samples) / rate

    def spans(self, segments):
        """(start, end of what was kept, end) of each segment."""
        edges = [0.0, *self.moments, self.length]
        for start, end, segment in zip(edges, edges[1:], segments):
            yield start, end - segment.missing / self.rate, end

    def lost(self, segments):
        return sum(s.missing for s in segments) / self.rate

    def loudness_lost(self, index):
        """Of the sound that Corvane lost at a kill."""
        end = int(self.moments[index] * self.rate)
        lost = self.samples[max(0, end - self.ours[index].missing):end]
        return numpy.abs(lost.astype(numpy.float64)).mean() if len(lost) else 0

    def draw(self, path):
        plt.rcParams.update({"font.family": "DejaVu Sans", "font.size": 12,
                             "text.color": INK, "axes.labelcolor": INK,
                             "xtick.color": INK, "ytick.color": INK})
        figure = plt.figure(figsize=(15, 9.6), facecolor="white")
        above = figure.add_gridspec(
            3, 1, height_ratios=[1.0, 0.8, 0.8], left=0.105, right=0.885,
            top=0.825, bottom=0.475, hspace=0.16)
        below = figure.add_gridspec(
            1, 2, width_ratios=[1, 1.5], left=0.105, right=0.885, top=0.335,
            bottom=0.085, wspace=0.12)
        sound = figure.add_subplot(above[0])
        lanes = [figure.add_subplot(above[row], sharex=sound)
                 for row in (1, 2)]
        self.draw_title(figure)
        self.draw_sound(sound)
        self.draw_lane(lanes[0], "Corvane", "one file,\ncontinued", self.ours)
        self.draw_lane(lanes[1], "ffmpeg", "at its default;\na new file\n"
                       "every time", self.theirs)
        self.draw_kills(sound, lanes)
        self.draw_zoom(figure.add_subplot(below[0]))
        self.draw_losses(figure.add_subplot(below[1]))
        figure.savefig(path, dpi=100)
        plt.close(figure)

    def draw_title(self, figure):
        figure.text(0.105, 0.945, f"Two recorders, killed {len(self.moments)} "
                    f"times in {self.length:.0f} seconds of speech",
                    fontsize=23, fontweight="bold")
        figure.text(0.105, 0.012, "SIGKILL at random moments. Both write AAC "
                    "at 128 kbit/s as they go: Corvane frame by frame, ffmpeg "
                    "256 KiB at a time, which is its default. Told to\n"
                    "flush every packet it loses 59 ms at a kill, in the "
                    "median, and so does Corvane: docs/benchmarks.md.",
                    fontsize=11, color=SOUND, linespacing=1.4)
        for left, colour, word in ((0.105, KEPT, "kept"),
                                   (0.172, LOST, "lost")):
            figure.text(left, 0.907, f"■ {word}", color=colour, fontsize=15,
                        fontweight="bold")

    def draw_sound(self, axes):
        height = envelope(self.samples, 1500)
        time = numpy.linspace(0, self.length, len(height))
        axes.fill_between(time, -height, height, color=SOUND, linewidth=0)
        axes.set_xlim(0, self.length)
        self.bare(axes)
        self.name(axes, "the speech", "")

    def draw_lane(self, axes, name, manner, segments):
        for start, kept, end in self.spans(segments):
            axes.barh(0, kept - start, left=start, height=1, color=KEPT)
            # The edge keeps a loss visible that is narrower than a dot.
            if kept < end:
                axes.barh(0, end - kept, left=kept, height=1, color=LOST,
                          edgecolor=LOST, linewidth=1.2)
        axes.set_ylim(-0.5, 0.5)
        self.bare(axes)
        self.name(axes, name, manner)
        lost = self.lost(segments)
        axes.text(1.012, 0.66, f"{100 * (1 - lost / self.length):.1f} % kept",
                  color=KEPT, transform=axes.transAxes, va="center",
                  fontsize=15, fontweight="bold")
        axes.text(1.012, 0.3, f"{told(lost)} lost", color=LOST,
                  transform=axes.transAxes, va="center", fontsize=15,
                  fontweight="bold")

    def draw_kills(self, sound, lanes):
        for number, moment in enumerate(self.moments, 1):
            sound.annotate(
                f"✖\n{number}", (moment, 1),
                xycoords=("data", "axes fraction"), xytext=(0, 2),
                textcoords="offset points", ha="center",
                va="bottom", fontsize=11, fontweight="bold", linespacing=1.0)
            for axes in (sound, lanes[1]):  # ours shows a thin red line
                axes.axvline(moment, color=INK, linewidth=0.8,
                             linestyle=(0, (3, 2)))
        sound.text(-0.012, 1.14, "killed", transform=sound.transAxes,
                   ha="right", va="center", fontweight="bold")
        lanes[-1].tick_params(axis="x", labelbottom=True, length=4)
        lanes[-1].xaxis.set_major_formatter(lambda x, _: f"{x:.0f} s")

    def draw_zoom(self, axes):
        """Around the kill at which we lost the loudest sound."""
        index = max(range(len(self.moments)), key=self.loudness_lost)
        moment = self.moments[index]
        lost = self.ours[index].missing / self.rate
        first = int((moment - 0.35) * self.rate)
        last = int((moment + 0.25) * self.rate)
        height = envelope(self.samples[first:last], 400)
        height = height / max(height.max(), 1e-9)
        time = numpy.linspace(-0.35, 0.25, len(height))
        gone = (time > -lost) & (time <= 0)
        axes.axvspan(-lost, 0, color=LOST, alpha=0.16, linewidth=0)
        axes.bar(time, 2 * height, bottom=-height, width=time[1] - time[0],
                 color=numpy.where(gone, LOST, KEPT))
        axes.axvline(0, color=INK, linewidth=1.4, linestyle=(0, (3, 2)))
        axes.text(0, 1.12, f"✖ {index + 1}", ha="center", va="bottom",
                  fontweight="bold")
        axes.text(-lost - 0.012, -1.2, f"{told(lost)} lost", color=LOST,
                  ha="right", va="center", fontweight="bold")
        axes.text(0.012, -1.2, "on in the same file", color=KEPT, va="center",
                  fontweight="bold")
        axes.set_xlim(-0.35, 0.25)
        axes.set_ylim(-1.4, 1.1)
        self.bare(axes)
        axes.set_title(f"Corvane at kill {index + 1}, close up", loc="left",
                       fontsize=14, fontweight="bold", pad=26)
        axes.tick_params(axis="x", labelbottom=True, length=4)
        axes.set_xticks([-0.3, -0.2, -0.1, 0.1, 0.2])
        axes.tick_params(axis="x", labelsize=10)
        axes.xaxis.set_major_formatter(lambda x, _: f"{x * 1000:+.0f} ms")

    def draw_losses(self, axes):
        numbers = numpy.arange(1, len(self.moments) + 1)
        pairs = (("Corvane", self.ours, -0.2, LOST),
                 ("ffmpeg at its default", self.theirs, 0.2,
                  FAINT_LOST))
        for name, segments, shift, colour in pairs:
            lost = [s.missing / self.rate for s in segments[:-1]]
            bars = axes.bar(numbers + shift, lost, 0.4, color=colour,
                            label=name)
            axes.bar_label(bars, [told(x) for x in lost], padding=3,
                           fontsize=9, rotation=90)
        self.bare(axes)
        axes.margins(y=0.24)
        axes.set_xticks(numbers, [f"✖ {n}" for n in numbers])
        axes.tick_params(axis="x", labelbottom=True)
        axes.set_title("Lost at each kill", loc="left", fontsize=14,
                       fontweight="bold", pad=26)
        axes.legend(frameon=False, ncols=2, loc="lower right",
                    bbox_to_anchor=(1, 1.06), borderaxespad=0)

    @staticmethod
    def name(axes, name, manner):
        axes.text(-0.012, 0.7 if manner else 0.5, name, ha="right",
                  va="center", transform=axes.transAxes, fontsize=15,
                  fontweight="bold")
        axes.text(-0.012, 0.5, manner, ha="right", va="top",
                  transform=axes.transAxes, fontsize=10.5, color=SOUND)

    @staticmethod
    def bare(axes):
        axes.set_yticks([])
        for side in axes.spines.values():
            side.set_visible(False)
        axes.tick_params(axis="x", labelbottom=False, length=0)


def draw(path, pcm, rate, moments, ours, theirs):
    Picture(pcm, rate, moments, ours, theirs).draw(path)
