# SPDX-License-Identifier: GPL-3.0-or-later
"""Small letters."""

from alphabet import DEEP, LOW_H as H, LOW_V as V, MEAN, OVER, TALL, glyph
from boolean import clip, cut, union
from geometry import (box, flipped_x, hole, oval, ring, sector, slant,
                      turned_about, wedged)
from pen import stroke

R_TOP = MEAN + OVER - H / 2
R_FOOT = H / 2 - OVER

STRAIGHT, ROUND, SLANT = 74, 46, 16
DOT = 112                   # across the dots of i and j


def stem(x=0, top=MEAN, foot=0):
    return box(x, foot, x + V, top)


def bar(x0, x1, top=MEAN):
    return box(x0, top - H, x1, top)


def small_ring(width=504):
    return ring(0, -OVER, width, MEAN + OVER, V + 2, H)


def bowl(width=492):
    """A ring for a stem at its left, thinner where the two run together."""
    outer = oval(26, -OVER, width, MEAN + OVER)
    return outer + hole(oval(88, H - OVER, width - V - 2, MEAN + OVER - H))


def arch(right, x=0, foot=0):
    """The arch of n, from inside a stem at x to its right leg."""
    return stroke([(x + 52, 285, 84, 0.5), (x + (right - x) * 0.52 + 22, R_TOP, 0),
                   (right - V / 2, 285, 270), (right - V / 2, foot, 270)], V, H)


def dot(x, y, size=DOT):
    return oval(x - size / 2, y - size / 2, x + size / 2, y + size / 2)


@glyph("a", 40, STRAIGHT - 4)
def _():
    spine = stroke([(52, 402, 58), (212, R_TOP, 0), (381, 318, 270), (381, 0, 270)], V, H)
    pouch = stroke([(381, 286, 180), (196, 286, 180), (42, 155, 270),
                    (188, R_FOOT, 0), (390, 150, 62, 0.6)], V, H - 4)
    return union(spine, clip(pouch, box(-50, -50, 400, 600)))


@glyph("b", STRAIGHT, ROUND)
def _():
    return union(stem(0, TALL), bowl())


@glyph("c", ROUND, 26)
def _():
    return cut(small_ring(), sector(252, 250, -46, 46))


@glyph("d", ROUND, STRAIGHT)
def _():
    return flipped_x(union(stem(0, TALL), bowl()), 250)


@glyph("e", ROUND, 40)
def _():
    around = cut(small_ring(), sector(260, 218, -40, 0))
    return union(around, box(45, 218, 460, 218 + H - 6))


@glyph("f", 18, 6)
def _():
    hook = stroke([(139, 0, 90), (139, 575, 90), (270, 706, 0), (312, 706, 0)], V, H)
    return union(hook, bar(0, 286))


@glyph("g", ROUND, STRAIGHT)
def _():
    round_ = flipped_x(bowl(), 250)
    tail = stroke([(457, MEAN, 270), (457, -20, 270), (255, DEEP - OVER + H / 2, 180),
                   (66, -98, 128)], V, H)
    return union(round_, tail)


@glyph("h", STRAIGHT, STRAIGHT - 4)
def _():
    return union(stem(0, TALL), arch(450))


@glyph("i", STRAIGHT - 8, STRAIGHT - 8)
def _():
    return stem() + dot(V / 2, 654)


@glyph("j", -14, STRAIGHT - 8)
def _():
    hook = stroke([(120, MEAN, 270), (120, -70, 270), (10, DEEP - OVER + H / 2, 180),
                   (-36, DEEP - OVER + H / 2, 180)], V, H)
    return hook + dot(120, 654)


@glyph("k", STRAIGHT, 10)
def _():
    arm = clip(slant(28, 135, 350, MEAN, 84), box(43, 0, 900, MEAN))
    return union(stem(0, TALL), arm, slant(376, 0, 168, 285, 85, 82))


@glyph("l", STRAIGHT, 18)
def _():
    return stroke([(43, TALL, 270), (43, 150, 270), (152, H / 2, 0), (192, H / 2, 0)], V, H)


@glyph("m", STRAIGHT, STRAIGHT - 4)
def _():
    return union(stem(), arch(420), arch(752, 334))


@glyph("n", STRAIGHT, STRAIGHT - 4)
def _():
    return union(stem(), arch(450))


@glyph("o", ROUND, ROUND)
def _():
    return small_ring()


@glyph("p", STRAIGHT, ROUND)
def _():
    return union(stem(0, MEAN, DEEP), bowl())


@glyph("q", ROUND, STRAIGHT)
def _():
    return flipped_x(union(stem(0, MEAN, DEEP), bowl()), 250)


@glyph("r", STRAIGHT, 8)
def _():
    ear = stroke([(52, 270, 84, 0.5), (238, R_TOP, 0), (304, 463, 347)], V, H)
    return union(stem(), ear)


@glyph("s", 32, 34)
def _():
    return stroke([(344, 398, 128), (200, R_TOP, 180), (62, 366, 270),
                   (202, 254, 346), (352, 136, 270), (200, R_FOOT, 180),
                   (36, 108, 124)], V - 4, H - 2)


@glyph("t", 18, 16)
def _():
    hook = stroke([(139, 640, 270), (139, 150, 270), (250, H / 2, 0), (296, H / 2, 0)], V, H)
    return union(hook, bar(0, 286))


@glyph("u", STRAIGHT - 4, STRAIGHT)
def _():
    return turned_about(union(stem(), arch(450)), 225, MEAN / 2)


@glyph("v", SLANT, SLANT)
def _():
    return union(slant(232, 0, 46, MEAN, 78, 85), slant(232, 0, 418, MEAN, 78, 85))


@glyph("w", SLANT, SLANT)
def _():
    return union(slant(204, 0, 45, MEAN, 74, 83), slant(204, 0, 360, MEAN, 76),
                 slant(516, 0, 360, MEAN, 76), slant(516, 0, 675, MEAN, 74, 83))


@glyph("x", SLANT, SLANT)
def _():
    return union(slant(50, 0, 398, MEAN, 83), slant(410, 0, 62, MEAN, 83))


@glyph("y", SLANT, SLANT)
def _():
    long_ = slant(140, DEEP, 424, MEAN, 84)
    return union(long_, slant(222, 0, 46, MEAN, 80, 85))


@glyph("z", 34, 34)
def _():
    side = clip(wedged((4, H), (374, MEAN - H), 82, 0, MEAN), box(4, 0, 374, MEAN))
    return union(bar(12, 374), bar(4, 388, H), side)
