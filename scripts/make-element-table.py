#!/usr/bin/env python3
"""Puts the table of `epgcache --elements` into docs/epgcache.1 and docs/real-guides.md.

    scripts/make-element-table.py [--check] EPGCACHE

With --check nothing is written; it fails where a table is not the program's.
"""
import pathlib
import re
import subprocess
import sys

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"


def main():
    arguments = sys.argv[1:]
    check = "--check" in arguments
    program = [argument for argument in arguments if argument != "--check"]
    if len(program) != 1:
        sys.exit(__doc__)
    listed = subprocess.run([program[0], "--elements"], capture_output=True, check=True, text=True)
    rows = []
    for line in listed.stdout.splitlines():
        place, becomes = line.split("\t")
        rows.append((place.removeprefix("programme/"), becomes))

    manual = "".join("T{\n%s\nT}\tT{\n%s\nT}\n" % (place.replace("-", "\\-"),
                                                   becomes.replace("-", "\\-"))
                     for place, becomes in rows)
    page = "| element | field |\n|---|---|\n" + "".join("| `%s` | %s |\n" % row for row in rows)
    for name, begin, end, table in (
            ("epgcache.1", ".TS\nlw(26n) lx.\n", ".TE\n", manual),
            ("real-guides.md", "<!-- elements -->\n", "<!-- end -->\n", page)):
        path = DOCS / name
        text = path.read_text()
        made = re.sub(re.escape(begin) + ".*?" + re.escape(end),
                      lambda _: begin + table + end, text, count=1, flags=re.DOTALL)
        if check and made != text:
            sys.exit("docs/%s has another table of elements; %s EPGCACHE makes it" % (
                name, sys.argv[0]))
        path.write_text(made)


if __name__ == "__main__":
    main()
