#!/usr/bin/env python3
"""Times whole imports beside other loaders of the same listings, and prints tables of medians.

    scripts/compare-loaders.py [--stations 480] [--days 14] [--seed 1] [--runs 5] [--also FOLDER]

The other loaders, by way of pugixml and expat, and the program that writes the listings are those of
bench/loaders; scripts/bench.sh --loaders builds all first. FOLDER may hold more: `gen_xmltv.py`, which
then writes the listings (--stations, --days, --seed, --format, --unknown, --out), and
`build/peer_NAME FILE [--queries N]`, which print `query_ns` and `destroy_ms` and are taken for those
of the same name here.

All commands take turns, and one turn warms up. Times are wall seconds of whole processes, memory is
the largest resident size.
"""

import argparse
import os
import subprocess
import tempfile
import time
from pathlib import Path
from statistics import median

BUILD = Path(__file__).resolve().parent.parent / "build" / "release" / "bin"


def run(argv, **streams):
    """(wall seconds, MiB, standard output)"""
    began = time.monotonic()
    child = subprocess.Popen(argv, stdout=subprocess.PIPE, **streams)
    text = child.stdout.read().decode()
    _, status, usage = os.wait4(child.pid, 0)
    wall = time.monotonic() - began
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise SystemExit("%s failed (%d)" % (" ".join(map(str, argv)), child.returncode))
    return wall, usage.ru_maxrss / 1024, text


def in_turn(commands, runs):
    """Results of every command by its name; the commands take turns."""
    results = {name: [] for name in commands}
    for turn in range(runs + 1):
        for name, argv in commands.items():
            with open(commands.log, "wb") as log:
                result = run(argv, stderr=log)
            if turn > 0:
                results[name].append(result)
    return {name: (median(r[0] for r in rows), median(r[1] for r in rows), rows)
            for name, rows in results.items()}


class Commands(dict):
    """Commands by name; their standard error goes to a file."""

    def __init__(self, log):
        super().__init__()
        self.log = log


def figure(rows, label):
    values = []
    for _, _, text in rows:
        words = text.split()
        values.append(float(words[words.index(label) + 1]))
    return median(values)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--stations", type=int, default=480)
    ap.add_argument("--days", type=int, default=14)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--runs", type=int, default=5)
    ap.add_argument("--also", type=Path)
    args = ap.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        compare(args, Path(folder))


def compare(args, folder):
    def listings(name, stations, form="xmltv", *options):
        path = folder / (name + ".xml")
        if args.also:
            command = ["python3", args.also / "gen_xmltv.py", "--stations", str(stations), "--days",
                       str(args.days), "--seed", str(args.seed), "--format", form, *options,
                       "--out", path]
        else:
            command = [BUILD / "epg_write_listings", form, str(stations), str(args.days),
                       str(args.seed), path]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        os.sync()  # so that nothing is being written to the disk while loaders run
        return path

    def load(path):
        script = path.with_suffix(".script")
        script.write_text('InitSchedule("", "", "%s")\nGetStationCount()\n' % path.with_suffix(""))
        return [BUILD / "epgshell", "run", script]

    def megabytes(path):
        return path.stat().st_size / 1e6

    xmltv = listings("xmltv", args.stations)
    commands = Commands(folder / "log")
    commands["epgshell"] = load(xmltv)
    peers = {name: BUILD / ("epg_load_" + name) for name in ("pugixml", "expat")}
    if args.also:
        peers |= {program.name.removeprefix("peer_"): program
                  for program in sorted((args.also / "build").glob("peer_*"))
                  if os.access(program, os.X_OK)}
    for peer, program in peers.items():
        commands[peer] = [program, xmltv, "--queries", "200000"]
    for peer in peers:  # without the queries, which are not part of an import
        commands[peer + " import"] = commands[peer][:2]
    results = in_turn(commands, args.runs)
    ours = results["epgshell"]
    print("XMLTV, %.0f MB (seed %d), medians of %d\n" % (megabytes(xmltv), args.seed, args.runs))
    print("| loader | s | ours / it | MiB | ours / it | query ns | destroy ms |")
    print("|---|---|---|---|---|---|---|")
    print("| epgshell | %.2f | | %.0f | | | |" % ours[:2])
    for peer in peers:
        wall, memory, _ = results[peer + " import"]
        rows = results[peer][2]
        print("| %s | %.2f | %.2f | %.0f | %.2f | %.0f | %.0f |" % (
            peer, wall, ours[0] / wall, memory, ours[1] / memory, figure(rows, "query_ns"),
            figure(rows, "destroy_ms")))

    # Not among the others: what it writes still goes to the disk while the next one runs.
    made = folder / "made.xml"
    commands = Commands(folder / "log")
    commands["epgcache"] = [BUILD / "epgcache", xmltv, "--output", made]
    if "libxml2" in peers:
        commands["libxml2"] = [peers["libxml2"], xmltv]
    results = in_turn(commands, args.runs)
    wall, memory, _ = results["epgcache"]
    print("\nepgcache: %.2f s; %.0f MiB, %.2f of the %.0f MB that it writes" % (
        wall, memory, memory * 2**20 / 1e6 / megabytes(made), megabytes(made)))
    if "libxml2" in peers:
        print("Its time is %.2f of libxml2's." % (wall / results["libxml2"][0]))

    files = {"xmltv": xmltv}
    for name in ("cache", "radiotimes", "titantv"):
        files[name] = listings(name, args.stations, name)
    if args.also:
        files["xmltv, every programme logged"] = listings("unknown", args.stations, "xmltv",
                                                          "--unknown")
    commands = Commands(folder / "log")
    for name, path in files.items():
        commands[name] = load(path)
    results = in_turn(commands, args.runs)
    print("\n| listings | MB | s | MB/s | MiB | seconds / those of xmltv |\n|---|---|---|---|---|---|")
    for name, path in files.items():
        wall, memory, _ = results[name]
        print("| %s | %.0f | %.2f | %.0f | %.0f | %.2f |" % (
            name, megabytes(path), wall, megabytes(path) / wall, memory, wall / results["xmltv"][0]))
    # By themselves, because both take much fresh memory, which is slow when little was freed before.
    commands = Commands(folder / "log")
    commands["titantv"] = load(files["titantv"])
    commands["pugixml"] = [peers["pugixml"], xmltv]
    results = in_turn(commands, args.runs)
    print("\nTitanTV beside pugixml on as many bytes of XMLTV: %.2f" % (
        results["titantv"][0] / megabytes(files["titantv"]) /
        (results["pugixml"][0] / megabytes(xmltv))))

    commands = Commands(folder / "log")
    sizes = {}
    for factor in (1, 2, 4, 8, 16):
        path = listings("x%d" % factor, args.stations * factor // 16)
        sizes[factor] = megabytes(path)
        commands[factor] = load(path)
    results = in_turn(commands, args.runs)
    print("\n| growth | MB | s | s/MB, to 1x | MiB | MiB/MB, to 1x |\n|---|---|---|---|---|---|")
    for factor, (wall, memory, _) in results.items():
        print("| %dx | %.0f | %.3f | %.2f | %.0f | %.2f |" % (
            factor, sizes[factor], wall, wall / sizes[factor] / (results[1][0] / sizes[1]), memory,
            memory / sizes[factor] / (results[1][1] / sizes[1])))

    _, _, text = run([BUILD / "epg_bench", "--listings=%s" % xmltv, "--benchmark_format=csv",
                      "--benchmark_filter=FindFirst|Call|Think|StartLoad|FreeSchedule",
                      "--benchmark_repetitions=5", "--benchmark_report_aggregates_only=true"],
                     stderr=subprocess.DEVNULL)
    print("\n| on the schedule of these listings | median |\n|---|---|")
    for line in text.splitlines():
        cells = line.replace('"', "").split(",")
        if cells[0].endswith("_median"):
            print("| %s | %.4g %s |" % (cells[0].split("/")[0].removesuffix("_median"),
                                       float(cells[2]), cells[4]))


if __name__ == "__main__":
    main()
