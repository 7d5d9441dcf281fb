"""Who takes part in the comparisons: the command line of each, and why it has
these settings and no others.
"""

import dataclasses
import json
import re
import shlex
import textwrap
from typing import Callable

from measure import Cost

RATE = 44100
CHANNELS = 2
BIT_RATE = 64000
FRAME_SECONDS = 1024 / RATE
LIMIT = "bare loop"  # what the cost of a take is measured against
READ_LIMIT = "read pass"  # what the cost of a look is measured against
FAST_ROUNDS = 15
SLOW_ROUNDS = 3


@dataclasses.dataclass(frozen=True)
class Contender:
    """`command` names {source} and {target}; a recorder without {source}
    hears it on standard input."""

    name: str
    command: str
    reason: str
    program: str = ""  # what has to be installed for it

    def words(self, source, target=""):
        return [word.format(source=source, target=target)
                for word in self.command.split()]

    def shown(self):
        """The command as one would type it."""
        sound = "TAKE.aac" if isinstance(self, Reader) else "SOUND.raw"
        words = [word if word == "!" else shlex.quote(word)
                 for word in self.words(sound, "TAKE.aac")]
        heard = "" if "{source}" in self.command else f" < {sound}"
        return " ".join(words).replace("build/bench/", "") + heard


@dataclasses.dataclass(frozen=True)
class Reader(Contender):
    """One that tells how long a capture is."""

    says: Callable[[Cost], float | None] = lambda cost: None  # seconds
    resolution_s: float = 0.001  # an answer this near is exact
    rounds: int = FAST_ROUNDS  # fewer of those that take long


_FFMPEG_IN = f"-f s16le -ar {RATE} -ac {CHANNELS} -i {{source}}"
_FFMPEG_OUT = f"-c:a aac -b:a {BIT_RATE} -f adts"

RECORDERS = (
    Contender(
        LIMIT,
        f"build/bench/bare_loop {{target}} {RATE} {CHANNELS} {BIT_RATE}",
        "The limit: read, convert, encode, one write a frame, and nothing "
        "else."),
    Contender(
        "corvane", f"build/bench/corvane record {{target}} -i - -r {RATE} "
        f"-c {CHANNELS} -b {BIT_RATE}",
        "Host and plugin together, over the channel protocol. It hears a "
        "pipe's raw sound, flushes once a second, and seals the take."),
    Contender(
        "corvane, 20 ms", f"build/bench/corvane record {{target}} -i - "
        f"-r {RATE} -c {CHANNELS} -b {BIT_RATE} --chunk-ms 20",
        "The same in appends of 20 ms, as live sound comes, instead of large "
        "ones: what it costs that two threads wake each other for every "
        "append."),
    Contender(
        "ffmpeg", f"ffmpeg -nostdin -v error -y {_FFMPEG_IN} {_FFMPEG_OUT} "
        "{target}",
        "The same encoder with the same bit rate, and ffmpeg's own way to "
        "write: 256 KiB at a time, which costs least.", "ffmpeg"),
    Contender(
        "ffmpeg, flushing", f"ffmpeg -nostdin -v error -y {_FFMPEG_IN} "
        f"{_FFMPEG_OUT} -flush_packets 1 {{target}}",
        "The same, and every frame is written when it is there: what one "
        "chooses so that a crash costs little.", "ffmpeg"),
    Contender(
        "GStreamer", "gst-launch-1.0 -q filesrc location={source} ! "
        f"rawaudioparse pcm-format=s16le sample-rate={RATE} "
        f"num-channels={CHANNELS} ! audioconvert ! "
        f"avenc_aac bitrate={BIT_RATE} ! aacparse ! "
        "audio/mpeg,stream-format=adts ! "
        "filesink location={target} buffer-mode=unbuffered",
        "The same encoder again (its bindings of libavcodec), every frame "
        "written when it is there. Larger blocks from the source and a "
        "buffered sink were tried and made no difference.", "gst-launch-1.0"),
)


def _number(pattern, output, scale=1.0):
    """The last number that stands where the pattern's group does."""
    found = re.findall(pattern, output.decode(errors="replace"))
    return float(found[-1]) * scale if found else None


READERS = (
    Reader(
        READ_LIMIT, "build/bench/read_pass {source}",
        "The limit: reads the file once, 64 KiB at a time, and looks at "
        "nothing."),
    Reader(
        "corvane finalize", "build/bench/corvane finalize {source}",
        "The whole command: starts the plugin, looks at every frame, cuts a "
        "torn end off, syncs the file and prints the figures.",
        says=lambda cost: json.loads(cost.stdout)["durationMs"] / 1000),
    Reader(
        "faad -i", "faad -i {source}",
        "Goes from header to header.", "faad",
        says=lambda cost: _number(r"ADTS, ([\d.]+) sec", cost.stderr)),
    Reader(
        "ffprobe -count_packets", "ffprobe -v error -count_packets "
        "-show_entries stream=nb_read_packets -of default=nw=1 {source}",
        "How ffprobe is made to look at all frames.", "ffprobe",
        says=lambda cost: _number(r"nb_read_packets=(\d+)", cost.stdout,
                                  FRAME_SECONDS),
        rounds=SLOW_ROUNDS),
    Reader(
        "ffmpeg, copy to nothing", "ffmpeg -nostdin -v error -nostats "
        "-progress pipe:1 -i {source} -c copy -f null -",
        "How ffmpeg is made to look at all frames.", "ffmpeg",
        says=lambda cost: _number(r"out_time_us=(\d+)", cost.stdout, 1e-6),
        rounds=SLOW_ROUNDS),
    Reader(
        "ffmpeg, remux", "ffmpeg -nostdin -v error -nostats -y "
        "-progress pipe:1 -i {source} -c copy -f adts /dev/null",
        "What users do to have a capture with a known length; without a file "
        "behind it, so that no disk is measured.", "ffmpeg",
        says=lambda cost: _number(r"out_time_us=(\d+)", cost.stdout, 1e-6),
        rounds=SLOW_ROUNDS),
    Reader(
        "GStreamer's parser", "gst-launch-1.0 -q filesrc location={source} ! "
        "aacparse ! progressreport update-freq=1000 ! fakesink",
        "A player's way through the file, without a decoder. It tells its "
        "position in whole seconds.", "gst-launch-1.0",
        says=lambda cost: _number(r"(\d+) / \d+ seconds", cost.stdout),
        resolution_s=1.0, rounds=SLOW_ROUNDS),
    Reader(
        "mediainfo, all of it", "mediainfo --ParseSpeed=1 "
        "--Output=General;%Duration% {source}",
        "How mediainfo is made to look at all frames.", "mediainfo",
        says=lambda cost: _number(r"(\d+)", cost.stdout, 1e-3),
        rounds=1),
    Reader(
        "mediainfo", "mediainfo --Output=General;%Duration% {source}",
        "What it does by itself: looks at the beginning and the end.",
        "mediainfo", says=lambda cost: _number(r"(\d+)", cost.stdout, 1e-3)),
    Reader(
        "ffprobe", "ffprobe -v error -show_entries format=duration "
        "-of default=nw=1 {source}",
        "What it does by itself: guesses from the size and the first frames' "
        "bit rate.", "ffprobe",
        says=lambda cost: _number(r"duration=([\d.]+)", cost.stdout)),
)


def present(bench, contenders):
    """Those whose programs are here; tells which are left out."""
    here = []
    for contender in contenders:
        if contender.program and contender.program not in bench.programs:
            bench.say(f"left out, for there is no {contender.program}: "
                      f"{contender.name}")
        else:
            here.append(contender)
    return here


def command_block(names, contenders):
    """The commands of those named with their reasons, for a document."""
    lines = []
    for contender in contenders:
        if contender.name in names:
            lines += textwrap.wrap(f"{contender.name}: {contender.reason}", 94,
                                   initial_indent="# ",
                                   subsequent_indent="# ")
            shown = textwrap.wrap(contender.shown(), 94,
                                  subsequent_indent="  ",
                                  break_long_words=False,
                                  break_on_hyphens=False)
            lines += [f"{line} \\" for line in shown[:-1]] + shown[-1:]
    return "\n".join(["```sh", *lines, "```"])
