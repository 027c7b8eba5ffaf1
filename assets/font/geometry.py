# SPDX-License-Identifier: GPL-3.0-or-later
"""Curves and plain shapes, in font units, y upwards.

A point is a complex number.  A segment is a tuple of two points (a line) or of
four (a cubic curve).  A contour is a list of segments end to end and closed; a
shape is a list of contours.  Ink lies to the left of every contour, so outer
contours run counter-clockwise and counters run clockwise.
"""

import cmath
import math

# Handle length of a quarter ellipse, as a fraction of its radius.  A circle
# wants 0.5523; a little more fills the corners, which opens the counters.
ROUND = 0.566


def at(seg, t):
    """The point of a segment at parameter t."""
    if len(seg) == 2:
        return seg[0] + (seg[1] - seg[0]) * t
    a, b, c, d = seg
    s = 1 - t
    return s * s * s * a + 3 * s * s * t * b + 3 * s * t * t * c + t * t * t * d


def velocity(seg, t):
    """The derivative of a segment at parameter t."""
    if len(seg) == 2:
        return seg[1] - seg[0]
    a, b, c, d = seg
    s = 1 - t
    return 3 * (s * s * (b - a) + 2 * s * t * (c - b) + t * t * (d - c))


def heading(seg, t):
    """The unit tangent of a segment; steps inwards where a handle is empty."""
    v = velocity(seg, t)
    if abs(v) < 1e-6:
        inner = 1e-3 if t < 0.5 else 1 - 1e-3
        v = velocity(seg, inner)
    return v / abs(v)


def part(seg, t0, t1):
    """The piece of a segment between two parameters."""
    if t0 == 0 and t1 == 1:
        return seg
    p, q = at(seg, t0), at(seg, t1)
    if len(seg) == 2:
        return (p, q)
    k = (t1 - t0) / 3
    return (p, p + velocity(seg, t0) * k, q - velocity(seg, t1) * k, q)


def backwards(seg):
    return tuple(reversed(seg))


def length(seg, steps=16):
    if len(seg) == 2:
        return abs(seg[1] - seg[0])
    points = [at(seg, i / steps) for i in range(steps + 1)]
    return sum(abs(q - p) for p, q in zip(points, points[1:]))


def at_length(seg, distance, steps=64):
    """The parameter reached after travelling a distance along a segment."""
    if len(seg) == 2:
        return min(1.0, distance / abs(seg[1] - seg[0]))
    gone, previous = 0.0, seg[0]
    for i in range(1, steps + 1):
        point = at(seg, i / steps)
        step = abs(point - previous)
        if gone + step >= distance:
            return (i - 1 + (distance - gone) / step) / steps
        gone, previous = gone + step, point
    return 1.0


def box_of(seg):
    """Bounds of the control points: never too small, sometimes too large."""
    xs = [p.real for p in seg]
    ys = [p.imag for p in seg]
    return min(xs), min(ys), max(xs), max(ys)


def bounds(shape, steps=64):
    """Bounds of the curves themselves."""
    points = [at(s, i / steps) for c in shape for s in c for i in range(steps + 1)]
    xs = [p.real for p in points]
    ys = [p.imag for p in points]
    return min(xs), min(ys), max(xs), max(ys)


def area(contour, steps=16):
    """Signed area; positive when the contour runs counter-clockwise."""
    points = [at(s, i / steps) for s in contour for i in range(steps)]
    turned = zip(points, points[1:] + points[:1])
    return sum(p.real * q.imag - q.real * p.imag for p, q in turned) / 2


# Transformations --------------------------------------------------------------


def mapped(shape, function, mirrored=False):
    out = [[tuple(function(p) for p in s) for s in c] for c in shape]
    if mirrored:
        out = [[backwards(s) for s in reversed(c)] for c in out]
    return out


def shift(shape, dx, dy=0):
    return mapped(shape, lambda p: p + complex(dx, dy))


def turned_about(shape, x, y):
    """The shape turned by half a circle about a point."""
    return mapped(shape, lambda p: complex(2 * x, 2 * y) - p)


def flipped_x(shape, x):
    """The mirror image left to right about a vertical line."""
    return mapped(shape, lambda p: complex(2 * x - p.real, p.imag), True)


def flipped_y(shape, y):
    """The mirror image top to bottom about a horizontal line."""
    return mapped(shape, lambda p: complex(p.real, 2 * y - p.imag), True)


# Plain shapes -----------------------------------------------------------------


def poly(*corners):
    """A polygon from (x, y) pairs in either direction."""
    points = [complex(x, y) for x, y in corners]
    contour = list(zip(points, points[1:] + points[:1]))
    if area(contour) < 0:
        contour = [backwards(s) for s in reversed(contour)]
    return [contour]


def box(x0, y0, x1, y1):
    return poly((x0, y0), (x1, y0), (x1, y1), (x0, y1))


def slant(xb, yb, xt, yt, weight, top=None):
    """A straight diagonal with level ends.

    xb and xt are the middles of the lower and the upper end; weight is measured
    across the stroke.  top, if given, is the weight at the upper end, so that a
    diagonal may thin towards a join.
    """
    run = abs(complex(xt - xb, yt - yb)) / (yt - yb)
    b, t = weight * run / 2, (weight if top is None else top) * run / 2
    return poly((xb - b, yb), (xb + b, yb), (xt + t, yt), (xt - t, yt))


def wedged(low, high, weight, y0, y1):
    """A diagonal whose left edge passes one point and whose right edge another.

    It lets the diagonals of Z, z and 4 start right in the corners of the bars.
    """
    rise, lean = high[1] - low[1], 0.5
    for _ in range(60):                   # a contraction: settles well before
        half = weight / 2 * abs(complex(1, lean))
        lean = (high[0] - low[0] - 2 * half) / rise
    middle = low[0] + half
    return slant(middle + (y0 - low[1]) * lean, y0,
                 middle + (y1 - low[1]) * lean, y1, weight)


def oval(x0, y0, x1, y1, k=ROUND):
    """A closed oval in a box, with nodes at its four extremes."""
    c = complex((x0 + x1) / 2, (y0 + y1) / 2)
    r, u = (x1 - x0) / 2, (y1 - y0) / 2 * 1j
    corners = [c + r, c + u, c - r, c - u]
    arms = [u * k, -r * k, -u * k, r * k]
    contour = []
    for i in range(4):
        j = (i + 1) % 4
        contour.append((corners[i], corners[i] + arms[i],
                        corners[j] - arms[j], corners[j]))
    return [contour]


def hole(shape):
    """The same contours run the other way round, to cut a counter."""
    return [[backwards(s) for s in reversed(c)] for c in shape]


def ring(x0, y0, x1, y1, across, along, k=ROUND):
    """An oval band: across is its weight at the sides, along at top and foot."""
    inner = oval(x0 + across, y0 + along, x1 - across, y1 - along, k)
    return oval(x0, y0, x1, y1, k) + hole(inner)


def sector(x, y, from_degrees, to_degrees, reach=2000):
    """A wedge from a point, used to open a ring; less than a half turn."""
    middle = (from_degrees + to_degrees) / 2
    out = [complex(x, y)]
    for degrees in (from_degrees, middle, to_degrees):
        out.append(out[0] + cmath.rect(reach, math.radians(degrees)))
    return poly(*((p.real, p.imag) for p in out))
