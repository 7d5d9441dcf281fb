"""What has to hold of a file system that was mounted again after a cut."""

import dataclasses
import json
import subprocess

from power_takes import AAC_FRAME, ORPHANS, RAW, TAKE, WAV, WAV_HEADER_SIZE
from speech import RATE, speech

APPEND = RATE // 50  # what the program hands over at once in real time
MORE_SECONDS = 0.2  # that a resumed take gets

# The names of what is asserted, in the order of the table.
FLUSHED = "NothingThatWasFlushedIsMissing"
LOSS = "TheLossIsWithinItsBound"
OLD = "TheOldAudioIsThereUnderOneNameOrTheOther"
STOPPED = "AStoppedTakeIsWholeUnderItsName"
HEADER = "AHeaderIsTheOldOrTheNewAndTheAudioUntouched"
RECOVERY = "FinalizeAndResumeMakeItWhole"
RULES = (FLUSHED, LOSS, OLD, STOPPED, HEADER, RECOVERY)


@dataclasses.dataclass
class Verdict:
    """On one cut."""

    asked: set = dataclasses.field(default_factory=set)  # what was at stake
    broken: dict = dataclasses.field(default_factory=dict)  # rule: how
    lost_s: float = None  # of the long take, if the cut came in it
    bound_s: float = None

    def ask(self, rule, holds, otherwise):
        self.asked.add(rule)
        if not holds and rule not in self.broken:
            self.broken[rule] = otherwise


def frame_ends(data):
    """Where each whole frame ends, up to the first byte that is of none."""
    ends = []
    position = 0
    while position + 7 <= len(data) and data[position] == 0xFF:
        length = int.from_bytes(data[position + 3:position + 6], "big")
        length = length >> 5 & 0x1FFF
        if length < 7 or position + length > len(data):
            break
        position += length
        ends.append(position)
    return ends


def same_front(one, other):
    """How many bytes two files begin with alike."""
    length = min(len(one), len(other))
    if one[:length] == other[:length]:
        return length
    return next(i for i in range(length) if one[i] != other[i])


class Judge:
    def __init__(self, recording, program, folder, flush_every):
        self.recording = recording
        self.program = program
        self.folder = folder
        # Without flushes the take is held to what the default promises.
        self.flush_every = flush_every or 1

    def judge(self, moment_ns):
        """Looks first, then recovers as a user would."""
        verdict = Verdict()
        self._look_at_takes(moment_ns, verdict)
        self._look_at_loss(moment_ns, verdict)
        self._look_at_wav(moment_ns, verdict)
        self._recover(verdict)
        return verdict

    def _files(self):
        """The captures' bytes by their names."""
        return {path.name: path.read_bytes()
                for pattern in (TAKE, ORPHANS)
                for path in self.folder.glob(pattern)}

    def _look_at_takes(self, moment_ns, verdict):
        files = self._files()
        current, following = self.recording.at(moment_ns)
        for take in self.recording.takes:
            if take.began_ns > moment_ns:
                break
            promised = take.promised(moment_ns)
            if take is not current:
                verdict.ask(OLD, holds(take, moment_ns, files.values()),
                            f"{promised} bytes of an older take are gone: "
                            f"{sizes(files)}")
                continue
            here = [files.get(TAKE, b"")]
            rule = STOPPED if take.ended_ns <= moment_ns else FLUSHED
            if promised:
                verdict.ask(rule, holds(take, moment_ns, here),
                            f"{promised} bytes were promised, the first "
                            f"{same_front(here[0], take.bytes)} are there: "
                            f"{sizes(files)}")

    def _look_at_loss(self, moment_ns, verdict):
        take = self.recording.long
        if not take.began_ns <= moment_ns < take.ended_ns:
            return
        # Until the take has begun on the disk, the old one is there.
        lost = samples_lost(take, moment_ns, self._files().values())
        bound = ((self.flush_every + take.longest_flush_s +
                  take.machine_late_s) * RATE +
                 take.in_codec_at_flush(moment_ns) + APPEND)
        verdict.lost_s = lost / RATE
        verdict.bound_s = bound / RATE
        verdict.ask(LOSS, lost <= bound,
                    f"{lost / RATE:.3f} s lost of "
                    f"{take.fed(moment_ns) / RATE:.3f} s, at most "
                    f"{bound / RATE:.3f} s was promised")

    def _look_at_wav(self, moment_ns, verdict):
        repair = self.recording.repair
        path = self.folder / WAV
        data = path.read_bytes() if path.exists() else b""
        new = repair.new_header
        old = new if repair.ended_ns <= moment_ns else repair.old
        mixed = len(data) == len(repair.old) and all(
            byte in choice for byte, choice in zip(data, zip(old, new)))
        verdict.ask(HEADER, mixed, f"{len(data)} bytes, header "
                    f"{data[:WAV_HEADER_SIZE].hex()}")
        verdict.ask(HEADER, data[WAV_HEADER_SIZE:] ==
                    repair.old[WAV_HEADER_SIZE:], "the audio is changed")

    def _recover(self, verdict):
        path = self.folder / TAKE
        found = path.read_bytes() if path.exists() else b""
        ends = frame_ends(found)
        if not ends:
            return  # nothing was promised, or it has been missed already
        whole = found[:ends[-1]]
        copy = self.folder / "copy.aac"
        copy.write_bytes(found)
        sealed = self._call("finalize", path, pcm=b"")
        resumed = self._call("resume", *RAW, copy, pcm=speech(MORE_SECONDS))
        verdict.ask(RECOVERY, sealed.get("bytes") == len(whole) and
                    path.read_bytes() == whole,
                    f"finalize made {sealed} of {len(found)} bytes, "
                    f"{len(whole)} of them whole frames")
        longer = copy.read_bytes()
        frames = len(frame_ends(longer[len(whole):]))
        verdict.ask(RECOVERY, resumed.get("bytes") == len(longer) and
                    longer.startswith(whole) and
                    frames * AAC_FRAME >= MORE_SECONDS * RATE,
                    f"resume made {resumed} of {len(found)} bytes, "
                    f"{frames} frames behind {len(whole)} bytes")
        complaints = decoded(path, copy)
        verdict.ask(RECOVERY, not complaints, complaints)

    def _call(self, command, *words, pcm):
        done = subprocess.run([self.program, command, *words], input=pcm,
                              capture_output=True, check=False)
        if done.returncode != 0:
            return {"failed": done.stderr.decode()}
        return json.loads(done.stdout)


def samples_lost(take, moment_ns, contents):
    """Of what it was fed by then, when these are the files that are left."""
    found = max((same_front(data, take.bytes) for data in contents), default=0)
    kept = len([end for end in frame_ends(take.bytes) if end <= found])
    return take.fed(moment_ns) - AAC_FRAME * max(kept - 1, 0)


def holds(take, moment_ns, contents):
    """Whether one of these files is what the take has to be by then."""
    if take.stopped and take.ended_ns <= moment_ns:
        return take.bytes in contents
    promised = take.bytes[:take.promised(moment_ns)]
    return any(data.startswith(promised) for data in contents)


def sizes(files):
    return ", ".join(f"{name} has {len(data)}"
                     for name, data in sorted(files.items())) or "no file"


def decoded(*paths):
    """What the decoder complains of."""
    words = ["ffmpeg", "-nostdin", "-v", "error"]
    for path in paths:
        words += ["-i", path]
    for number in range(len(paths)):
        words += ["-map", str(number)]
    done = subprocess.run([*words, "-f", "null", "-"], capture_output=True,
                          check=False)
    return done.stderr.decode()
