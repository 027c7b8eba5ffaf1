# SPDX-License-Identifier: GPL-3.0-or-later
"""The figures that every glyph is drawn to, and the list of drawn glyphs."""

from fontTools import agl

from geometry import bounds, shift
from pen import soften

UNITS = 1000
CAP = 700            # height of capitals and figures
TALL = 740           # height of b d f h k l
MEAN = 500           # height of x
DEEP = -200          # foot of g j p q y
OVER = 10            # by how much rounds pass the line
ASCENT, DESCENT, GAP = 780, -220, 200

CAP_V, CAP_H = 90, 82       # capitals and figures: upright and level weight
LOW_V, LOW_H = 86, 78       # small letters
MARK_V, MARK_H = 84, 78     # signs
FIGURE = 560                # advance of every digit
SIGN = 560                  # advance of the signs that go with digits

EXTRA_NAMES = {0x266D: "uni266D", 0x266E: "uni266E", 0x266F: "uni266F",
               0x00A0: "uni00A0", 0x00B7: "periodcentered", 0x2212: "minus"}


def name_of(char):
    code = ord(char)
    return EXTRA_NAMES.get(code) or agl.UV2AGL.get(code) or "uni%04X" % code


class Glyph:
    """An outline set in its advance width."""

    def __init__(self, char, shape, advance):
        self.char, self.shape, self.advance = char, shape, advance
        self.name = name_of(char)


DRAWN = {}


def glyph(char, left=0, right=0, width=None):
    """Enter the decorated drawing as a glyph.

    Side bearings are measured from the drawing's own extremes; with a width
    the drawing is centred in it, then moved by left - right halves.
    """
    def enter(draw):
        shape = soften(draw())
        x0, _, x1, _ = bounds(shape)
        if width is None:
            shape = shift(shape, left - x0)
            advance = round(left + x1 - x0 + right)
        else:
            shape = shift(shape, (width - (x1 - x0) + left - right) / 2 - x0)
            advance = width
        if char in DRAWN:
            raise ValueError("drawn twice: " + char)
        DRAWN[char] = Glyph(char, shape, advance)
        return draw
    return enter


def space(char, advance):
    DRAWN[char] = Glyph(char, [], advance)
