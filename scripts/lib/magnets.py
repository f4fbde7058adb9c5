"""Forces between uniformly magnetised magnets, independent of the simulator's solver.

Three ways: the closed form for parallel cuboids (G. Akoun, J.-P. Yonnet, "3D analytical calculation of the forces exerted
between two cuboidal magnets", IEEE Transactions on Magnetics 20 (1984) 1962-1964), and Coulomb's law between the charged
faces with Gauss-Legendre quadrature, for magnets turned any way; and, in the field of polygonal rings about one axis, its
expansion in Legendre polynomials. Lengths in metres, polarisations in tesla, forces in newtons, torques in newton metres.
"""
from itertools import product
from math import atan, cos, log, pi, sin, sqrt

MU0 = 4e-7 * pi


def cuboid_force(half1, half2, offset, polarisation1, polarisation2):
    """Force x, y, z on the second of two cuboids with parallel edges, both magnetised along z.

    half1, half2: half edge lengths; offset: centre of the second seen from the first. They must not touch.
    """

    def logarithm(value):
        """Zero, as the limit of its products with zeros is, where edges of both lie in one line."""
        return log(value) if value > 0 else 0.0

    total = [0.0, 0.0, 0.0]
    for i, j, k, l, p, q in product((0, 1), repeat=6):
        u = offset[0] + (-1) ** j * half2[0] - (-1) ** i * half1[0]
        v = offset[1] + (-1) ** l * half2[1] - (-1) ** k * half1[1]
        w = offset[2] + (-1) ** q * half2[2] - (-1) ** p * half1[2]
        r = sqrt(u * u + v * v + w * w)
        angle = atan(u * v / (r * w)) if w else 0.0  # of faces in one plane the terms with it sum to zero
        terms = (
            0.5 * (v * v - w * w) * logarithm(r - u) + u * v * logarithm(r - v) + v * w * angle + 0.5 * r * u,
            0.5 * (u * u - w * w) * logarithm(r - v) + u * v * logarithm(r - u) + u * w * angle + 0.5 * r * v,
            -u * w * logarithm(r - u) - v * w * logarithm(r - v) + u * v * angle - r * w,
        )
        sign = (-1) ** (i + j + k + l + p + q)
        for axis in range(3):
            total[axis] += sign * terms[axis]
    factor = polarisation1 * polarisation2 / (4 * pi * MU0)
    return [factor * value for value in total]


def gauss_legendre(count):
    """Points and weights on -1 to 1, by Newton's method on the Legendre polynomial."""
    rule = []
    for i in range(count):
        x = cos(pi * (i + 0.75) / (count + 0.5))
        for _ in range(100):
            previous, value = 1.0, x
            for n in range(2, count + 1):
                previous, value = value, ((2 * n - 1) * x * value - (n - 1) * previous) / n
            slope = count * (x * value - previous) / (x * x - 1)
            step = value / slope
            x -= step
            if abs(step) < 1e-15:
                break
        rule.append((x, 2 / ((1 - x * x) * slope * slope)))
    return rule


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def turn_about_x(angle, vector):
    x, y, z = vector
    return [x, cos(angle) * y - sin(angle) * z, sin(angle) * y + cos(angle) * z]


def rotation(axis, angle):
    """The matrix, a list of rows, that turns vectors about an axis (of any length) by the right hand."""
    length = sqrt(sum(value * value for value in axis))
    n = [value / length for value in axis]
    skew = [[0.0, -n[2], n[1]], [n[2], 0.0, -n[0]], [-n[1], n[0], 0.0]]
    return [
        [cos(angle) * (i == j) + (1 - cos(angle)) * n[i] * n[j] + sin(angle) * skew[i][j] for j in range(3)]
        for i in range(3)
    ]


def turned(matrix, vector):
    return [sum(row[k] * vector[k] for k in range(3)) for row in matrix]


def turned_back(matrix, vector):
    """By the transpose: what a turned frame's axes measure of the vector."""
    return [sum(matrix[k][i] * vector[k] for k in range(3)) for i in range(3)]


def block_charges(centre, half, axis, polarisation, count, turn=lambda vector: vector):
    """Point charges (place, charge) of a block's two charged faces; `turn` moves the finished points.

    axis: 0, 1 or 2, the block's edge along which it is magnetised.
    """
    charges = []
    first, second = [other for other in range(3) if other != axis]
    for side in (-1, 1):
        for (s, weight_s), (t, weight_t) in product(gauss_legendre(count), repeat=2):
            place = list(centre)
            place[axis] += side * half[axis]
            place[first] += s * half[first]
            place[second] += t * half[second]
            charge = side * polarisation * weight_s * weight_t * half[first] * half[second]
            charges.append((turn(place), charge))
    return charges


def charge_load(sources, targets, point):
    """Force on the targets and torque about a point, by Coulomb's law for magnetic charges."""
    force, torque = [0.0] * 3, [0.0] * 3
    for place, charge in targets:
        field = [0.0] * 3
        for other, strength in sources:
            d = [place[axis] - other[axis] for axis in range(3)]
            r2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2]
            scale = strength / (r2 * sqrt(r2))
            for axis in range(3):
                field[axis] += scale * d[axis]
        pull = [charge * value / (4 * pi * MU0) for value in field]
        moment = cross([place[axis] - point[axis] for axis in range(3)], pull)
        for axis in range(3):
            force[axis] += pull[axis]
            torque[axis] += moment[axis]
    return force, torque


def polygon_ring_faces(centre, radii, sides, half_height, polarisation, count):
    """Point charges (place, charge) of both charged faces of a regular polygonal ring about z, magnetised along z.

    radii: of the inner and outer corners (inner 0: a disc); the first side's middle lies in the direction of x;
    count: points along and across every side.
    """
    inner, outer = radii
    half_angle = pi / sides
    charges = []
    for side, (s, weight_s), (t, weight_t) in product(range(sides), gauss_legendre(count), gauss_legendre(count)):
        radius = (inner + outer) / 2 + s * (outer - inner) / 2
        along, across = radius * cos(half_angle), t * radius * sin(half_angle)
        angle = 2 * half_angle * side
        x, y = along * cos(angle) - across * sin(angle), along * sin(angle) + across * cos(angle)
        area = weight_s * weight_t * (outer - inner) / 2 * cos(half_angle) * radius * sin(half_angle)
        for end in (-1, 1):
            charges.append(([centre[0] + x, centre[1] + y, centre[2] + end * half_height], end * polarisation * area))
    return charges


def solid_legendre(place, order):
    """r^n P_n and r^(n-1) P_n' for n = 0 ... order at a place seen from the centre, z being the axis."""
    z = place[2]
    r2 = place[0] * place[0] + place[1] * place[1] + z * z
    values, slopes = [1.0, z], [0.0, 1.0]
    for n in range(2, order + 1):
        values.append(((2 * n - 1) * z * values[-1] - (n - 1) * r2 * values[-2]) / n)
        slopes.append(n * values[n - 1] + z * slopes[-1])
    return values, slopes


class AxialField:
    """The field near a point of the z axis of charges that are (almost) symmetric about that axis.

    The potential is the sum of c_n r^n P_n about the point, the part of the addition theorem that does not change with
    the angle about the axis (J. D. Jackson, Classical Electrodynamics, 1999, chapter 3.3). Of regular polygons with N
    sides at the distance R it leaves out terms that fall as the N-th power of r / R.
    """

    def __init__(self, charges, height, order):
        self.height = height
        coefficients = [0.0] * (order + 1)
        for place, charge in charges:
            d = [place[0], place[1], place[2] - height]
            r2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2]
            scale = charge / (4 * pi * MU0 * sqrt(r2))
            for n, value in enumerate(solid_legendre(d, order)[0]):
                coefficients[n] += scale * value
                scale /= r2
        self.coefficients = coefficients

    def strength(self, place):
        """H (A/m) at a place."""
        d = (place[0], place[1], place[2] - self.height)
        values, slopes = solid_legendre(d, len(self.coefficients) - 1)
        across = along = 0.0
        for n in range(1, len(self.coefficients)):
            across += self.coefficients[n] * slopes[n - 1]
            along -= self.coefficients[n] * n * values[n - 1]
        return [across * d[0], across * d[1], along]

    def load(self, charges):
        """Force on the charges and torque about the origin."""
        force, torque = [0.0] * 3, [0.0] * 3
        for place, charge in charges:
            pull = [charge * value for value in self.strength(place)]
            moment = cross(place, pull)
            for axis in range(3):
                force[axis] += pull[axis]
                torque[axis] += moment[axis]
        return force, torque


def solved(rows):
    """The unknowns of linear equations (each a row: coefficients, right side) whose pivots are never zero as they stand."""
    rows = list(rows)
    for i, pivot in enumerate(rows):
        rows[i] = pivot = [value / pivot[i] for value in pivot]
        for j, row in enumerate(rows):
            if j != i:
                rows[j] = [value - row[i] * other for value, other in zip(row, pivot)]
    return [row[-1] for row in rows]


def on_axis(charges, count, reach):
    """Charges on the z axis, `count` on each side of the origin and none farther than `reach`, that have the same first
    odd axial moments (the integrals of r^n P_n for n = 1, 3 ... 2 count - 1) as the given ones, whose even ones vanish.

    In the field of far charges they feel the same force and torque as a magnet that is symmetric about its axis.
    """
    places = [reach * (n + 1) / count for n in range(count)]
    rows = [[2 * place ** (2 * k + 1) for place in places] + [0.0] for k in range(count)]
    for place, charge in charges:
        values = solid_legendre(place, 2 * count - 1)[0]
        for k, row in enumerate(rows):
            row[-1] += charge * values[2 * k + 1]
    return [([0.0, 0.0, side * place], side * value) for place, value in zip(places, solved(rows)) for side in (-1, 1)]
