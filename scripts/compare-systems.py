#!/usr/bin/env python3
"""Runs generated scripts through two builds of epgshell and compares what they print, to the byte.

    scripts/compare-systems.py ONE OTHER [--scripts 500] [--seed 1]

ONE and OTHER are commands, such as "scripts/wine.sh build/windows/bin/epgshell.exe". A quarter of
the scripts runs in each of four time zones. The first script that parts them is shown and kept.
"""

import argparse
import os
import random
import re
import shlex
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
ZONES = ("UTC", "America/New_York", "Asia/Kolkata", "Australia/Adelaide")
LISTINGS = ["samples/" + name for name in ("week", "evening-cache", "evening-radiotimes",
                                           "evening-titantv", "evening-xmltv", "none", "")]
CORPUS = sorted(str(file.relative_to(TREE)) for file in (TREE / "fuzz/corpus/listings").iterdir())
# How each method's arguments are made: a station, an item of it, a time, a format, a template, and
# so many minutes that the answer is the same for years.
METHODS = {
    "GetReady": "", "GetStationCount": "", "GetStartTime": "", "GetEndTime": "",
    "GetStationName": "s", "GetStationId": "s", "GetNowTime": "n", "GetProgramCount": "s",
    "GetProgramName": "si", "GetProgramStartTime": "si", "GetProgramEndTime": "si",
    "GetProgramData": "six", "GetFirstProgram4Time": "stt", "ConvertLocalTime2String": "tf",
}
FIELDS = ("Title EpisodeTitle Description Genre ShowType Director Actors PublishDate Language "
          "RatingBBFC RatingTV StarRating StarRating(*,-) StarRating(ab) Time Flags New Premiere "
          "Repeat Stereo Subtitle BlackAndWhite Film Combination($Title-$Genre) Name Id None").split()
PIECES = ["[", "]", "$(", ")", "!", "\\\\", "\\n", "\\t", "\\xe9", "\\x00", "x", ", ", "$", "("]


def template(rng):
    return '"%s"' % "".join("$" + rng.choice(FIELDS) if rng.random() < 0.6 else rng.choice(PIECES)
                            for _ in range(rng.randrange(8)))


def argument(rng, kind):
    # Odd numbers of minutes would be answered with the present minute, which may change in between.
    if kind != "n" and rng.random() < 0.04:
        return rng.choice(['"text"', "-1", "2147483647", "-2147483648", '""'])
    if kind == "x":
        return template(rng)
    bounds = {"s": (0, 6), "i": (0, 130), "f": (-1, 8), "t": (223_990_000, 224_010_000),
              "n": (100_000_000, 110_000_000)}[kind]
    if kind == "t" and rng.random() < 0.1:
        bounds = (-2_000, 2_147_483_647)
    return str(rng.randint(*bounds))


def script(rng):
    name = rng.choice(LISTINGS) if rng.random() < 0.7 else rng.choice(CORPUS).removesuffix(".xml")
    lines = ['InitSchedule("", "", "%s")' % name, "GetStationCount()"]
    for _ in range(rng.randrange(40)):
        method = rng.choice(list(METHODS))
        arguments = [argument(rng, kind) for kind in METHODS[method]]
        if method != "GetNowTime" and rng.random() < 0.03:
            arguments = arguments[:-1]
        lines.append("%s(%s)" % (method, ", ".join(arguments)))
    return "\n".join(lines) + "\n"


def outcome(command, zone, text):
    for _ in range(3):
        done = subprocess.run(command + ["run"], input=text.encode(), stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, cwd=TREE, env=dict(os.environ, TZ=zone),
                              timeout=120, check=False)
        # Once in some thousand times Wine does not start a program; what has started says so.
        if done.stderr:
            break
    log = re.sub(rb"\(\d+ msec\)", b"(N msec)", done.stderr)
    return done.returncode, done.stdout, log


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("commands", nargs=2)
    parser.add_argument("--scripts", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    commands = [shlex.split(command) for command in options.commands]
    rng = random.Random(options.seed)
    jobs = [(ZONES[i % len(ZONES)], script(rng)) for i in range(options.scripts)]

    def compare(job):
        return [outcome(command, *job) for command in commands]

    lines = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for (zone, text), (one, other) in zip(jobs, pool.map(compare, jobs)):
            lines += one[1].count(b"\n")
            if one != other:
                with tempfile.NamedTemporaryFile("w", suffix=".script", delete=False) as kept:
                    kept.write(text)
                raise SystemExit("They differ in %s, with TZ=%s:\n%s\n%s" %
                                 (kept.name, zone, one, other))
    print("%d scripts, %d results: the same" % (len(jobs), lines))


main()
