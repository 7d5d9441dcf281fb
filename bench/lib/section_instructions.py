"""Where the instructions of a take go, counted by callgrind: no load of the
machine changes these, so that they decide what the clock can't.

Kept: {recorder: {object: instructions of its own code}}.
"""

from contenders import CHANNELS, LIMIT, RATE, RECORDERS
from growth_counts import OURS, by_object
from takes import target

TITLE = "Where the instructions go"
SECONDS = 20
MOST_RATIO = 1.005
MOST_SHARE = 0.01
OUR_NAME = "corvane"
# What works for us alone, or nearly.
AROUND = ("libglib-2.0", "libgobject-2.0", "libsndfile", "libstdc++")
# Told in this order; what is in none of them comes last.
PARTS = {
    "libavcodec": ("libavcodec",),
    "libm, libavutil, libhwy": ("libm", "libavutil", "libhwy"),
    "the loader": ("ld-linux-x86-64",),
    "libc": ("libc",),
    "GLib, GObject": AROUND[:2],
    "libsndfile, libstdc++": AROUND[2:],
    "the plugin": ("libcorvane_plugin",),
    "the embedding's stand-in": ("libflutter_linux_gtk",),
    "the program itself": ("corvane", "bare_loop"),
}


def run(bench):
    source = bench.pcm(5 if bench.quick else SECONDS, RATE, CHANNELS)
    found = {}
    for recorder in RECORDERS:
        if recorder.name in (LIMIT, OUR_NAME):
            path = target(bench, recorder.name)
            path.unlink(missing_ok=True)
            bench.say(f"counting those of the {recorder.name}")
            found[recorder.name] = by_object(
                bench, recorder.words(source, path), source)
    return {"seconds": 5 if bench.quick else SECONDS, "objects": found}


def total(result, name):
    return sum(result["objects"][name].values())


def part(result, name, objects):
    counts = result["objects"][name]
    return sum(counts.get(thing, 0) for thing in objects)


def cells(label, result, count):
    """`count` gives a recorder's instructions."""
    texts = [label]
    for name in (OUR_NAME, LIMIT):
        number = count(name)
        texts += [f"{number:,}",
                  f"{100 * number / total(result, name):.2f}%"]
    return f"| {' | '.join(texts)} |"


def tables(result):
    told = [thing for objects in PARTS.values() for thing in objects]
    rows = [f"| object | {OUR_NAME} | | {LIMIT} | |", "|:--|--:|--:|--:|--:|"]
    for label, objects in PARTS.items():
        rows.append(cells(label, result,
                          lambda name, o=objects: part(result, name, o)))
    rows.append(cells("others", result, lambda name: total(result, name)
                      - part(result, name, told)))
    rows.append(cells("all", result, lambda name: total(result, name)))
    return "\n".join([
        f"A take of {result['seconds']} s, {CHANNELS} channels at {RATE} Hz, "
        "under valgrind's callgrind. Corvane's instructions are",
        f"{ratio(result):.4f} times the bare loop's; our own objects, GLib, "
        "GObject, libsndfile and libstdc++ make",
        f"{100 * share(result):.2f}% of them.", "", *rows])


def ratio(result):
    return total(result, OUR_NAME) / total(result, LIMIT)


def share(result):
    return (part(result, OUR_NAME, OURS + AROUND)
            / total(result, OUR_NAME))


def bounds(result):
    return [("instructions of a take to the bare loop's", ratio(result),
             MOST_RATIO),
            ("share of our own objects, GLib, GObject, libsndfile and "
             "libstdc++", share(result), MOST_SHARE)]
