#!/usr/bin/python3
"""Fails where what `epgshell --json` prints, or an example of docs/json.md, is not of the form of
docs/guide.schema.json, or where an example is not what its command prints.

    scripts/check-json.py EPGSHELL
"""

import json
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

import jsonschema

TREE = Path(__file__).resolve().parent.parent
SCHEMA = json.loads((TREE / "docs/guide.schema.json").read_text(encoding="utf-8"))
MORE = ["guide samples/week --json", "guide samples/week --at 2026-11-25 --hours 336 --json",
        "guide samples/week --details thimble --json", "stations samples/evening-cache --json",
        "now samples/week --json --at '24 Nov 12:00'", "find samples/week the --json --in people"]


def answer(command):
    done = subprocess.run([sys.argv[1], *shlex.split(command)], cwd=TREE, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, env={"TZ": "UTC"}, check=False)
    printed = json.loads(done.stdout.decode("utf-8"))
    jsonschema.validate(printed, SCHEMA)
    return printed


def timeless(document):
    document.get("schedule", {}).pop("now", None)
    return document


examples = re.findall(r"^    epgshell ([^\n]*)\n\n```json\n(.*?)^```",
                      (TREE / "docs/json.md").read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
if len(examples) < 2:
    raise SystemExit("docs/json.md has lost its examples")
for command, text in examples:
    example = json.loads(text)
    jsonschema.validate(example, SCHEMA)
    if timeless(example) != timeless(answer(command)):
        raise SystemExit("docs/json.md: this prints something else: " + command)
for command in MORE:
    if not answer(command).get("stations", [True]):
        raise SystemExit("nothing in: " + command)

# Bytes that are not UTF-8.
with tempfile.TemporaryDirectory() as folder:
    file = Path(folder) / "bytes.xml"
    file.write_bytes(b"<tv generator-info-name='XMLTV'><channel id='a'><display-name>\xc9t\xe9"
                     b"</display-name></channel><programme start='20261123200000 +0000' "
                     b"stop='20261123210000 +0000' channel='a'><title>\xff\xc3\x28\xed\xa0\x80\x93q\x94"
                     b"</title></programme></tv>")
    (station,) = answer("guide '%s' --at 2026-11-23 --json" % file)["stations"]
    found = station["name"], station["broadcasts"][0]["title"]
    if found != ("\u00c9t\u00e9", "\u00ff\u00c3(\u00ed\u00a0\u20ac\u201cq\u201d"):
        raise SystemExit("bytes that are not UTF-8 become %r" % (found,))
