# SPDX-License-Identifier: GPL-3.0-or-later
"""Union, difference and intersection of shapes made of lines and cubic curves.

Every segment is split where it meets another, each piece is kept when there is
ink on exactly one of its sides, and the pieces kept are strung together again.
The finished outlines therefore never overlap.
"""

from geometry import at, backwards, box_of, heading, length, part

NEAR = 0.25    # units: an end this close to a segment lies on it
SNAP = 0.5     # units: points this close to each other are one point
PROBE = 0.12   # units: how far beside a piece its two sides are looked at
FLAT = 0.02    # units: a curve this straight is treated as its chord


def flat_enough(seg):
    if len(seg) == 2:
        return True
    chord = seg[3] - seg[0]
    size = abs(chord)
    if size < 1e-9:
        return abs(seg[1] - seg[0]) + abs(seg[2] - seg[0]) < FLAT
    unit = chord.conjugate() / size
    return all(abs(((p - seg[0]) * unit).imag) < FLAT for p in seg[1:3])


def chord_meeting(a, b):
    """Fractions along two chords where they cross, or None."""
    p, d = a[0], a[-1] - a[0]
    q, e = b[0], b[-1] - b[0]
    cross = (d.conjugate() * e).imag
    if abs(cross) < 1e-9 * max(1e-9, abs(d) * abs(e)):
        return None
    t = ((q - p).conjugate() * e).imag / cross
    u = ((q - p).conjugate() * d).imag / cross
    slack = 1e-6
    if -slack <= t <= 1 + slack and -slack <= u <= 1 + slack:
        return min(1, max(0, t)), min(1, max(0, u))
    return None


def apart(a, b, by=0.0):
    p, q = box_of(a), box_of(b)
    return (p[2] + by < q[0] or q[2] + by < p[0]
            or p[3] + by < q[1] or q[3] + by < p[1])


def meetings(a, b):
    """Parameter pairs at which two segments cross."""
    found = []
    stack = [(a, 0.0, 1.0, b, 0.0, 1.0)]
    while stack:
        p, p0, p1, q, q0, q1 = stack.pop()
        if apart(p, q):
            continue
        if flat_enough(p) and flat_enough(q):
            hit = chord_meeting(p, q)
            if hit:
                found.append((p0 + (p1 - p0) * hit[0], q0 + (q1 - q0) * hit[1]))
            continue
        ps = [(p, p0, p1)]
        if not flat_enough(p):
            m = (p0 + p1) / 2
            ps = [(part(p, 0, 0.5), p0, m), (part(p, 0.5, 1), m, p1)]
        qs = [(q, q0, q1)]
        if not flat_enough(q):
            m = (q0 + q1) / 2
            qs = [(part(q, 0, 0.5), q0, m), (part(q, 0.5, 1), m, q1)]
        stack.extend(x + y for x in ps for y in qs)
    return found


def nearest(seg, point):
    """Parameter and distance of the point of a segment nearest to another."""
    if len(seg) == 2:
        d = seg[1] - seg[0]
        t = ((point - seg[0]) * d.conjugate()).real / abs(d) ** 2
        t = min(1.0, max(0.0, t))
        return t, abs(at(seg, t) - point)
    n = 24
    best = min(range(n + 1), key=lambda i: abs(at(seg, i / n) - point)) / n
    span = 1 / n
    for _ in range(40):
        tries = [max(0.0, best - span), best, min(1.0, best + span)]
        best = min(tries, key=lambda t: abs(at(seg, t) - point))
        span *= 0.6
    return best, abs(at(seg, best) - point)


def flattened(shape, steps=64):
    """Straight edges along a shape, as plain numbers for speed."""
    edges = []
    for contour in shape:
        for seg in contour:
            n = 1 if len(seg) == 2 else steps
            points = [at(seg, i / n) for i in range(n + 1)]
            for p, q in zip(points, points[1:]):
                if p.imag != q.imag:
                    edges.append((p.real, p.imag, q.real, q.imag))
    return edges


def winding(edges, point):
    x, y = point.real, point.imag
    turns = 0
    for x0, y0, x1, y1 in edges:
        if (y0 <= y) != (y1 <= y):
            if x0 + (y - y0) / (y1 - y0) * (x1 - x0) > x:
                turns += 1 if y1 > y0 else -1
    return turns


class Knots:
    """Points shared by pieces, merged when they are as good as equal."""

    def __init__(self):
        self.points = []

    def index(self, point):
        for i, known in enumerate(self.points):
            if abs(known - point) < SNAP:
                return i
        self.points.append(point)
        return len(self.points) - 1


def split_parameters(segs):
    cuts = [[0.0, 1.0] for _ in segs]
    for i, a in enumerate(segs):
        for j in range(i + 1, len(segs)):
            b = segs[j]
            if apart(a, b, NEAR):
                continue
            for t, u in meetings(a, b):
                cuts[i].append(t)
                cuts[j].append(u)
            for end in (a[0], a[-1]):
                u, gap = nearest(b, end)
                if gap < NEAR:
                    cuts[j].append(u)
            for end in (b[0], b[-1]):
                t, gap = nearest(a, end)
                if gap < NEAR:
                    cuts[i].append(t)
    return [sorted(c) for c in cuts]


def combine(shapes, inked):
    """Combine shapes; inked turns a list of winding numbers into ink or none."""
    segs = [s for shape in shapes for contour in shape for s in contour]
    edges = [flattened(shape) for shape in shapes]
    knots = Knots()
    for seg in segs:                      # original nodes keep their places
        knots.index(seg[0])

    pieces = []                           # (from, to, source, t0, t1)
    for source, cuts in enumerate(split_parameters(segs)):
        seg = segs[source]
        t0, k0 = 0.0, knots.index(seg[0])
        for t1 in cuts[1:]:
            k1 = knots.index(at(seg, t1))
            if t1 < 1 and k1 == knots.index(seg[-1]):
                continue                  # all but at the end: leave it to t = 1
            if k1 == k0 and length(part(seg, t0, t1)) < 2 * SNAP:
                continue
            middle = (t0 + t1) / 2
            point, side = at(seg, middle), heading(seg, middle) * 1j * PROBE
            left = inked([winding(e, point + side) for e in edges])
            right = inked([winding(e, point - side) for e in edges])
            if left and not right:
                pieces.append((k0, k1, source, t0, t1))
            elif right and not left:
                pieces.append((k1, k0, source, t1, t0))
            t0, k0 = t1, k1
    return strung(without_twins(pieces, segs), segs, knots.points)


def without_twins(pieces, segs):
    """Drop pieces lying upon another piece: edges that shapes share."""
    kept = []
    for piece in pieces:
        middle = at(segs[piece[2]], (piece[3] + piece[4]) / 2)
        for other in kept:
            if other[:2] == piece[:2]:
                twin = at(segs[other[2]], (other[3] + other[4]) / 2)
                if abs(twin - middle) < 2 * SNAP:
                    break
        else:
            kept.append(piece)
    return kept


def strung(pieces, segs, points):
    leaving = {}
    for piece in pieces:
        leaving.setdefault(piece[0], []).append(piece)

    def facing(piece, end):
        seg, t = segs[piece[2]], piece[4 if end else 3]
        return heading(seg, t) * (1 if piece[4] > piece[3] else -1)

    shape = []
    for first in pieces:
        if first not in leaving.get(first[0], []):
            continue
        leaving[first[0]].remove(first)
        chain = [first]
        while chain[-1][1] != first[0]:
            choices = leaving.get(chain[-1][1], [])
            if not choices:
                raise ValueError("outline does not close near %s"
                                 % points[chain[-1][1]])
            coming = facing(chain[-1], True)
            # Where contours touch, the sharpest left turn keeps them apart.
            following = max(choices, key=lambda c: (facing(c, False) / coming).imag)
            choices.remove(following)
            chain.append(following)
        shape.append(contour_of(chain, segs, points))
    return shape


def contour_of(chain, segs, points):
    """Segments of a chain, with pieces of one source joined up again."""
    joined = []
    for start, end, source, t0, t1 in chain:
        last = joined[-1] if joined else None
        if last and last[2] == source and last[4] == t0 and (t1 > t0) == (last[4] > last[3]):
            joined[-1] = (last[0], end, source, last[3], t1)
        else:
            joined.append((start, end, source, t0, t1))
    head, tail = joined[0], joined[-1]
    if (len(joined) > 1 and head[2] == tail[2] and tail[4] == head[3]
            and (tail[4] > tail[3]) == (head[4] > head[3])):
        joined[0] = (tail[0], head[1], head[2], tail[3], head[4])
        joined.pop()
    contour = []
    for start, end, source, t0, t1 in joined:
        seg = segs[source]
        seg = part(seg, t0, t1) if t1 > t0 else backwards(part(seg, t1, t0))
        contour.append((points[start],) + seg[1:-1] + (points[end],))
    return straightened(contour)


def straightened(contour):
    """Merge lines that carry straight on."""
    out = []
    for seg in contour:
        if out and carries_on(out[-1], seg):
            out[-1] = (out[-1][0], seg[1])
        else:
            out.append(seg)
    if len(out) > 1 and carries_on(out[-1], out[0]):
        out[0] = (out[-1][0], out[0][1])
        out.pop()
    return out


def carries_on(a, b):
    if len(a) != 2 or len(b) != 2:
        return False
    turn = (b[1] - b[0]) / (a[1] - a[0])
    return turn.real > 0 and abs(turn.imag) < 1e-4 * turn.real


def union(*shapes):
    return combine(shapes, any)


def cut(shape, *away):
    return combine((shape,) + away, lambda w: bool(w[0]) and not any(w[1:]))


def clip(shape, window):
    return combine((shape, window), all)
