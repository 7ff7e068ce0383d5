#!/usr/bin/env python3
"""Writes app/width_table.h, the columns of characters on a terminal, from Unicode's own data.

    scripts/make-width-table.py [FOLDER]   of EastAsianWidth.txt, UnicodeData.txt and
                                           emoji/emoji-data.txt (default: that of Debian's package
                                           unicode-data)
"""

import sys
from pathlib import Path

FOLDER = Path(sys.argv[1] if len(sys.argv) > 1 else "/usr/share/unicode")
TARGET = Path(__file__).resolve().parent.parent / "app" / "width_table.h"
# A flag is two of these, and two columns wide.
REGIONAL_INDICATORS = range(0x1F1E6, 0x1F200)


def properties(name):
    """(code, property) of every line of a file of ranges."""
    for line in (FOLDER / name).read_text(encoding="utf-8").splitlines():
        fields = [field.strip() for field in line.split("#")[0].split(";")]
        if len(fields) < 2:
            continue
        first, _, last = fields[0].partition("..")
        for code in range(int(first, 16), int(last or first, 16) + 1):
            yield code, fields[1]


def ranges(codes):
    """Sorted codes as (first, last)."""
    found = []
    for code in sorted(codes):
        if found and found[-1][1] == code - 1:
            found[-1][1] = code
        else:
            found.append([code, code])
    return found


def table(name, comment, codes):
    cells = ["{0x%x, 0x%x}" % tuple(one) for one in ranges(codes)]
    lines, line = [], "   "
    for cell in cells:
        if len(line) + len(cell) + 2 > 100:
            lines.append(line)
            line = "   "
        line += " " + cell + ","
    lines.append(line)
    return "// %s\ninline constexpr CodeRange %s[] = {\n%s\n};\n" % (comment, name, "\n".join(lines))


wide = {code for code, width in properties("EastAsianWidth.txt") if width in ("W", "F")}
wide |= {code for code, kind in properties("emoji/emoji-data.txt") if kind == "Emoji_Presentation"}
wide -= set(REGIONAL_INDICATORS)

none = {0x1160 + i for i in range(0x11FF - 0x1160 + 1)}  # join with the Hangul letter before them
for line in (FOLDER / "UnicodeData.txt").read_text().splitlines():
    fields = line.split(";")
    # Marks, and formats such as joiners; the soft hyphen is shown.
    if fields[2] in ("Mn", "Me", "Cf") and int(fields[0], 16) != 0xAD:
        none.add(int(fields[0], 16))

version = (FOLDER / "EastAsianWidth.txt").read_text(encoding="utf-8").split("\n")[0][2:]
TARGET.write_text("""// Columns of characters on a terminal. Written by scripts/make-width-table.py from Unicode's data,
// %s and others of that version.
#pragma once

namespace shell {

struct CodeRange {
  char32_t first;
  char32_t last;
};

// clang-format off
%s
%s// clang-format on

}  // namespace shell
""" % (version, table("kNoColumn", "Marks that combine with the character before them, and joiners.",
                      none - wide),
       table("kTwoColumns", "East Asian characters and emoji.", wide)))
