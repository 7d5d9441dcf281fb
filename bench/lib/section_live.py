"""What a live recording costs, meter and all.

Kept under "recorders": {name: cpu_s and wakeups_per_s (median, least and most),
max_rss_kib}, "ratio": of corvane's CPU time to the least of the others', by
rounds.
"""

import dataclasses
import statistics

from measure import (Failed, measure_on_terminal, median_and_range,
                     must_succeed, rotated)
from sound_server import playing
from takes import MIB, target

TITLE = "A minute of live sound"
RATE = 48000
CHANNELS = 1
BIT_RATE = 64000
OURS = "corvane"
MOST_RATIO = 1.0

_SOUND = f"-r {RATE} -c {CHANNELS}"
_AAC = f"-c:a aac -b:a {BIT_RATE} -f adts -flush_packets 1"


@dataclasses.dataclass(frozen=True)
class LiveRecorder:
    """`command` is a shell's; it names {seconds} and {target}."""

    name: str
    command: str
    reason: str
    program: str = ""  # what has to be installed for it

    def words(self, seconds, path):
        command = self.command.format(seconds=seconds, target=path)
        return ["sh", "-c", command if "|" in command else f"exec {command}"]


RECORDERS = (
    LiveRecorder(
        OURS, f"build/bench/corvane record {{target}} -D pulse {_SOUND} "
        f"-b {BIT_RATE} --duration {{seconds}}",
        "The microphone by ALSA, the level on a terminal, a flush a second."),
    LiveRecorder(
        "arecord and ffmpeg", f"arecord -q -D pulse -t raw -f S16_LE {_SOUND} "
        f"-d {{seconds}} | ffmpeg -nostdin -v error -y -f s16le -ar {RATE} "
        f"-ac {CHANNELS} -i - {_AAC} {{target}}",
        "What one had to type before; no level.", "ffmpeg"),
    LiveRecorder(
        "ffmpeg", f"ffmpeg -nostdin -v error -y -f alsa -ar {RATE} "
        f"-ac {CHANNELS} -t {{seconds}} -i pulse {_AAC} {{target}}",
        "Its own ALSA input; no level.", "ffmpeg"),
    LiveRecorder(
        "GStreamer", "timeout --preserve-status -s INT {seconds} gst-launch-1.0 "
        f"-q -e alsasrc device=pulse ! audio/x-raw,format=S16LE,rate={RATE},"
        f"channels={CHANNELS} ! audioconvert ! avenc_aac bitrate={BIT_RATE} ! "
        "aacparse ! audio/mpeg,stream-format=adts ! "
        "filesink location={target} buffer-mode=unbuffered",
        "Its own ALSA source; no level.", "gst-launch-1.0"),
)


def run(bench):
    seconds, rounds = (5, 1) if bench.quick else (60, 3)
    recorders = {r.name: r for r in RECORDERS
                 if not r.program or r.program in bench.programs}
    pcm = bench.pcm(60, RATE, CHANNELS)
    with playing(pcm, RATE, CHANNELS) as environment:

        def record(name):
            path = target(bench, "live")
            words = recorders[name].words(seconds, path)
            cost = must_succeed(words, measure_on_terminal(words, environment))
            if path.stat().st_size < seconds * BIT_RATE / 8 / 4:
                raise Failed(f"{name} has recorded next to nothing")
            return cost

        costs = rotated(list(recorders), rounds, record)
    return {"seconds": seconds, "rounds": rounds,
            "ratio": ratio_of(costs),
            "recorders": {name: row_of(recorders[name], costs[name], seconds)
                          for name in recorders}}


def ratio_of(costs):
    """Of each round: the least of the others is the least by its median."""
    others = [name for name in costs if name != OURS]
    least = min(others, key=lambda name: statistics.median(
        cost.cpu_s for cost in costs[name]))
    return {"to": least, **median_and_range(
        [ours.cpu_s / other.cpu_s
         for ours, other in zip(costs[OURS], costs[least])])}


def row_of(recorder, costs, seconds):
    return {"command": recorder.command.format(seconds=seconds,
                                               target="TAKE.aac"),
            "reason": recorder.reason,
            "cpu_s": median_and_range([c.cpu_s for c in costs]),
            "wakeups_per_s": median_and_range(
                [c.wakeups / seconds for c in costs]),
            "max_rss_kib": statistics.median(c.max_rss_kib for c in costs)}


def tables(result):
    rows = ["| recorder | CPU, s | from, to | of a core | wake-ups a second "
            "| MiB |", "|:--|--:|:-:|--:|--:|--:|"]
    for name, row in result["recorders"].items():
        cpu = row["cpu_s"]
        rows.append(
            f"| {name} | {cpu['median']:.2f} "
            f"| {cpu['least']:.2f}, {cpu['most']:.2f} "
            f"| {cpu['median'] / result['seconds']:.2%} "
            f"| {row['wakeups_per_s']['median']:.0f} "
            f"| {row['max_rss_kib'] / MIB:.1f} |")
    ratio = result["ratio"]
    commands = [f"- {name}: `{row['command']}`. {row['reason']}"
                for name, row in result["recorders"].items()]
    return "\n".join([
        f"{result['seconds']} s of {CHANNELS} channel at {RATE} Hz and "
        f"{BIT_RATE // 1000} kbit/s through a sound server's device, in real "
        f"time, a terminal looking on; medians of {result['rounds']} rounds.",
        f"Round by round corvane takes {ratio['median']:.2f} of the CPU time "
        f"of {ratio['to']} ({ratio['least']:.2f} to {ratio['most']:.2f}).",
        "", *rows, "", *commands])


def bounds(result):
    return [("CPU of a live take, to the least of the others'",
             result["ratio"]["median"], MOST_RATIO)]
