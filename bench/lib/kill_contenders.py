"""The recorders that section_kills.py kills, and how much is in their files.

All take raw PCM from a pipe as it is spoken. Amounts of audio are sample
frames.
"""

import dataclasses
import pathlib
import subprocess
from typing import Callable

from contenders import BIT_RATE, CHANNELS, RATE, RECORDERS, Contender
from crash_recorders import AAC_FRAME, kept_in, whole_frames

FRAME_BYTES = 2 * CHANNELS


def adts_kept(path):
    return kept_in(whole_frames(path))


def decoded_kept(path):
    """What a player gets to hear of a file that is no chain of frames.

    Without a look at edit lists the decoder gives a frame of its own for the
    encoder's priming.
    """
    done = subprocess.run(
        ["ffmpeg", "-v", "quiet", "-ignore_editlist", "1", "-i", str(path),
         "-f", "s16le", "-"],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False)
    return kept_in(len(done.stdout) // FRAME_BYTES // AAC_FRAME)


@dataclasses.dataclass(frozen=True)
class Killed(Contender):
    suffix: str = ".aac"
    kept: Callable[[pathlib.Path], int] = adts_kept

    def shown(self):
        return super().shown().replace(".aac", self.suffix)


def from_pipe(name):
    """One of those whose costs are compared, with a pipe for a source."""
    found = next(r for r in RECORDERS if r.name == name)
    return Killed(name, found.command.replace("{source}", "-"), found.reason,
                  found.program)


def fragmented(seconds, reason):
    return Killed(
        f"ffmpeg, MP4 in fragments of {seconds:g} s",
        "ffmpeg -nostdin -v error -y -f s16le "
        f"-ar {RATE} -ac {CHANNELS} -i - -c:a aac -b:a {BIT_RATE} "
        "-movflags +frag_keyframe+empty_moov+default_base_moof "
        f"-frag_duration {round(seconds * 1e6)} -flush_packets 1 {{target}}",
        reason, "ffmpeg", ".mp4", decoded_kept)


def gstreamer(name, options, reason):
    return Killed(
        name, "gst-launch-1.0 -q fdsrc ! "
        f"rawaudioparse pcm-format=s16le sample-rate={RATE} "
        f"num-channels={CHANNELS} ! audioconvert ! "
        f"avenc_aac bitrate={BIT_RATE} ! aacparse ! "
        f"audio/mpeg,stream-format=adts ! filesink location={{target}}"
        + options, reason, "gst-launch-1.0")


ALL = (
    from_pipe("bare loop"),
    from_pipe("corvane"),
    from_pipe("ffmpeg"),
    from_pipe("ffmpeg, flushing"),
    fragmented(1, "The container that is made for being cut off; flushed, or "
               "it would hold back whole fragments."),
    fragmented(0.1, "The same in fragments so short that their headers make "
               "the file an eighth larger."),
    gstreamer("GStreamer", "", "As it writes by itself: 64 KiB at a time."),
    gstreamer("GStreamer, unbuffered", " buffer-mode=unbuffered",
              "Every frame written when it is there."),
)
