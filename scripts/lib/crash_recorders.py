"""The recorders of the crash demonstration: how they are run, fed and killed,
and what is then in their files. All amounts of audio are sample frames.
"""

import dataclasses
import fcntl
import os
import pathlib
import subprocess
import sys
import termios

from speech import FRAME_BYTES, RATE

AAC_FRAME = 1024
PIPE_BYTES = 1 << 20  # the feeder never waits for a recorder that starts
FOLDER = pathlib.Path("build/crash-demo")
TAKE = FOLDER / "take.aac"
INPUT = ["-i", "-", "-r", str(RATE), "-c", "1", "-b", "128000"]


def corvane(verb):
    return ["build/release/corvane", verb, *INPUT, str(TAKE)]


def ffmpeg(number):
    source = ["-f", "s16le", "-ar", str(RATE), "-ac", "1", "-i", "-"]
    return ["ffmpeg", *source, "-b:a", "128k", str(ffmpeg_file(number))]


def ffmpeg_file(number):
    return FOLDER / f"ffmpeg-{number:02}.aac"


@dataclasses.dataclass
class Segment:
    """What became of the audio between a recorder's start and its end."""

    fed: int
    unread: int
    kept: int

    @property
    def lost(self):
        """Of what it was fed; a pipe's unread rest was never in its hands."""
        return self.fed - self.kept

    @property
    def missing(self):
        """Of what was said."""
        return self.lost + self.unread

    @property
    def expected_loss(self):
        """The codec's look-ahead, and the AAC frame that was being filled."""
        return 2 * AAC_FRAME + self.fed % AAC_FRAME


class Recorder:
    """A process that reads PCM from a pipe whose both ends stay known here."""

    def __init__(self, command, log, frame_bytes=FRAME_BYTES):
        self.command = command
        self.log = log
        self.frame_bytes = frame_bytes
        self.written = 0
        self.reading, self.writing = os.pipe()
        fcntl.fcntl(self.writing, fcntl.F_SETPIPE_SZ, PIPE_BYTES)
        self.process = subprocess.Popen(
            command, stdin=self.reading, stdout=subprocess.PIPE, stderr=log)

    def feed(self, pcm):
        self.written += os.write(self.writing, pcm) // self.frame_bytes

    def kill(self):
        if self.process.poll() is not None:
            sys.exit(f"Ended before it was killed: {' '.join(self.command)}\n"
                     f"Its messages are in {self.log.name}.")
        self.process.kill()

    def fed_at_death(self):
        """What it had read from the pipe, and what it had not; closes it."""
        self.process.communicate()
        left = bytearray(4)
        fcntl.ioctl(self.reading, termios.FIONREAD, left)
        os.close(self.writing)
        os.close(self.reading)
        unread = int.from_bytes(left, sys.byteorder) // self.frame_bytes
        return self.written - unread, unread

    def end(self):
        """The audio ends and the recorder may finish; its standard output."""
        os.close(self.writing)
        os.close(self.reading)
        output = self.process.communicate(timeout=30)[0]
        if self.process.returncode != 0:
            sys.exit(f"Failed: {' '.join(self.command)}\n"
                     f"Its messages are in {self.log.name}.")
        return output


def whole_frames(path):
    """Counts AAC frames up to the first byte that belongs to none."""
    data = path.read_bytes() if path.exists() else b""
    count = position = 0
    while position + 7 <= len(data) and data[position] == 0xFF:
        length = int.from_bytes(data[position + 3:position + 6], "big")
        length = length >> 5 & 0x1FFF
        if length < 7 or position + length > len(data):
            break
        position += length
        count += 1
    return count


def kept_in(frames):
    """The first frame of each start holds the encoder's priming, no audio."""
    return AAC_FRAME * max(frames - 1, 0)
