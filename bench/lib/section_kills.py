"""What SIGKILL costs: recorders in real time, killed at random moments.

Lost is what a recorder had taken out of its pipe and not brought into its
file. Kept of each, under its name:
  kills, kept_nothing     how many, and of those with nothing in the file
  lost_ms                 median, least and most of them; losses_ms: all
  as_formula, below_formula, above_formula, most_above_ms
                          how they lie to what the encoder must lose
"""

import random

import kill_feeder
from contenders import BIT_RATE, CHANNELS, RATE, command_block, present
from kill_contenders import ALL
from measure import median_and_range

TITLE = "What a kill costs"
SEED = 20
LANES = 24  # recorders at a time, about 2% of a core each
OURS = "corvane"
MOST_SHARE = 0.05


def run(bench):
    # ffmpeg gathers 32 s of this bit rate before it writes for the first time.
    window = (8, 16) if bench.quick else (20, 40)
    recorders = present(bench, ALL)
    jobs = make_jobs(bench, recorders, 4 if bench.quick else 20, window)
    bench.say(f"{len(jobs)} takes in real time, each killed {window[0]} to "
              f"{window[1]} s after its start")
    pcm = bench.pcm(window[1] + 1, RATE, CHANNELS).read_bytes()
    with open(bench.folder / "kills.log", "wb") as log:
        late_s = kill_feeder.run(jobs, LANES, pcm, log, bench.say)
    return {"rate": RATE, "channels": CHANNELS, "bit_rate": BIT_RATE,
            "kill_between_s": window, "seed": SEED,
            "feeder_late_ms": late_s * 1000,
            "recorders": {r.name: row_of(r, jobs) for r in recorders}}


def make_jobs(bench, recorders, kills, window):
    """In random order, so that all meet the same machine. Of ours three times
    as many: they decide whether a rule holds."""
    chance = random.Random(SEED)
    jobs = []
    for recorder in recorders:
        for _ in range(kills * (3 if recorder.name == OURS else 1)):
            path = bench.folder / f"kill-{len(jobs)}{recorder.suffix}"
            jobs.append(kill_feeder.Job(recorder, path,
                                        chance.uniform(*window)))
    chance.shuffle(jobs)
    return jobs


def ms(frames):
    return frames * 1000 / RATE


def row_of(recorder, jobs):
    mine = [job for job in jobs if job.contender is recorder]
    losses = sorted(ms(job.lost) for job in mine)
    return {
        "kills": len(mine),
        "kept_nothing": sum(job.lost == job.fed for job in mine),
        "lost_ms": median_and_range(losses),
        "losses_ms": [round(loss, 2) for loss in losses],
        "as_formula": sum(job.beyond == 0 for job in mine),
        "below_formula": sum(job.beyond < 0 for job in mine),
        "above_formula": sum(job.beyond > 0 for job in mine),
        "most_above_ms": ms(max(job.beyond for job in mine)),
    }


def tables(result):
    least, most = result["kill_between_s"]
    rows = ["| recorder | kills | lost, ms | from, to | as the formula "
            "| nothing kept |",
            "|:--|--:|--:|--:|--:|--:|"]
    for name, row in result["recorders"].items():
        lost = row["lost_ms"]
        rows.append(
            f"| {name} | {row['kills']} | {lost['median']:,.0f} "
            f"| {lost['least']:,.0f} to {lost['most']:,.0f} "
            f"| {row['as_formula']} | {row['kept_nothing']} |")
    return "\n".join([
        f"Sound of {result['channels']} channels at {result['rate']} Hz comes "
        "through a pipe as it is heard, 10 ms at a time,",
        f"and is recorded at {result['bit_rate'] // 1000} kbit/s. SIGKILL at "
        f"a random moment {least} to {most} s after the start. Lost",
        "is what was read from the pipe and is not in the file; the first "
        "figure is the median.",
        "", *rows, "", formula_text(result["recorders"][OURS]), "",
        command_block(result["recorders"], ALL)])


def formula_text(ours):
    above = max(0, ours["most_above_ms"])
    return "\n".join([
        "The formula: 2048 + (fed mod 1024) sample frames, the encoder's "
        "look-ahead and the frame that was",
        f"being filled, {ms(2048):.0f} to {ms(3071):.0f} ms. What was read "
        "and not yet worked on is lost as well: little unless",
        "the machine is busy, up to 64 appends of 20 ms if it does not get to "
        f"work at all. Of {ours['kills']} kills of",
        f"{OURS} {ours['as_formula']} cost exactly the formula, "
        f"{ours['below_formula']} less, {ours['above_formula']} more (by "
        f"{above:.1f} ms at the most); the worst cost "
        f"{ours['lost_ms']['most']:.0f} ms."])


def bounds(result):
    ours = result["recorders"][OURS]
    return [("share of kills that cost more than 2048 + (fed mod 1024) "
             "sample frames", ours["above_formula"] / ours["kills"],
             MOST_SHARE)]
