"""Speech to record: mono, 48000 Hz, 16 bits."""

import pathlib
import wave

RATE = 48000
FRAME_BYTES = 2
SAMPLES = pathlib.Path("/usr/share/sounds/alsa")


def speech(seconds, skipped=0):
    """The voices of alsa-utils, one after another, as long as that; from so
    many seconds on.
    """
    voices = b""
    for path in sorted(SAMPLES.glob("*_*.wav")):
        with wave.open(str(path)) as sample:
            voices += sample.readframes(sample.getnframes())
    start = int(skipped * RATE) * FRAME_BYTES
    end = start + int(seconds * RATE) * FRAME_BYTES
    return (voices * (end // len(voices) + 1))[start:end]
