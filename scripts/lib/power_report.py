"""What the cuts came to, for people and for the test command."""

import json
import os
import pathlib
import statistics

from power_checks import RULES


class Tally:
    """All verdicts on one file system."""

    def __init__(self, kind):
        self.kind = kind
        self.verdicts = []
        self.broken = {}  # by rule, a line for each cut

    def add(self, cut, moment_s, verdict):
        self.verdicts.append(verdict)
        for rule, how in verdict.broken.items():
            line = f"{self.kind}, cut at {moment_s:.3f} s, {cut}: {how}"
            self.broken.setdefault(rule, []).append(line)

    def asked(self, rule):
        return sum(rule in verdict.asked for verdict in self.verdicts)

    def losses(self):
        return [verdict.lost_s for verdict in self.verdicts
                if verdict.lost_s is not None]

    def bound(self):
        """The largest; it depends a little on the moment."""
        return max((verdict.bound_s for verdict in self.verdicts
                    if verdict.bound_s is not None), default=0)


def row(tally, recording, journal):
    take = recording.long
    losses = tally.losses() or [0]
    took = [(flush.end_ns - flush.begin_ns) / 1e6
            for flush in take.flushes] or [0]
    written = journal.bytes_written(take.began_ns, take.ended_ns)
    return (f"{tally.kind:6} {len(tally.verdicts):5} {len(losses):8} "
            f"{statistics.median(losses):8.3f} {max(losses):8.3f} "
            f"{tally.bound():8.3f} {len(take.flushes):8} "
            f"{statistics.median(took):7.1f} {max(took):8.1f} "
            f"{take.machine_late_s * 1000:7.1f} "
            f"{written / len(take.bytes):9.1f}")


HEAD = ("file            cuts in   seconds lost              syncs "
        "         ms each machine  written/\n"
        "system  cuts the take   median     most    bound          "
        " median  longest late ms   capture")


def report(tallies):
    """What was asked how often, and each answer that is wrong."""
    print(f"\n{'rule':46} {'asked':>6} {'broken':>7}")
    for rule in RULES:
        broken = [line for tally in tallies
                  for line in tally.broken.get(rule, [])]
        asked = sum(tally.asked(rule) for tally in tallies)
        print(f"{rule:46} {asked:6} {len(broken):7}")
        for line in broken[:5]:
            print(f"    {line}")


def skip(reason):
    """Says it as GoogleTest does: the summary shows the line behind. Returns
    the exit status.
    """
    print(f"scripts/power-cut: Skipped\nno power was cut: {reason}")
    write_results([], reason)
    return 0


def write_results(tallies, reason):
    """For the test command, in the form of its other programs: a case for
    each rule.
    """
    output = os.environ.get("GTEST_OUTPUT", "")
    if not output.startswith("json:"):
        return
    cases = []
    for rule in RULES:
        held = all(tally.asked(rule) and not tally.broken.get(rule)
                   for tally in tallies)
        cases.append({"name": rule,
                      "result": "SKIPPED" if reason else "COMPLETED",
                      **({} if held or reason else {"failures": [{}]})})
    path = pathlib.Path(output[len("json:"):]) / "power_cut.json"
    path.write_text(json.dumps({"testsuites": [{"testsuite": cases}]}))
