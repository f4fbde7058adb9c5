"""The torque between magnets that alternate about the x axis, with rings of ideal iron (of infinite permeability) about it.

Independent of the simulator's solver: the potential is a Fourier series in the angle about the axis, each order of which is a
problem of its own in the half plane of the radius and x. There a ring of charge has the potential of a toroidal harmonic, and
ideal iron has the charges on its surface that make its potential zero (one charge density per element, equal potentials at the
elements' middles). Lengths in metres, charges in webers as in magnets.py. A place is (radius, x).
"""
from math import acosh, atan2, cos, exp, gamma, hypot, pi, sqrt

from magnets import MU0, block_charges, gauss_legendre, solved

RULE = gauss_legendre(4)


def elliptic_integrals(complement):
    """Complete elliptic integrals K and E of the parameter 1 - complement, by the arithmetic-geometric mean."""
    a, b, squares, power = 1.0, sqrt(complement), (1 - complement) / 2, 0.5
    while a - b > 1e-15 * a:
        c = (a - b) / 2
        a, b, power = (a + b) / 2, sqrt(a * b), 2 * power
        squares += power * c * c
    return pi / (2 * a), pi / (2 * a) * (1 - squares)


def toroidal(order, excess):
    """Q, Legendre's function of the second kind of degree order - 1/2, at 1 + excess; order 1 and more."""
    argument = 1 + excess
    if excess < 0.1:  # upwards from the lowest orders, which loses few digits here
        k, e = elliptic_integrals(excess / (argument + 1))
        last = sqrt(2 / (argument + 1)) * k
        value = argument * last - sqrt(2 * (argument + 1)) * e
        for n in range(1, order):
            last, value = value, (4 * n * argument * value - (2 * n - 1) * last) / (2 * n + 1)
        return value
    decay = exp(-acosh(argument))
    term = sqrt(pi) * gamma(order + 0.5) / gamma(order + 1) * decay ** (order + 0.5)
    total, n = 0.0, 0
    while term > 1e-16 * total:
        total += term
        term *= decay * decay * (n + 0.5) * (order + n + 0.5) / ((n + 1) * (order + n + 1))
        n += 1
    return total


def ring_potential(order, place, source):
    """The integral of cos(order a) / distance over the angle a of the source's ring, seen from the place at angle 0."""
    product = place[0] * source[0]
    excess = ((place[0] - source[0]) ** 2 + (place[1] - source[1]) ** 2) / (2 * product)
    return 2 / sqrt(product) * toroidal(order, excess)


def element_potential(order, place, start, end, halvings=24):
    """ring_potential of an evenly charged element, the part of a cone between two places; 1 Wb/m^2 times cos."""
    length = hypot(end[0] - start[0], end[1] - start[1])
    middle = [(s + e) / 2 for s, e in zip(start, end)]
    if halvings and hypot(place[0] - middle[0], place[1] - middle[1]) < length:
        return element_potential(order, place, start, middle, halvings - 1) + element_potential(
            order, place, middle, end, halvings - 1
        )
    total = 0.0
    for t, weight in RULE:
        source = [m + t * (e - s) / 2 for m, s, e in zip(middle, start, end)]
        total += weight * source[0] * ring_potential(order, place, source)
    return total * length / 2


def surface_elements(radii, ends, count):
    """Elements of a ring's surface, finer towards its edges, where charge gathers; count: of each flat side."""

    def steps(span, parts):
        low, high = span
        return [low + (high - low) * (1 - cos(pi * i / parts)) / 2 for i in range(parts + 1)]

    across, along = steps(radii, count), steps(ends, count // 2)
    flat = [((a, x), (b, x)) for x in ends for a, b in zip(across, across[1:])]
    return flat + [((r, a), (r, b)) for r in radii for a, b in zip(along, along[1:])]


def alternating(order, blocks, centre, half, sides, polarisation):
    """The charges (place, weight) that `blocks` blocks about x have in a cosine series, all of the angle's order.

    The first block's centre is (x, 0, radius), half: its half edges, magnetised along x as the others in turn. sides: which
    of its ends (-1, 1) count.
    """
    charges = block_charges(centre, half, 0, polarisation, 12)
    return [
        ((hypot(y, z), x), blocks * charge * cos(order * atan2(y, z)))
        for (x, y, z), charge in charges
        if (1 if x > centre[0] else -1) in sides
    ]


def torque_amplitude(order, sources, targets, rings, count=16):
    """The torque about x on the targets, turned by an angle a against the sources, is the sum over the orders of the
    amplitude times sin(order a), newton metres.

    sources, targets: of alternating(); rings: (radii, ends) of ideal iron, whichever of both it turns with.
    """
    elements = [element for radii, ends in rings for element in surface_elements(radii, ends, count)]

    def free(place):
        return sum(weight / pi * ring_potential(order, place, other) for other, weight in sources)

    rows = []
    for start, end in elements:
        middle = [(s + e) / 2 for s, e in zip(start, end)]
        rows.append([element_potential(order, middle, *element) for element in elements] + [-free(middle)])
    densities = solved(rows)
    energy = 0.0
    for place, weight in targets:
        induced = sum(density * element_potential(order, place, *element) for density, element in zip(densities, elements))
        energy += weight * (free(place) + induced)
    return order * energy / (4 * pi * MU0)
