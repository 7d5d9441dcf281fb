"""Two recorders hear the same speech and are killed at the same moments.

Run by scripts/crash-demo at the root of a checkout that is built. A feeder
writes raw PCM into the pipes of both at the pace of a microphone, and SIGKILL
ends both at moments that nobody has told them. Corvane goes on in the same
file; ffmpeg, which cannot, begins a new one.

All amounts of audio are sample frames unless a name says otherwise.
"""

import argparse
import json
import random
import shutil
import subprocess
import sys
import time

import crash_picture
from crash_recorders import (FOLDER, TAKE, Recorder, Segment, corvane, ffmpeg,
                             ffmpeg_file, kept_in, whole_frames)
from speech import FRAME_BYTES, RATE, speech

PIECE = RATE // 100  # what the feeder writes at once: 10 ms
TAKE_SECONDS = 100
KILLS = 12
LEAST_GAP_SECONDS = 2.0
TOO_LATE_SECONDS = 0.1
PICTURE = FOLDER / "crash-demo.png"


def kill_moments(chance):
    """Seconds from the start, anywhere but with a gap between any two."""
    spare = TAKE_SECONDS - (KILLS + 1) * LEAST_GAP_SECONDS
    points = sorted(chance.uniform(0, spare) for _ in range(KILLS))
    return [point + (i + 1) * LEAST_GAP_SECONDS
            for i, point in enumerate(points)]


class Take:
    """Both recorders through all kills, and what each segment came to."""

    def __init__(self, pcm, log):
        self.pcm = pcm
        self.log = log
        self.position = 0  # bytes fed
        self.frames = 0  # AAC frames in our file when this segment began
        self.ours = []
        self.theirs = []
        self.late = 0.0  # seconds, the most that the feeder was behind
        self.figures = None

    def record(self, moments):
        started = time.monotonic()
        self.recorders = self.begin()
        try:
            for moment in moments:
                self.feed_until(started, moment)
                self.kill_both(moment)
                self.recorders = self.begin()
            self.feed_until(started, TAKE_SECONDS)
            self.end_both()
        finally:
            for recorder in self.recorders:
                recorder.process.kill()

    def begin(self):
        number = len(self.ours) + 1
        verb = "record" if number == 1 else "resume"
        return (Recorder(corvane(verb), self.log),
                Recorder(ffmpeg(number), self.log))

    def feed_until(self, started, moment):
        """A microphone gives out a piece of sound when its time is over."""
        piece_bytes = PIECE * FRAME_BYTES
        while self.position < len(self.pcm):
            due = (self.position + piece_bytes) / FRAME_BYTES / RATE
            if due > moment:
                break
            wait_until(started + due)
            self.late = max(self.late, time.monotonic() - started - due)
            piece = self.pcm[self.position:self.position + piece_bytes]
            for recorder in self.recorders:
                recorder.feed(piece)
            self.position += len(piece)
        wait_until(started + moment)

    def kill_both(self, moment):
        for recorder in self.recorders:
            recorder.kill()
        self.note(*(recorder.fed_at_death() for recorder in self.recorders))
        print(f"  {moment:6.2f} s  killed, {len(self.ours)} of {KILLS}",
              file=sys.stderr)

    def end_both(self):
        ours, theirs = self.recorders
        self.figures = json.loads(ours.end())
        theirs.end()
        self.note((ours.written, 0), (theirs.written, 0))

    def note(self, our_feed, their_feed):
        """Each feed is what was fed and what was left unread."""
        frames = whole_frames(TAKE)
        ours = kept_in(frames - self.frames)
        self.frames = frames
        theirs = kept_in(whole_frames(ffmpeg_file(len(self.theirs) + 1)))
        # The last frame of a recording that ends in peace is filled up.
        self.ours.append(Segment(*our_feed, min(ours, our_feed[0])))
        self.theirs.append(Segment(*their_feed, min(theirs, their_feed[0])))


def wait_until(monotonic_seconds):
    time.sleep(max(0.0, monotonic_seconds - time.monotonic()))


def complaints(path):
    """The lines in which ffmpeg's decoder finds fault with a file."""
    done = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(path), "-f", "null", "-"],
        stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    return done.stderr.decode(errors="replace").splitlines()


def ms(frames):
    return frames * 1000 / RATE


def print_table(take, moments):
    print("""
  kill,      |              Corvane, ms                |     ffmpeg, ms
  at second  |      fed      kept     lost    formula  |     kept      lost""")
    rows = zip([*enumerate(moments, 1), None], take.ours, take.theirs)
    for kill, ours, theirs in rows:
        name, expected = "the end", ""
        if kill:
            name = f"{kill[0]:>2} {kill[1]:8.2f}"
            expected = f"{ms(ours.expected_loss):.1f}"
        print_row(name, ours.fed, ours.kept, ours.lost, expected, theirs.kept,
                  theirs.lost)
    fed, kept, lost = totals(take.ours)
    print_row("all", fed, kept, lost, "", *totals(take.theirs)[1:])
    exact = sum(s.lost == s.expected_loss for s in take.ours[:-1])
    unread = sum(s.unread for s in take.ours)
    print(f"\n{exact} of {KILLS} kills cost exactly what the formula says.\n"
          f"The feeder was at most {take.late * 1000:.0f} ms late; "
          f"{ms(unread):.0f} ms lay unread in Corvane's pipes.")
    if take.late > TOO_LATE_SECONDS:
        print("This machine was too busy to record in real time: the figures "
              "tell of that.\nRun it again when it is quiet.")


def totals(segments):
    return tuple(sum(getattr(segment, name) for segment in segments)
                 for name in ("fed", "kept", "lost"))


def print_row(name, fed, kept, lost, expected, their_kept, their_lost):
    print(f"{name:>12} | {ms(fed):8.1f} {ms(kept):9.1f} {ms(lost):8.1f} "
          f"{expected:>9}   | {ms(their_kept):8.1f} {ms(their_lost):9.1f}")


def print_explanation():
    print(f"""
fed      what the recorder had taken out of its pipe when it died: what was
         written into the pipe, less what still lay in it unread (FIONREAD)
kept     1024 sample frames for each whole AAC frame in the file, less the one
         frame of encoder's priming with which each start begins
formula  2048 + (fed mod 1024) sample frames at {RATE} Hz: the encoder's
         look-ahead, and the frame that was being filled. Audio that was read
         and not yet worked on is lost as well: a busy machine shows more.

ffmpeg at its default hands 256 KiB at a time to the system, 16 s at this bit
rate, and a kill takes what it still holds; told to flush every packet it loses
as little as Corvane: docs/benchmarks.md. It cannot go on in a file, so each
kill begins another one.""")


def print_verdicts(take):
    found = complaints(TAKE)
    print(f"\n{TAKE}: {take.frames} whole AAC frames, sealed at "
          f"{take.figures['durationMs']} ms;\n"
          f"ffmpeg's decoder complains {len(found)} times")
    print("".join(f"  {line}\n" for line in found), end="")
    files = [ffmpeg_file(i + 1) for i in range(KILLS + 1)]
    held = [path for path in files if path.exists() and path.stat().st_size]
    torn = sum(bool(complaints(path)) for path in held)
    print(f"ffmpeg's {len(files)} files: {len(files) - len(held)} empty, "
          f"{len(held)} with audio;\nthe decoder complains about {torn}")
    return not found


def seed_from_arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/crash-demo",
        description="Records speech with Corvane and with ffmpeg, kills both "
        "again and again, and shows what is left.")
    parser.add_argument("SEED", nargs="?", type=int,
                        default=random.randrange(10**6),
                        help="the moments of the kills follow from it")
    return parser.parse_args().SEED


def main():
    seed = seed_from_arguments()
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    pcm = speech(TAKE_SECONDS)
    (FOLDER / "speech.raw").write_bytes(pcm)
    moments = kill_moments(random.Random(seed))
    started = time.monotonic()
    print(f"Seed {seed}: {KILLS} kills in {TAKE_SECONDS} s of speech at "
          f"{RATE} Hz, mono.\n\n"
          f"first       {' '.join(corvane('record'))}\n"
          f"then        {' '.join(corvane('resume'))}\n"
          f"each time   {' '.join(ffmpeg(1))}\n",
          flush=True)
    with open(FOLDER / "messages.txt", "wb") as log:
        take = Take(pcm, log)
        take.record(moments)
    print_table(take, moments)
    print_explanation()
    sound = print_verdicts(take)
    crash_picture.draw(PICTURE, pcm, RATE, moments, take.ours, take.theirs)
    print(f"\n{time.monotonic() - started:.0f} s. Picture: {PICTURE}")
    return 0 if sound else 1


if __name__ == "__main__":
    sys.exit(main())
