# SPDX-License-Identifier: GPL-3.0-or-later
"""Spaces, punctuation and the other signs."""

from alphabet import CAP, CAP_H, CAP_V, FIGURE, MARK_H as H, MARK_V as V, OVER, glyph, space
from boolean import clip, cut, union
from geometry import (box, flipped_x, mapped, oval, poly, ring, sector, shift, slant,
                      turned_about)
from pen import stroke

DOT = 116
MIDDLE = 272                # height of hyphen and dashes

space(" ", 260)
space("\u00A0", 260)


def dot(x=0, y=0, size=DOT):
    return oval(x, y, x + size, y + size)


def tadpole():
    """A comma on the base line: a dot with a tail swept to the left."""
    tail = stroke([(72, 74, 270), (70, 34, 268), (2, -122, 228)], 88, 88)
    return union(dot(), tail)


HIGH = CAP - DOT            # foot of a quote's dot


def quote():
    return shift(tadpole(), 0, HIGH + 10)


def turned_quote():
    low = tadpole()
    return turned_about(shift(low, 0, HIGH + 10), DOT / 2, HIGH + 10 + (DOT - 124) / 2)


@glyph(".", 56, 56)
def _():
    return dot(0, -2)


@glyph(",", 40, 56)
def _():
    return tadpole()


@glyph(":", 62, 62)
def _():
    return dot(0, -2) + dot(0, 392)


@glyph(";", 46, 62)
def _():
    return tadpole() + dot(0, 392)


@glyph("…", 62, 62)
def _():
    return dot(0, -2) + dot(260, -2) + dot(520, -2)


@glyph("·", 62, 62)
def _():
    return dot(0, MIDDLE - DOT / 2)


@glyph("•", 60, 60)
def _():
    return dot(0, 350 - 110, 220)


@glyph("!", 74, 74)
def _():
    return poly((DOT / 2 - 40, 208), (DOT / 2 + 40, 208), (DOT / 2 + 46, CAP),
                (DOT / 2 - 46, CAP)) + dot(0, -2)


@glyph("?", 34, 34)
def _():
    hook = stroke([(36, 562, 76), (206, CAP + OVER - H / 2, 0), (362, 520, 270),
                   (280, 372, 225), (204, 204, 270)], CAP_V - 2, H)
    return hook + dot(204 - DOT / 2, -2)


@glyph("'", 60, 60)
def _():
    return box(0, 460, 84, CAP)


@glyph('"', 60, 60)
def _():
    return box(0, 460, 84, CAP) + box(184, 460, 268, CAP)


@glyph("\u2018", 40, 40)
def _():
    return turned_quote()


@glyph("\u2019", 40, 40)
def _():
    return quote()


@glyph("\u201C", 40, 40)
def _():
    return turned_quote() + shift(turned_quote(), 200)


@glyph("\u201D", 40, 40)
def _():
    return quote() + shift(quote(), 200)


def dash(char, width, side):
    glyph(char, side, side)(lambda: box(0, MIDDLE - H / 2, width, MIDDLE + H / 2))


dash("-", 260, 50)
dash("\u2010", 260, 50)
dash("\u2011", 260, 50)
dash("\u2013", 440, 50)
dash("\u2014", 840, 50)


@glyph("_", 0, 0)
def _():
    return box(0, -130, 500, -130 + H)


@glyph("/", 20, 20)
def _():
    return slant(45, -60, 345, 740, 80)


@glyph("\\", 20, 20)
def _():
    return slant(345, -60, 45, 740, 80)


@glyph("|", 84, 84)
def _():
    return box(0, -180, 80, 760)


def paren():
    return stroke([(210, 745, 228), (42, 300, 270), (210, -145, 312)], V, H)


@glyph("(", 60, 20)
def _():
    return paren()


@glyph(")", 20, 60)
def _():
    return flipped_x(paren(), 200)


def bracket():
    return union(box(0, -140, V, 740), box(0, 740 - H, 220, 740), box(0, -140, 220, -140 + H))


@glyph("[", 78, 20)
def _():
    return bracket()


@glyph("]", 20, 78)
def _():
    return flipped_x(bracket(), 200)


def brace():
    upper = stroke([(250, 740 - H / 2, 180), (222, 740 - H / 2, 180), (122, 620, 270),
                    (122, 430, 270), (18, 300, 180)], V, H)
    lower = stroke([(18, 300, 0), (122, 170, 270), (122, -20, 270),
                    (222, -140 + H / 2, 0), (250, -140 + H / 2, 0)], V, H)
    return union(upper, lower)


@glyph("{", 30, 24)
def _():
    return brace()


@glyph("}", 24, 30)
def _():
    return flipped_x(brace(), 200)


@glyph("*", 40, 40)
def _():
    arms = [stroke([(180, 530, a), (180 + dx, 530 + dy, a)], 74, 74)
            for a, dx, dy in ((90, 0, 178), (18, 169, 55), (162, -169, 55),
                              (306, 105, -144), (234, -105, -144))]
    return union(*arms)


@glyph("^", 50, 50)
def _():
    return union(slant(40, 410, 200, CAP, 80, 74), slant(360, 410, 200, CAP, 80, 74))


@glyph("`", 60, 60)
def _():
    return slant(160, 570, 50, 730, 80)


@glyph("~", width=FIGURE)
def _():
    return stroke([(30, 290, 62), (140, 385, 0), (215, 350, 325), (290, 315, 0),
                   (400, 410, 62)], 82, H)


@glyph("&", 44, 16)
def _():
    path = stroke([(596, -61, 132), (128, 470, 128), (104, 555, 90),
                   (226, CAP + OVER - CAP_H / 2, 0), (346, 556, 270),
                   (220, 404, 214), (44, 190, 270), (228, CAP_H / 2 - OVER, 0),
                   (506, 318, 82)], CAP_V - 4, CAP_H)
    return cut(path, box(400, -100, 900, 0))   # the leg stands on the line


@glyph("@", 50, 50)
def _():
    outer = cut(ring(0, -180, 900, 720, 74, 70), sector(450, 270, -64, -8))
    inner = ring(218, 70, 606, 478, 74, 70)
    hook = stroke([(608, 474, 270), (608, 190, 270), (716, 105, 0), (863, 268, 90)], 74, 70)
    return union(outer, inner, hook)


@glyph("©", 44, 44)
def _():
    return ring(0, -OVER, 720, 710, 72, 66) + cut(ring(190, 180, 530, 520, 72, 66),
                                                  sector(360, 350, -46, 46))


# Arrows -----------------------------------------------------------------------


def arrow():
    """To the right, centred on the axis of the signs."""
    upper = stroke([(320, 590, 315), (560, 350, 315)], 82, 82)
    lower = stroke([(320, 110, 45), (560, 350, 45)], 82, 82)
    tip = box(-100, 0, 560, 700)
    return union(clip(upper, tip), clip(lower, tip), box(0, 350 - H / 2, 530, 350 + H / 2))


def quarter_turned(shape):
    return mapped(shape, lambda p: (p - 280 - 350j) * 1j + 280 + 350j)


@glyph("\u2190", 50, 50)
def _():
    return turned_about(arrow(), 280, 350)


@glyph("\u2191", 50, 50)
def _():
    return quarter_turned(arrow())


@glyph("\u2192", 50, 50)
def _():
    return arrow()


@glyph("\u2193", 50, 50)
def _():
    return turned_about(quarter_turned(arrow()), 280, 350)
