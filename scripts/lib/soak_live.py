"""An hour at the microphone: records a sound server's device in real time while
every core is busy, and holds that not one sample went missing.

soak_live.py CORVANE MINUTES FOLDER    exit status 0: nothing was lost
"""

import contextlib
import json
import math
import multiprocessing
import os
import pathlib
import subprocess
import sys
import wave

from sound_server import playing

SPEECH = pathlib.Path("/usr/share/sounds/alsa/Front_Center.wav")
RATE = 48000
# What a start and an end take that aren't the take's.
MOST_BESIDE_S = 3


@contextlib.contextmanager
def busy_cores():
    """A program at normal priority that never waits, for each core."""
    burners = [multiprocessing.Process(target=burn, daemon=True)
               for _ in range(os.cpu_count())]
    for burner in burners:
        burner.start()
    try:
        yield
    finally:
        for burner in burners:
            burner.kill()


def burn():
    number = 1.0
    while True:
        number = math.sin(number) + 1


def speech_pcm(folder):
    path = folder / "speech.raw"
    with wave.open(str(SPEECH)) as sound:
        path.write_bytes(sound.readframes(sound.getnframes()))
    return path


def record(corvane, minutes, folder):
    with playing(speech_pcm(folder), RATE, 1) as environment, busy_cores():
        done = subprocess.run(
            [corvane, "record", "-D", "pulse", "-r", str(RATE), "-c", "1",
             "--duration", f"{minutes}m", str(folder / "live.aac")],
            env={**os.environ, **environment}, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(f"corvane ended with status {done.returncode}")
    return json.loads(done.stdout)


def main():
    corvane, minutes, folder = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    take = record(corvane, minutes, folder)
    late_s = take["wallMs"] / 1000 - minutes * 60
    whole = (take["overruns"] == 0 and take["endedBy"] == "duration"
             and take["sampleFrames"] == minutes * 60 * RATE
             and late_s <= MOST_BESIDE_S)
    print(f"{minutes} min: {take['sampleFrames']} sample frames, "
          f"{take['overruns']} overruns ({take['overrunMs']} ms), "
          f"{late_s:.2f} s behind the clock, longest wait for audio "
          f"{take['longestGapMs']} ms, longest flush "
          f"{take['longestFlushMs']} ms: {'whole' if whole else 'NOT WHOLE'}")
    return 0 if whole else 1


if __name__ == "__main__":
    sys.exit(main())
