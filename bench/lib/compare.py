"""Runs the comparisons and judges them.

Run by bench/compare at the root of a checkout that is built. A section is a
module section_NAME with TITLE, run(bench) -> what goes into the JSON,
tables(that) -> Markdown, and bounds(that) -> [(what, value, most)].
"""

import argparse
import datetime
import importlib
import json
import signal
import sys
import time

import machine
from measure import FOLDER, Bench, Failed

SECTIONS = ("take", "live", "instructions", "startup", "duration", "cold",
            "kills", "growth")
RESULT = FOLDER / "compare.json"
TABLES = FOLDER / "tables.md"


def arguments():
    parser = argparse.ArgumentParser(
        prog="bench/compare",
        description="Measures Corvane side by side with what else records AAC "
        "or reads it. Sections: " + ", ".join(SECTIONS) + ".")
    parser.add_argument("SECTION", nargs="*", help="all when none is named")
    parser.add_argument("--quick", action="store_true",
                        help="few rounds and little audio, to try it out: its "
                        "figures say nothing")
    parsed = parser.parse_args()
    unknown = set(parsed.SECTION) - set(SECTIONS)
    if unknown:
        parser.error("no such section: " + ", ".join(sorted(unknown)))
    parsed.SECTION = [name for name in SECTIONS
                      if not parsed.SECTION or name in parsed.SECTION]
    return parsed


def module_of(name):
    return importlib.import_module(f"section_{name}")


def earlier_sections():
    if not RESULT.exists():
        return {}
    return json.loads(RESULT.read_text())["sections"]


def run(names, bench):
    """Yields each section's name and result; what failed is only told of."""
    for name in names:
        section = module_of(name)
        print(section.TITLE, file=sys.stderr, flush=True)
        started = time.monotonic()
        try:
            result = section.run(bench)
        except Failed as failure:
            bench.say(f"FAILED: {failure}")
            continue
        seconds = round(time.monotonic() - started)
        bench.say(f"{seconds} s")
        yield name, {"quick": bench.quick, "run_s": seconds, **result}


def text_of(name, result):
    section = module_of(name)
    tried_out = ", only tried out" if result["quick"] else ""
    return f"## {section.TITLE}{tried_out}\n\n{section.tables(result)}\n"


def verdicts(results):
    """Prints what is held and what is not; whether all is."""
    all_held = True
    for name, result in results.items():
        for what, value, most in module_of(name).bounds(result):
            held = value <= most
            all_held = all_held and held
            print(f"{name}: {what}: {value:.4g}, at most {most:.4g}: "
                  f"{'held' if held else 'NOT HELD'}")
    return all_held


def save(document, name):
    """Writes all that is known, after section `name` has become known."""
    sections = {known: document["sections"][known] for known in SECTIONS
                if known in document["sections"]}
    document["sections"] = sections
    RESULT.write_text(json.dumps(document, indent=1) + "\n")
    (FOLDER / f"{name}.md").write_text(text_of(name, sections[name]))
    texts = [path.read_text() for path in
             (FOLDER / f"{known}.md" for known in sections) if path.exists()]
    TABLES.write_text("\n".join(
        [machine.in_words(document["machine"]) + "\n", *texts]))


def main():
    wanted = arguments()
    # As an exception, so that large files go and what runs is ended.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    bench = Bench(wanted.quick)
    document = {"machine": machine.describe(),
                "date": datetime.date.today().isoformat(),
                "sections": earlier_sections()}
    results = {}
    for name, result in run(wanted.SECTION, bench):
        results[name] = document["sections"][name] = result
        save(document, name)  # now: what a killed run has is kept
    print(machine.in_words(document["machine"]) + "\n")
    for name, result in results.items():
        print(text_of(name, result))
    if wanted.quick:
        print("A quick run: its figures say nothing.")
    all_held = verdicts(results)
    return 0 if all_held and len(results) == len(wanted.SECTION) else 1


if __name__ == "__main__":
    sys.exit(main())
