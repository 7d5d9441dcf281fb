"""Feeds many recorders at the pace of a microphone and kills each in time.

One thread does it all, by a heap of what is due next: a piece of sound for one
recorder, or its end. The recorders begin at different times, so that the
pieces don't fall due all at once.
"""

import heapq
import itertools
import os
import time

from crash_recorders import Recorder, Segment
from kill_contenders import FRAME_BYTES, RATE
from measure import Failed

PIECE = RATE // 100  # sample frames that are fed at once: 10 ms


class Job:
    """One recorder's life: until it is killed, and what was lost then."""

    def __init__(self, contender, path, kill_after_s):
        self.contender = contender
        self.path = path
        self.kill_after_s = kill_after_s
        self.recorder = None  # until it begins
        self.fed = 0
        self.lost = 0

    def begin(self, log):
        self.path.unlink(missing_ok=True)
        self.recorder = Recorder(self.contender.words("-", self.path), log,
                                 FRAME_BYTES)
        os.set_blocking(self.recorder.writing, False)
        self.started = time.monotonic()

    def next_event(self):
        """A microphone gives out a piece of sound when its time is over."""
        piece_s = (self.recorder.written + PIECE) / RATE
        return self.started + min(piece_s, self.kill_after_s)

    def shift(self, late_s):
        """What a late feeder owes is given later, not at once: a recorder that
        is killed on a burst of sound would lose what no microphone gives."""
        self.started += late_s
        return late_s

    def feed(self, pcm):
        at = self.recorder.written * FRAME_BYTES
        try:
            self.recorder.feed(pcm[at:at + PIECE * FRAME_BYTES])
        except BlockingIOError as error:
            raise Failed(f"{self.contender.name} reads no more") from error

    def kill(self):
        self.recorder.kill()
        self.fed = self.recorder.fed_at_death()[0]

    def abandon(self):
        if self.recorder is not None:
            self.recorder.process.kill()

    def look(self):
        self.lost = self.fed - self.contender.kept(self.path)
        self.path.unlink(missing_ok=True)

    @property
    def beyond(self):
        """What was lost beyond the encoder's look-ahead and the AAC frame that
        was being filled."""
        return self.lost - Segment(self.fed, 0, 0).expected_loss


def run(jobs, lanes, pcm, log, say):
    """Runs all jobs, up to `lanes` at a time; returns by how many seconds the
    feeder was late at most."""
    waiting = list(jobs)
    due = []
    order = itertools.count()  # for two that are due at the same time
    late = 0.0

    def schedule(job):
        heapq.heappush(due, (job.next_event(), next(order), job))

    try:
        while waiting or due:
            if waiting and len(due) < lanes:
                job = waiting.pop(0)
                job.begin(log)
                schedule(job)
            when, _, job = heapq.heappop(due)
            time.sleep(max(0.0, when - time.monotonic()))
            late = max(late, job.shift(time.monotonic() - when))
            if job.next_event() >= job.started + job.kill_after_s:
                job.kill()
                left = len(waiting) + len(due)
                if left % 20 == 0:
                    say(f"{len(jobs) - left} of {len(jobs)} killed")
            else:
                job.feed(pcm)
                schedule(job)
        for job in jobs:
            job.look()
    finally:
        for job in jobs:
            job.abandon()
    return late
