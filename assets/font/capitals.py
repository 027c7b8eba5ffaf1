# SPDX-License-Identifier: GPL-3.0-or-later
"""Capital letters."""

from alphabet import CAP, CAP_H as H, CAP_V as V, OVER, glyph
from boolean import clip, cut, union
from geometry import box, ring, sector, slant, wedged
from pen import stroke

TOP = CAP - H / 2           # middle of a level stroke along the cap line
FOOT = H / 2                # and along the base line
R_TOP = CAP + OVER - H / 2  # the same for round strokes
R_FOOT = H / 2 - OVER

STRAIGHT, ROUND, SLANT = 88, 52, 18    # side bearings by kind of side


def stem(x=0, top=CAP):
    return box(x, 0, x + V, top)


def bar(x0, x1, middle):
    return box(x0, middle - H / 2, x1, middle + H / 2)


def big_ring(width):
    return ring(0, -OVER, width, CAP + OVER, V + 2, H)


@glyph("A", SLANT, SLANT)
def _():
    left, right = slant(48, 0, 314, CAP, 89, 84), slant(580, 0, 314, CAP, 89, 84)
    return union(left, right, box(130, 166, 498, 244))


@glyph("B", STRAIGHT, 46)
def _():
    waist = 366
    upper = stroke([(40, TOP, 0), (245, TOP, 0), (393, (TOP + waist) / 2, 270),
                    (245, waist, 180), (40, waist, 180)], V, H)
    lower = stroke([(40, waist, 0), (262, waist, 0), (428, (FOOT + waist) / 2, 270),
                    (262, FOOT, 180), (40, FOOT, 180)], V, H)
    return union(stem(), upper, lower)


@glyph("C", ROUND, 34)
def _():
    return cut(big_ring(650), sector(325, 350, -46, 46))


@glyph("D", STRAIGHT, ROUND)
def _():
    bowl = stroke([(40, TOP, 0), (235, TOP, 0), (520, CAP / 2, 270),
                   (235, FOOT, 180), (40, FOOT, 180)], V, H)
    return union(stem(), bowl)


@glyph("E", STRAIGHT, 38)
def _():
    return union(stem(), bar(45, 412, TOP), bar(45, 378, 360), bar(45, 418, FOOT))


@glyph("F", STRAIGHT, 26)
def _():
    return union(stem(), bar(45, 404, TOP), bar(45, 368, 338))


@glyph("G", ROUND, 62)
def _():
    around = cut(big_ring(660), sector(330, 350, 0, 48))
    return union(around, box(360, 350 - H, 610, 350))


@glyph("H", STRAIGHT, STRAIGHT)
def _():
    return union(stem(), stem(460), bar(45, 505, 360))


@glyph("I", STRAIGHT, STRAIGHT)
def _():
    return stem()


@glyph("J", 22, STRAIGHT - 4)
def _():
    return stroke([(290, CAP, 270), (290, 205, 270), (150, R_FOOT, 180),
                   (24, 138, 112)], V, H)


@glyph("K", STRAIGHT, 16)
def _():
    arm = clip(slant(30, 195, 410, CAP, 88), box(45, 0, 900, CAP))
    leg = slant(452, 0, 188, 400, 89, 86)
    return union(stem(), arm, leg)


@glyph("L", STRAIGHT, 26)
def _():
    return union(stem(), bar(45, 396, FOOT))


@glyph("M", STRAIGHT, STRAIGHT)
def _():
    left, right = slant(350, 140, 48, CAP, 80, 86), slant(350, 140, 652, CAP, 80, 86)
    # Clipped, since a diagonal's end would stand out of its stem by a hair.
    return clip(union(stem(), stem(700 - V), left, right), box(0, 0, 700, CAP))


@glyph("N", STRAIGHT, STRAIGHT)
def _():
    return clip(union(stem(), stem(470), slant(510, 0, 50, CAP, 84)),
                box(0, 0, 470 + V, CAP))


@glyph("O", ROUND, ROUND)
def _():
    return big_ring(690)


def p_bowl(right, waist):
    return stroke([(40, TOP, 0), (248, TOP, 0), (right - V / 2, (TOP + waist) / 2, 270),
                   (248, waist, 180), (40, waist, 180)], V, H)


@glyph("P", STRAIGHT, 38)
def _():
    return union(stem(), p_bowl(450, 300))


@glyph("Q", ROUND, ROUND - 12)
def _():
    return union(big_ring(690), 
                 stroke([(462, 168, 311), (644, -41, 311)], V - 2, H + 2))


@glyph("R", STRAIGHT, 24)
def _():
    return union(stem(), p_bowl(456, 314), slant(428, 0, 240, 340, 89))


@glyph("S", 40, 40)
def _():
    return stroke([(440, 565, 122), (248, R_TOP, 180), (80, 522, 270),
                   (256, 360, 341), (438, 186, 270), (248, R_FOOT, 180),
                   (42, 146, 118)], V - 2, H)


@glyph("T", 26, 26)
def _():
    return union(bar(0, 530, TOP), stem(265 - V / 2))


@glyph("U", STRAIGHT - 6, STRAIGHT - 6)
def _():
    return stroke([(45, CAP, 270), (45, 262, 270), (272, R_FOOT, 0),
                   (499, 262, 90), (499, CAP, 90)], V, H)


@glyph("V", SLANT, SLANT)
def _():
    return union(slant(308, 0, 48, CAP, 84, 89), slant(308, 0, 568, CAP, 84, 89))


@glyph("W", SLANT + 2, SLANT + 2)
def _():
    return union(slant(258, 0, 47, CAP, 80, 87), slant(258, 0, 462, CAP, 80),
                 slant(666, 0, 462, CAP, 80), slant(666, 0, 877, CAP, 80, 87))


@glyph("X", SLANT + 4, SLANT + 4)
def _():
    return union(slant(52, 0, 518, CAP, 87), slant(542, 0, 76, CAP, 87))


@glyph("Y", SLANT - 4, SLANT - 4)
def _():
    fork, middle = 278, 292
    run = abs(complex(middle - 50, CAP - fork)) / (CAP - fork)
    return union(box(middle - V / 2, 0, middle + V / 2, fork),
                 slant(middle, fork, 50, CAP, V / run, 88),
                 slant(middle, fork, 2 * middle - 50, CAP, V / run, 88))


@glyph("Z", 40, 40)
def _():
    side = clip(wedged((10, H), (488, CAP - H), 86, 0, CAP), box(10, 0, 488, CAP))
    return union(bar(20, 488, TOP), bar(10, 506, FOOT), side)
