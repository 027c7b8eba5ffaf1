# SPDX-License-Identifier: GPL-3.0-or-later
"""Kerning, by the shape of the sides that meet.

A glyph is in at most one class as the first of a pair and in at most one as the
second, so every pair has one value.  Digits are left alone: columns of numbers
have to keep their width.
"""

HYPHENS = "hyphen uni2010 uni2011 endash emdash"
STOPS = "period comma ellipsis"
CLOSE = "quoteright quotedblright quotesingle quotedbl"
OPEN = "quoteleft quotedblleft"

# The right side of the first glyph.
FIRST = {
    "A": "A", "B": "B", "C": "C", "D": "D O Q", "F": "F", "G": "G", "J": "J U",
    "K": "K X", "L": "L", "P": "P", "R": "R", "S": "S", "T": "T", "V": "V", "W": "W",
    "Y": "Y", "Z": "Z",
    "n": "a d g h i j l m n q u", "o": "b e o p", "c": "c", "f": "f", "k": "k x",
    "r": "r", "s": "s", "t": "t z", "v": "v w y",
    "stop": STOPS, "hyphen": HYPHENS, "open": OPEN + " quotesingle quotedbl",
    "close": "quoteright quotedblright", "bracket": "parenleft bracketleft braceleft",
}

# The left side of the second glyph.
SECOND = {
    "A": "A", "J": "J", "O": "C G O Q", "S": "S", "T": "T", "U": "U", "V": "V", "W": "W",
    "X": "X", "Y": "Y", "Z": "Z",
    "a": "a", "n": "m n p r u", "o": "c d e g o q", "f": "f", "j": "j", "s": "s",
    "t": "t", "v": "v w y", "x": "x", "z": "z",
    "stop": STOPS, "colon": "colon semicolon", "hyphen": HYPHENS, "open": OPEN,
    "close": CLOSE, "sharp": "numbersign uni266F",
}

# Units added to the advance of the first glyph.
PAIRS = {
    "A": "T-62 V-58 W-42 Y-70 O-20 U-12 S-6 v-32 t-14 o-8 f-8 open-70 close-70 hyphen-14",
    "B": "A-6 T-10 V-10 W-6 Y-20 X-8 Z-4 v-4",
    "C": "A-10 T-8 V-8 Y-12 O-6 hyphen-10",
    "D": "A-20 T-22 V-18 W-12 Y-34 X-24 Z-16 J-14 S-4 stop-26 x-6 close-14",
    "F": "A-46 J-44 O-8 a-24 o-20 s-18 n-12 v-8 stop-84 colon-10 hyphen-14 sharp-24",
    "G": "T-12 V-12 W-6 Y-20 v-6",
    "J": "A-12 stop-8",
    "K": "O-28 S-8 a-8 o-20 v-30 t-12 hyphen-34 A+4",
    "L": "T-74 V-64 W-46 Y-84 O-26 U-10 v-40 t-16 o-6 open-90 close-90 hyphen-40",
    "P": "A-58 J-48 a-16 o-16 s-10 stop-92 hyphen-12 X-10 Z-6 Y-6",
    "R": "T-16 V-14 W-8 Y-24 O-6 U-4 o-8 v-4 hyphen-6",
    "S": "T-6 V-8 W-4 Y-14 A-6 v-6 X-4",
    "T": "A-62 J-54 O-22 S-8 a-76 o-80 s-72 n-58 v-54 x-54 z-54 t-14 f-8 stop-84 "
         "colon-40 hyphen-72 sharp-20",
    "V": "A-58 J-40 O-18 S-8 a-40 o-42 s-36 n-28 v-16 x-16 z-18 stop-80 colon-24 "
         "hyphen-36",
    "W": "A-42 J-26 O-12 S-4 a-28 o-28 s-24 n-18 v-8 stop-58 colon-14 hyphen-22",
    "Y": "A-70 J-56 O-34 S-16 a-72 o-78 s-68 n-52 v-36 x-36 z-40 t-16 f-10 stop-92 "
         "colon-44 hyphen-72 sharp-14",
    "Z": "O-16 v-18 o-8 hyphen-24",
    "n": "T-52 V-26 W-18 Y-52 close-14 v-4",
    "o": "T-80 V-42 W-28 Y-78 X-14 A-8 v-10 x-14 z-6 stop-10 close-26 open-20",
    "c": "T-64 V-26 Y-54 o-4 v-2",
    "f": "a-8 o-12 s-6 stop-44 hyphen-16 close+34 open+20 T+20 V+24 W+20 Y+24",
    "k": "o-18 a-6 s-6 hyphen-24 T-52 Y-36",
    "r": "a-16 o-14 s-6 stop-66 hyphen-26 v+8 t+6 f+6 x+4 T-50 Y-40 A-34",
    "s": "T-70 V-30 W-20 Y-60 v-6 close-14",
    "t": "o-6 T-40 Y-34 hyphen-10",
    "v": "a-8 o-10 s-6 stop-58 hyphen-10 T-52 V-16 Y-36 A-32 X-10",
    "stop": "T-72 V-80 W-56 Y-92 O-24 U-10 v-52 t-14 close-60 open-40",
    "hyphen": "T-72 V-36 W-22 Y-72 X-22 A-14 J-30 Z-14 v-10 x-18 z-6",
    "open": "A-70 J-66 O-8 a-18 o-24 s-16 stop-90",
    "close": "A-70 J-66 a-24 o-34 s-28 n-10 stop-90 t-4",
    "bracket": "O-14 o-10 j+64 J+6",
}


def pairs():
    """(first class, second class, units), in the order of the table."""
    for first, row in PAIRS.items():
        for entry in row.split():
            sign = max(entry.find("+"), entry.find("-"))
            yield first, entry[:sign], int(entry[sign:])


def glyph_pairs():
    """{(first glyph, second glyph): units}, the same pairs one by one."""
    return {(left, right): value
            for first, second, value in pairs()
            for left in FIRST[first].split() for right in SECOND[second].split()}


def features():
    """The kern feature, in the feature language."""
    lines = ["languagesystem DFLT dflt;", "languagesystem latn dflt;"]
    for side, classes in (("first", FIRST), ("second", SECOND)):
        seen = set()
        for name, members in classes.items():
            if seen & set(members.split()):
                raise ValueError("in two %s classes: %s" % (side, members))
            seen |= set(members.split())
            lines.append("@%s_%s = [%s];" % (side, name, members))
    lines.append("feature kern {")
    for first, second, value in pairs():
        lines.append("    pos @first_%s @second_%s %d;" % (first, second, value))
    lines.append("} kern;")
    return "\n".join(lines) + "\n"
