# SPDX-License-Identifier: GPL-3.0-or-later
"""Strokes: a path walked by a pen, and the softening of the corners left."""

import cmath
import math

from geometry import ROUND, at, at_length, backwards, heading, length, part

FIT = 0.35      # units: how far an offset curve may stray from the true one
SOFT = 20       # units: radius given to outer corners
STEP = 1e-4     # parameter step for derivatives of offset curves


def unit(degrees):
    return cmath.rect(1, math.radians(degrees))


def reach(theta, phi):
    """Length of a handle by Hobby's rule, as a fraction of the chord."""
    top = 2 + math.sqrt(2) * ((math.sin(theta) - math.sin(phi) / 16)
                              * (math.sin(phi) - math.sin(theta) / 16)
                              * (math.cos(theta) - math.cos(phi)))
    foot = 1 + ((math.sqrt(5) - 1) * math.cos(theta)
                + (3 - math.sqrt(5)) * math.cos(phi)) / 2
    return top / foot / 3


def link(p, q, leave, arrive):
    """A line or a smooth curve between two points with given headings."""
    chord = q - p
    theta = cmath.phase(leave / chord)
    phi = -cmath.phase(arrive / chord)
    if abs(theta) < 1e-3 and abs(phi) < 1e-3:
        return (p, q)
    square = abs((leave * arrive.conjugate()).real) < 1e-6
    level = min(abs(leave.real), abs(leave.imag)) < 1e-6
    if square and level:                  # a quarter of an oval
        u = abs((chord * leave.conjugate()).real) * ROUND
        v = abs((chord * arrive.conjugate()).real) * ROUND
    else:
        u = reach(theta, phi) * abs(chord)
        v = reach(phi, theta) * abs(chord)
    return (p, p + leave * u, q - arrive * v, q)


class Side:
    """One side of a stroke along one segment of its path."""

    def __init__(self, seg, across, along, w0, w1, side):
        self.seg, self.side = seg, side
        self.rx, self.ry = across / 2, along / 2
        self.w0, self.w1 = w0, w1

    def point(self, t):
        # The nib is an oval, so level strokes come out a little thinner.
        normal = heading(self.seg, t) * 1j
        nx, ny = normal.real * self.rx, normal.imag * self.ry
        size = math.hypot(nx, ny)
        rim = complex(self.rx * nx / size, self.ry * ny / size)
        ease = t * t * (3 - 2 * t)        # no kink where the weight settles
        weight = self.w0 + (self.w1 - self.w0) * ease
        return at(self.seg, t) + rim * weight * self.side

    def slope(self, t):
        a, b = max(0.0, t - STEP), min(1.0, t + STEP)
        return (self.point(b) - self.point(a)) / (b - a)

    def curves(self, t0=0.0, t1=1.0, depth=0):
        p, q = self.point(t0), self.point(t1)
        if len(self.seg) == 2:
            return [(p, q)]
        k = (t1 - t0) / 3
        fit = (p, p + self.slope(t0) * k, q - self.slope(t1) * k, q)
        for i in range(1, 8):
            true = self.point(t0 + (t1 - t0) * i / 8)
            # Only the gap across the curve counts.
            gap = (true - at(fit, i / 8)) / heading(fit, i / 8)
            if abs(gap.imag) > FIT and depth < 4:
                m = (t0 + t1) / 2
                return (self.curves(t0, m, depth + 1)
                        + self.curves(m, t1, depth + 1))
        return [fit]


def stroke(nodes, across, along):
    """The outline of a stroke with plain ends square to its path.

    A node is (x, y, heading in degrees[, weight factor]).
    """
    points = [complex(n[0], n[1]) for n in nodes]
    heads = [unit(n[2]) for n in nodes]
    weights = [n[3] if len(n) > 3 else 1.0 for n in nodes]
    left, right = [], []
    for i in range(len(nodes) - 1):
        seg = link(points[i], points[i + 1], heads[i], heads[i + 1])
        for side, out in ((1, left), (-1, right)):
            out.extend(Side(seg, across, along, weights[i], weights[i + 1],
                            side).curves())
    left = [backwards(s) for s in reversed(left)]
    contour = closed_up(right) + [(right[-1][-1], left[0][0])]
    contour += closed_up(left) + [(left[-1][-1], right[0][0])]
    return [contour]


def closed_up(segs):
    """Let every segment begin exactly where the one before it ended."""
    out = segs[:1]
    for seg in segs[1:]:
        out.append((out[-1][-1],) + seg[1:])
    return out


# Corners ----------------------------------------------------------------------


def soften(shape, radius=SOFT):
    """Round off outer corners; crotches stay sharp, so that joins stay clear."""
    return [soft_contour(c, radius) for c in shape]


def soft_contour(contour, radius):
    count = len(contour)
    trims = []                            # by node: distance cut off both sides
    for i in range(count):
        before, after = contour[i - 1], contour[i]
        turn = cmath.phase(heading(after, 0) / heading(before, 1))
        trim = 0.0
        if turn > math.radians(18):
            trim = min(radius * math.tan(min(turn, 2.4) / 2), 1.6 * radius)
            trim = min(trim, 0.46 * length(before), 0.46 * length(after))
        trims.append(trim)
    trimmed = []
    for i, seg in enumerate(contour):
        t0 = at_length(seg, trims[i]) if trims[i] else 0
        rest = trims[(i + 1) % count]
        t1 = 1 - at_length(backwards(seg), rest) if rest else 1
        trimmed.append(part(seg, t0, t1))
    out = []
    for i, seg in enumerate(trimmed):
        if trims[i]:
            before = trimmed[i - 1]
            p, q = before[-1], seg[0]
            leave, arrive = heading(before, 1), heading(seg, 0)
            turn = cmath.phase(arrive / leave)
            round_ = abs(q - p) / (2 * math.sin(turn / 2))
            arm = 4 / 3 * math.tan(turn / 4) * round_
            out.append((p, p + leave * arm, q - arrive * arm, q))
        out.append(seg)
    return out
