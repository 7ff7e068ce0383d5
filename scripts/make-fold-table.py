#!/usr/bin/env python3
"""Writes app/fold_table.h, what characters are compared as in a search: small, without accents.

    scripts/make-fold-table.py
"""

import unicodedata
from pathlib import Path

TARGET = Path(__file__).resolve().parent.parent / "app" / "fold_table.h"
# Letters that have no parts in Unicode's data, but are typed as others.
TYPED = {"ø": "o", "đ": "d", "ħ": "h", "ı": "i", "ł": "l", "ŧ": "t", "æ": "ae", "œ": "oe", "þ": "th",
         "ð": "d", "ŋ": "n", "’": "'", "‘": "'", "“": '"', "”": '"', "–": "-", "—": "-", "\u00a0": " "}
# Latin to Cyrillic with all their additions, accents by themselves, ligatures and wide letters.
CODES = [*range(0x80, 0x530), *range(0x1E00, 0x2000), *range(0x2010, 0x2027), *range(0xFB00, 0xFB07),
         *range(0xFF01, 0xFF5F)]


def fold(character):
    parts = unicodedata.normalize("NFKD", character).casefold()
    parts = "".join(part for part in parts if not unicodedata.combining(part))
    return "".join(TYPED.get(part, part) for part in parts)


def literal(text):
    return '"' + "".join(c if " " <= c <= "~" and c not in '"\\' else
                         "".join("\\%03o" % byte for byte in c.encode()) for c in text) + '"'


entries = ["{0x%x, %s}," % (code, literal(fold(chr(code)))) for code in CODES
           if fold(chr(code)) != chr(code) and unicodedata.category(chr(code))[0] != "C"]
lines, line = [], "   "
for entry in entries:
    if len(line) + 1 + len(entry) > 100:
        lines.append(line)
        line = "   "
    line += " " + entry
lines.append(line)
TARGET.write_text("""// What characters are compared as in a search. Made by scripts/make-fold-table.py; not to be edited.
#pragma once

namespace shell {

struct Fold {
  char32_t code;
  const char* folded;  // UTF-8; empty for an accent by itself
};

// In order of the codes.
// clang-format off
inline constexpr Fold kFolds[] = {
%s
};
// clang-format on

}  // namespace shell
""" % "\n".join(lines), encoding="utf-8")
