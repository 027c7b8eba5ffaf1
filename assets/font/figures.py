# SPDX-License-Identifier: GPL-3.0-or-later
"""Digits, all of one width, and the signs used with them."""

from alphabet import (CAP, CAP_H as H, CAP_V as V, FIGURE, MARK_H, MARK_V, OVER,
                      SIGN, glyph)
from boolean import clip, cut, union
from geometry import box, oval, poly, ring, shift, slant, turned_about, wedged
from pen import stroke

R_TOP = CAP + OVER - H / 2
R_FOOT = H / 2 - OVER
AXIS = 350                  # height about which signs are centred


@glyph("0", width=FIGURE)
def _():
    return ring(0, -OVER, 470, CAP + OVER, V, H)


@glyph("1", left=-60, width=FIGURE)   # the flag weighs little
def _():
    flag = clip(stroke([(78, 552, 39), (318, 746, 39)], V - 6, H),
                box(0, 0, 240 + V / 2, CAP))
    return union(box(240 - V / 2, 0, 240 + V / 2, CAP), flag)


@glyph("2", width=FIGURE)
def _():
    swan = stroke([(38, 548, 74), (232, R_TOP, 0), (404, 500, 270),
                   (322, 318, 231), (7, 8, 226)], V, H)
    return union(cut(swan, box(-100, -100, 18, 300), box(-100, -100, 600, 0)),
                 box(18, 0, 456, H))


@glyph("3", width=FIGURE)
def _():
    waist = 372
    upper = stroke([(42, 584, 62), (218, R_TOP, 0), (382, (R_TOP + waist) / 2, 270),
                    (222, waist, 180), (150, waist, 180)], V, H)
    lower = stroke([(150, waist, 0), (222, waist, 0), (414, (R_FOOT + waist) / 2, 270),
                    (218, R_FOOT, 180), (26, 132, 116)], V, H)
    return union(upper, lower)


@glyph("4", width=FIGURE)
def _():
    # The diagonal runs from the head of the stem to the left end of the bar.
    side = clip(wedged((8, 150 + H - 2), (390, CAP), 82, 150, CAP), box(8, 150, 390, CAP))
    return union(box(308, 0, 308 + V, CAP), side, box(8, 150, 486, 150 + H - 2))


@glyph("5", width=FIGURE)
def _():
    neck = poly((72, CAP), (48, 322), (108, 322), (134, 400), (156, CAP))
    bowl = stroke([(88, 351, 40), (222, 412, 0), (416, 220, 270),
                   (212, R_FOOT, 180), (26, 126, 122)], V, H)
    bowl = cut(bowl, box(40, 300, 120, 322))      # level with the neck's foot
    return union(neck, box(72, CAP - H, 418, CAP), bowl)


def six():
    loop = ring(0, -OVER, 470, 446, V, H - 2)
    back = stroke([(V / 2, 218, 90), (V / 2, 320, 90), (262, R_TOP, 0),
                   (412, 604, 308)], V, H)
    return union(loop, back)


@glyph("6", width=FIGURE)
def _():
    return six()


@glyph("7", width=FIGURE)
def _():
    return union(box(0, CAP - H, 448, CAP), clip(slant(150, 0, 434, CAP, 88), box(0, 0, 448, CAP)))


@glyph("8", width=FIGURE)
def _():
    return union(ring(28, 334, 442, CAP + OVER, V - 2, H - 4),
                 ring(0, -OVER, 470, 334 + H - 8, V, H - 2))


@glyph("9", width=FIGURE)
def _():
    return turned_about(six(), 235, CAP / 2)


# Signs ------------------------------------------------------------------------


def level(y, x0=0, x1=430):
    return box(x0, y - MARK_H / 2, x1, y + MARK_H / 2)


def upright(x, y0, y1):
    return box(x - MARK_V / 2, y0, x + MARK_V / 2, y1)


@glyph("+", width=SIGN)
def _():
    return union(level(AXIS), upright(215, AXIS - 215, AXIS + 215))


@glyph("\u2212", width=SIGN)
def _():
    return level(AXIS)


@glyph("±", width=SIGN)
def _():
    return union(level(390), upright(215, 190, 590)) + level(80)


@glyph("×", width=SIGN)
def _():
    return union(slant(30, AXIS - 168, 366, AXIS + 168, 80),
                 slant(366, AXIS - 168, 30, AXIS + 168, 80))


@glyph("÷", width=SIGN)
def _():
    return (level(AXIS) + oval(161, AXIS + 106, 269, AXIS + 214)
            + oval(161, AXIS - 214, 269, AXIS - 106))


@glyph("=", width=SIGN)
def _():
    return level(AXIS + 95) + level(AXIS - 95)


def beak():
    """The sign <, between AXIS - 225 and AXIS + 225."""
    upper = stroke([(440, AXIS + 200, 205), (10, AXIS, 205)], 82, 80)
    lower = stroke([(440, AXIS - 200, 155), (10, AXIS, 155)], 82, 80)
    return clip(union(upper, lower), box(0, 0, 410, CAP))


@glyph("<", width=SIGN)
def _():
    return beak()


@glyph(">", width=SIGN)
def _():
    return turned_about(beak(), 215, AXIS)


@glyph("%", left=34, right=34)
def _():
    ball = ring(0, 384, 272, CAP + OVER, 80, 74)
    return union(ball, slant(120, 0, 552, CAP, 80), shift(ball, 400, -394))


@glyph("#", left=30, right=30)
def _():
    return union(slant(112, 0, 202, CAP, 80), slant(330, 0, 420, CAP, 80),
                 level(466, 32, 532), level(234, 0, 500))


@glyph("$", width=SIGN)
def _():
    snake = stroke([(420, 548, 124), (240, R_TOP - 30, 180), (82, 510, 270),
                    (250, 358, 342), (424, 196, 270), (240, R_FOOT + 30, 180),
                    (46, 160, 118)], V - 4, H - 4)
    ticks = union(upright(240, 640, 770), upright(240, -70, 60))
    return union(snake, ticks)


@glyph("°", left=40, right=40)
def _():
    return ring(0, 432, 272, CAP + 4, 76, 72)


# Music ------------------------------------------------------------------------


@glyph("\u266F", left=40, right=40)
def _():
    def tilted(y):
        return stroke([(-40, y - 58, 13.5), (460, y + 62, 13.5)], 76, 76)
    clear = box(0, -150, 420, 850)
    left, right = box(86, -50, 162, 712), box(258, -12, 334, 750)
    return union(left, right, clip(tilted(472), clear), clip(tilted(228), clear))


@glyph("\u266D", left=60, right=36)
def _():
    bowl = stroke([(50, 330, 42), (196, 404, 0), (318, 284, 270), (44, 20, 214)], V - 8, H - 4)
    return union(box(0, 0, 80, 760), clip(bowl, box(40, 0, 500, 600)))
