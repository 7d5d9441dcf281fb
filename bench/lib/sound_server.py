"""A sound server of one's own without a sound card: what is played into it can
be recorded from ALSA's device `pulse`.
"""

import contextlib
import os
import pathlib
import subprocess
import tempfile

from measure import Failed

SINK = "corvane_stand_in"
READY_SECONDS = 20


@contextlib.contextmanager
def playing(pcm, rate, channels):
    """Plays the s16le file `pcm` over and over; yields the environment in which
    the device `pulse` hears it."""
    with tempfile.TemporaryDirectory(prefix="sound-") as folder:
        environment = {"HOME": folder, "XDG_RUNTIME_DIR": folder,
                       "PULSE_RUNTIME_PATH": folder,
                       "PULSE_SOURCE": f"{SINK}.monitor"}
        mine = {**os.environ, **environment}
        with server(folder, mine, rate, channels), player(mine, pcm, rate,
                                                          channels):
            yield environment


@contextlib.contextmanager
def server(folder, environment, rate, channels):
    socket = pathlib.Path(folder, "native")
    with ended(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                "-L", f"module-null-sink sink_name={SINK} rate={rate} "
                f"channels={channels} format=s16le",
                "-L", f"module-native-protocol-unix socket={socket}"],
               environment):
        # It asks until somebody answers.
        asked = subprocess.run(
            ["sh", "-c", "until pactl info; do :; done"], env=environment,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            timeout=READY_SECONDS, check=False)
        if asked.returncode != 0:
            raise Failed("the sound server doesn't answer")
        yield


def player(environment, pcm, rate, channels):
    return ended(
        ["sh", "-c", 'while cat "$1"; do :; done | pacat --playback --raw '
         f"--format=s16le --rate={rate} --channels={channels}", "sh", str(pcm)],
        environment)


@contextlib.contextmanager
def ended(command, environment):
    """Runs a command meanwhile; its whole group is ended behind it."""
    with subprocess.Popen(command, env=environment, process_group=0,
                          stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL) as process:
        try:
            yield
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, 15)
