"""What takes of very different lengths cost, in CPU time.

A machine may become a third slower from one minute to the next, which would
look like growth. So the longest take is stopped again and again for takes of
the other lengths to be run in between, and the bare loop has its own beside
each: all of them meet the same machine.
"""

import os
import pathlib
import signal
import subprocess
import time

from contenders import LIMIT
from measure import BUILD, Failed, measure_success, median_and_range, rotated

RATE = 8000  # the cheapest for the codec, which works hardest here
BIT_RATE = 8000
LOOP_SECONDS = 10  # each length is a multiple: all hold the same sounds
START_UP_SECONDS = 0.1  # a take that is next to nothing but start-up
START_UPS_A_ROUND = 2
SHORT_SHARE = 0.4  # a shorter length's audio, in shares of the longest's
TICKS = os.sysconf("SC_CLK_TCK")


def corvane(out):
    return [str(BUILD / "corvane"), "record", "-i", "-", "-r", str(RATE),
            "-c", "1", "-b", str(BIT_RATE), str(out)]


def bare_loop(out):
    return [str(BUILD / "bare_loop"), str(out), str(RATE), "1", str(BIT_RATE)]


COMMANDS = {"corvane": corvane, LIMIT: bare_loop}


def input_file(bench, seconds, silent=False):
    """Raw PCM of the length: the same ten seconds over and over, or zeros."""
    name = f"growth_{seconds:g}s{'_silent' * silent}.raw"
    path = bench.folder / name
    loop = bench.pcm(LOOP_SECONDS, RATE, 1).read_bytes()
    if silent:
        loop = bytes(len(loop))
    wanted = round(seconds * RATE) * 2
    with open(path, "wb") as file:
        for start in range(0, wanted, len(loop)):
            file.write(loop[:wanted - start])
    return path


class SlicedTake:
    """A take that runs a while, stands still, and runs on."""

    def __init__(self, command, source, length_s):
        self.length_s = length_s
        self.points = []  # (seconds of audio read, CPU seconds so far)
        self.cpu_s = None  # once it has ended
        with open(source, "rb") as file:
            self.process = subprocess.Popen(
                command, stdin=file, stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL)
        self.stop()

    def run_to(self, position_s):
        """Until it has read so much of its input."""
        if self.cpu_s is not None:
            return
        os.kill(self.process.pid, signal.SIGCONT)
        while self.position_s() < position_s:
            time.sleep(0.01)
        self.stop()

    def run_out(self):
        if self.cpu_s is None:
            os.kill(self.process.pid, signal.SIGCONT)
            self.wait(0)

    def stop(self):
        # Not Popen's own, which would take a process that ended, unmeasured.
        os.kill(self.process.pid, signal.SIGSTOP)
        self.wait(os.WUNTRACED)

    def wait(self, options):
        _, status, usage = os.wait4(self.process.pid, options)
        if os.WIFSTOPPED(status):
            self.points.append((self.position_s(), self.cpu_so_far()))
            return
        self.process.returncode = os.waitstatus_to_exitcode(status)
        if self.process.returncode != 0:
            raise Failed("a take that was stopped in between came to nothing")
        self.cpu_s = usage.ru_utime + usage.ru_stime
        self.points.append((self.length_s, self.cpu_s))

    def position_s(self):
        """How much of its input it has read; all when it has ended."""
        position = pathlib.Path(f"/proc/{self.process.pid}/fdinfo/0")
        try:
            return int(position.read_text().split()[1]) / 2 / RATE
        except OSError:
            return self.length_s

    def cpu_so_far(self):
        stat = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text()
        user, system = stat.rpartition(")")[2].split()[11:13]
        return (int(user) + int(system)) / TICKS

    def halves_ratio(self):
        """The second half's CPU time to the first half's."""
        first = value_at(self.points, self.length_s / 2)
        return (self.cpu_s - first) / first

    def kill(self):
        if self.cpu_s is None:
            self.process.kill()


def value_at(points, position):
    """On the line through the two points around it."""
    for (left, low), (right, high) in zip(points, points[1:]):
        if left <= position < right:
            return low + (high - low) * (position - left) / (right - left)
    raise Failed("a take that was stopped in between read less than all")


class Comparison:
    """Takes of all lengths, by turns of Corvane and the bare loop."""

    def __init__(self, bench):
        self.bench = bench
        self.lengths = [10, 100, 1000] + [10000] * (not bench.quick)
        self.longest = self.lengths[-1]
        self.rounds = 8 if bench.quick else 40
        self.sources = {seconds: input_file(bench, seconds)
                        for seconds in [START_UP_SECONDS, *self.lengths]}
        self.costs = {name: {seconds: [] for seconds in self.sources}
                      for name in COMMANDS}
        self.rounds_done = dict.fromkeys(COMMANDS, 0)

    def out(self, name, length):
        path = self.bench.folder / f"growth_{length}_{name}.aac"
        path.unlink(missing_ok=True)
        return path

    def take(self, name, seconds):
        command = COMMANDS[name](self.out(name, "short"))
        cost = measure_success(command, self.sources[seconds])
        self.costs[name][seconds].append(cost.cpu_s)

    def begin(self, name):
        """One that lasts all rounds."""
        return SlicedTake(COMMANDS[name](self.out(name, "long")),
                          self.sources[self.longest], self.longest)

    def one_round(self, name):
        number = self.rounds_done[name]
        self.rounds_done[name] += 1
        self.sliced[name].run_to(self.longest * (number + 1) / self.rounds)
        for seconds in self.lengths[:-1]:
            ratio = self.longest / seconds
            for _ in range(takes_in(number, self.rounds, ratio)):
                self.take(name, seconds)
        for _ in range(START_UPS_A_ROUND):
            self.take(name, START_UP_SECONDS)
        if name == LIMIT and (number + 1) % 10 == 0:
            self.bench.say(f"{number + 1} of {self.rounds} rounds of takes")

    def run(self):
        self.sliced = {}
        try:
            for name in COMMANDS:
                self.sliced[name] = self.begin(name)
            rotated(list(COMMANDS), self.rounds, self.one_round)
            for name, long_take in self.sliced.items():
                long_take.run_out()
                self.costs[name][self.longest].append(long_take.cpu_s)
        finally:
            for long_take in self.sliced.values():
                long_take.kill()
            for source in self.sources.values():
                source.unlink()


def run(bench):
    comparison = Comparison(bench)
    comparison.run()
    return {
        "rate": RATE, "bit_rate": BIT_RATE, "lengths_s": comparison.lengths,
        "start_up_s": START_UP_SECONDS,
        "cpu_s": {name: [row(seconds, costs[seconds]) for seconds in costs]
                  for name, costs in comparison.costs.items()},
        "second_half_to_first": {
            name: long_take.halves_ratio()
            for name, long_take in comparison.sliced.items()},
    }


def takes_in(number, rounds, ratio):
    """How many of the shorter takes belong into a round, so that in the end
    all lengths but the longest have been given the same audio."""
    a_round = SHORT_SHARE * ratio / rounds
    return int((number + 1) * a_round) - int(number * a_round)


def row(seconds, costs):
    """The mean, for the long take is one over the whole run by its nature."""
    return {"length_s": seconds, "takes": len(costs),
            "mean": sum(costs) / len(costs), **median_and_range(costs)}
