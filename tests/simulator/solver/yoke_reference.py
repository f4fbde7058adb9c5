#!/usr/bin/env python3
"""Forces between magnets and iron, another way than the solver's: the numbers of IronCases.cpp and how they are got.

Without currents H = -grad(phi), and phi makes the coenergy J = integral of (integral of B dH) least. Here phi is a
piecewise polynomial on a grid whose lines crowd at every face of magnets and iron, up to a far box on which phi is 0.
What is round is solved over (r, z); of blocks, over (x, y, z), a quarter does. Of two halves that are mirror images
only the upper one is solved: the plane between them carries phi = 0 (they attract) or no flux (they repel). A force is
both the integral of the stress over a plane and the slope of J over the gap.

Usage: yoke_reference.py check | round | block | disc | saturated
check compares with closed forms; the others print their cases, the force by stress and by coenergy, and both of a
coarser grid, and take some minutes. SI units. Needs numpy and scipy.
"""
import sys
from dataclasses import dataclass, field
from math import pi

import numpy as np
from scipy import integrate, linalg, sparse, special
from scipy.sparse import linalg as solvers

MU0 = 4e-7 * pi


class Line:
    """Piecewise polynomials along one coordinate, continuous, with elements that grow by `growth` from every mark on.

    weights: what integrals along this coordinate carry, of values and of derivatives (r of both for the radius).
    """

    def __init__(self, marks, order, smallest, growth, weights=(np.ones_like, np.ones_like), smooth=()):
        self.marks = marks
        self.edges = np.concatenate([self._between(a, b, smallest, growth, smooth) for a, b in zip(marks, marks[1:])]
                                    + [[marks[-1]]])
        self.order, self.weights = order, weights
        inner = special.jacobi(order - 1, 1, 1).roots.real if order > 1 else []
        self.nodes = np.concatenate([[-1.0], np.sort(inner), [1.0]])
        self.size = (len(self.edges) - 1) * order + 1
        self.points, self.rule = np.polynomial.legendre.leggauss(order + 2)

    @staticmethod
    def _between(a, b, smallest, growth, smooth):
        """Left ends of the elements from a to b; towards a mark in `smooth` they do not shrink."""
        sizes_a, sizes_b = [], []
        next_a, next_b = (np.inf if mark in smooth else min(smallest, (b - a) / 4) for mark in (a, b))
        while True:
            rest = (b - a) - sum(sizes_a) - sum(sizes_b)
            step = min(next_a, next_b)
            if 1.5 * step >= rest:
                break
            if next_a <= next_b:
                sizes_a.append(step)
                next_a *= growth
            else:
                sizes_b.append(step)
                next_b *= growth
        return a + np.concatenate([[0.0], np.cumsum(sizes_a + [rest] + sizes_b[::-1])])[:-1]

    def elements(self, box):
        """Elements between two marks, their dofs, quadrature points and weights."""
        low, high = np.searchsorted(self.edges, box[0]), np.searchsorted(self.edges, box[1])
        starts, steps = self.edges[low:high], np.diff(self.edges[low:high + 1])
        dofs = np.arange(low, high)[:, None] * self.order + np.arange(self.order + 1)
        points = starts[:, None] + steps[:, None] * (self.points + 1) / 2
        return dofs, points, steps[:, None] / 2 * self.rule, steps

    def shapes(self, at, derivative=False):
        """Values or derivatives (by the reference coordinate) of an element's polynomials at points in [-1, 1]."""
        to = np.polynomial.legendre.legvander(self.nodes, self.order)
        if derivative:
            columns = [np.polynomial.legendre.legval(at, np.polynomial.legendre.legder(row))
                       for row in np.eye(self.order + 1)]
            return np.stack(columns, axis=-1) @ np.linalg.inv(to)
        return np.polynomial.legendre.legvander(np.asarray(at), self.order) @ np.linalg.inv(to)

    def _sampled(self, box, derivative):
        """Matrix from dofs to the quadrature points of a box, for values or derivatives."""
        dofs, points, _, steps = self.elements(box)
        local = self.shapes(self.points, derivative)
        values = np.broadcast_to(local, (len(steps),) + local.shape)
        if derivative:
            values = values * (2 / steps)[:, None, None]
        rows = np.broadcast_to(np.arange(points.size).reshape(points.shape)[:, :, None], values.shape)
        columns = np.broadcast_to(dofs[:, None, :], values.shape)
        return sparse.csr_matrix((values.ravel(), (rows.ravel(), columns.ravel())), shape=(points.size, self.size))

    def values(self, box):
        return self._sampled(box, derivative=False)

    def slopes(self, box):
        return self._sampled(box, derivative=True)

    def quadrature(self, box, kind):
        """Weights of the points; kind 0 for integrals of values, 1 for those of slopes."""
        _, points, rule, _ = self.elements(box)
        return (rule * self.weights[kind](points)).ravel()

    def mass(self, box):
        values = self.values(box)
        return values.T @ sparse.diags(self.quadrature(box, 0)) @ values

    def stiffness(self, box):
        slopes = self.slopes(box)
        return slopes.T @ sparse.diags(self.quadrature(box, 1)) @ slopes

    def at(self, place, derivative=False):
        """Row from dofs to the value or slope at a place."""
        element = min(max(np.searchsorted(self.edges, place, side="right") - 1, 0), len(self.edges) - 2)
        low, step = self.edges[element], self.edges[element + 1] - self.edges[element]
        row = np.zeros(self.size)
        local = self.shapes(np.array([2 * (place - low) / step - 1]), derivative)[0]
        row[element * self.order:(element + 1) * self.order + 1] = local * (2 / step if derivative else 1)
        return row


@dataclass
class Piece:
    """A box of one material: an interval for each line, mu, M at H = 0 along the last line, and a curve if it has one.

    The curve takes the place of mu, which then only begins the search.
    """
    box: tuple
    mu: float = 1.0
    magnetisation: float = 0.0
    curve: object = None


@dataclass
class Curve:
    """B over H, straight between its points and as steep as vacuum beyond them."""
    h: np.ndarray
    b: np.ndarray
    coenergy: np.ndarray = field(init=False)

    def __post_init__(self):
        self.coenergy = integrate.cumulative_trapezoid(self.b, self.h, initial=0)

    def __call__(self, h):
        """B, dB/dH and coenergy density."""
        at = np.clip(np.searchsorted(self.h, h, side="right") - 1, 0, len(self.h) - 1)
        slopes = np.append(np.diff(self.b) / np.diff(self.h), MU0)
        step = h - self.h[at]
        return (self.b[at] + slopes[at] * step, slopes[at],
                self.coenergy[at] + self.b[at] * step + slopes[at] * step**2 / 2)


def kron(matrices):
    product = matrices[0]
    for matrix in matrices[1:]:
        product = sparse.kron(product, matrix, format="csr")
    return product


class Grid:
    """phi on the product of lines, the last of which is along the magnetisation.

    grounded: whether phi is 0 where the last line begins, as between halves that attract each other; otherwise no flux
    passes there. angle: how many times what is solved makes the whole around the last line.
    """

    def __init__(self, lines, pieces, grounded, angle):
        self.lines, self.pieces, self.angle = lines, pieces, angle
        self.whole = tuple((line.marks[0], line.marks[-1]) for line in lines)
        free = np.ones([line.size for line in lines], dtype=bool)
        for axis in range(len(lines)):
            np.moveaxis(free, axis, 0)[-1] = False
        if grounded:
            free[..., 0] = False
        self.free = free
        self.source = sum(piece.magnetisation * self._source(piece.box) for piece in pieces)

    def _source(self, box):
        """Integral of the slope along the last line of every polynomial over a box."""
        parts = [line.values(part).T @ line.quadrature(part, 0) for line, part in zip(self.lines[:-1], box)]
        parts.append(self.lines[-1].slopes(box[-1]).T @ self.lines[-1].quadrature(box[-1], 1))
        return np.multiply.outer(parts[0], parts[1]) if len(parts) == 2 else np.einsum("i,j,k->ijk", *parts)

    def stress(self, phi, place=0.0):
        """Force on what is above a plane across the last line, from the field in the plane."""
        line = self.lines[-1]
        plane, along = phi @ line.at(place, derivative=True), phi @ line.at(place)
        samples = [other.values(part) for other, part in zip(self.lines[:-1], self.whole)]
        weights = [other.quadrature(part, 0) for other, part in zip(self.lines[:-1], self.whole)]

        def over(values, derivative=None):
            for axis, sample in enumerate(samples):
                matrix = self.lines[axis].slopes(self.whole[axis]) if axis == derivative else sample
                values = np.moveaxis(np.tensordot(matrix.toarray(), values, (1, axis)), 0, axis)
            values = values**2
            for weight in weights:
                values = np.tensordot(weight, values, (0, 0))
            return float(values)

        tension = over(plane) - sum(over(along, axis) for axis in range(len(samples)))
        return -MU0 / 2 * self.angle * tension

    def coenergy(self, phi):
        """Of linear materials."""
        return -MU0 / 2 * self.angle * float(np.vdot(self.source, phi))

    def field(self, phi, point):
        """-grad(phi)."""
        gradient = []
        for axis in range(len(self.lines)):
            value = phi
            for other in reversed(range(len(self.lines))):
                value = value @ self.lines[other].at(point[other], derivative=other == axis)
            gradient.append(-float(value))
        return np.array(gradient)


class Plane(Grid):
    """Over (r, z): solved directly, curves by Newton's method."""

    def _laplace(self, box):
        r, z = self.lines
        return (kron([r.stiffness(box[0]), z.mass(box[1])]) + kron([r.mass(box[0]), z.stiffness(box[1])])).tocsr()

    def matrix(self):
        return self._laplace(self.whole) + sum((piece.mu - 1) * self._laplace(piece.box) for piece in self.pieces)

    def solve(self):
        free = self.free.ravel()
        phi = np.zeros(free.size)
        phi[free] = solvers.splu(self.matrix()[free][:, free].tocsc()).solve(self.source.ravel()[free])
        return phi.reshape(self.free.shape)

    def _slopes(self, box):
        """Matrices to the field's components at the points of a box, and the points' weights."""
        r, z = self.lines
        along_r = kron([r.slopes(box[0]), z.values(box[1])])
        along_z = kron([r.values(box[0]), z.slopes(box[1])])
        return along_r, along_z, np.outer(r.quadrature(box[0], 0), z.quadrature(box[1], 0)).ravel()

    def solve_curves(self, accuracy=1e-10):
        """phi and the coenergy."""
        free = self.free.ravel()
        curved = [piece for piece in self.pieces if piece.curve]
        straight = self.matrix() - sum(piece.mu * self._laplace(piece.box) for piece in curved)
        slopes = [self._slopes(piece.box) for piece in curved]
        source = self.source.ravel()

        def state(phi):
            value = MU0 * (phi @ (straight @ phi) / 2 - source @ phi)
            gradient = MU0 * (straight @ phi - source)
            hessian = MU0 * straight
            for piece, (along_r, along_z, weight) in zip(curved, slopes):
                x, y = along_r @ phi, along_z @ phi
                h = np.maximum(np.hypot(x, y), 1e-9)
                b, steep, coenergy = piece.curve(h)
                value += weight @ coenergy
                gradient += along_r.T @ (weight * b / h * x) + along_z.T @ (weight * b / h * y)
                turn = (steep - b / h) / h**2
                xx, xy, yy = (sparse.diags(weight * (b / h * same + turn * product))
                              for same, product in ((1, x * x), (0, x * y), (1, y * y)))
                hessian = (hessian + along_r.T @ (xx @ along_r + xy @ along_z) +
                           along_z.T @ (xy @ along_r + yy @ along_z))
            return value, gradient, hessian

        phi = self.solve().ravel()
        value, gradient, hessian = state(phi)
        for _ in range(60):
            step = np.zeros_like(phi)
            step[free] = solvers.splu(hessian[free][:, free].tocsc()).solve(-gradient[free])
            promise, scale = gradient @ step, 1.0
            while scale > 1e-6:
                value_there, gradient_there, hessian_there = state(phi + scale * step)
                if value_there <= value + 0.1 * scale * promise:
                    break
                scale /= 2
            phi, value, gradient, hessian = phi + scale * step, value_there, gradient_there, hessian_there
            if -promise <= accuracy * abs(value):
                break
        return phi.reshape(self.free.shape), self.angle * value


class Space(Grid):
    """Over (x, y, z): conjugate gradients; empty space, which separates, makes them short."""

    def __init__(self, lines, pieces, grounded, angle):
        super().__init__(lines, pieces, grounded, angle)
        self.kept = tuple(slice(0 if axis < 2 or not grounded else 1, -1) for axis in range(3))
        matrices = [(line.stiffness(part).toarray()[kept, kept], line.mass(part).toarray()[kept, kept])
                    for line, part, kept in zip(lines, self.whole, self.kept)]
        modes = [linalg.eigh(*pair) for pair in matrices]
        self.modes = [vectors for _, vectors in modes]
        a, b, c = (values for values, _ in modes)
        self.eigenvalues = a[:, None, None] + b[None, :, None] + c[None, None, :]

    @staticmethod
    def _apply(matrices, values):
        for axis, matrix in enumerate(matrices):
            values = np.moveaxis(np.tensordot(matrix, values, (1, axis)), 0, axis)
        return values

    def _laplace(self, masses, stiffnesses, values):
        x, y, z = masses
        return (self._apply([stiffnesses[0], y, z], values) + self._apply([x, stiffnesses[1], z], values) +
                self._apply([x, y, stiffnesses[2]], values))

    def _without_iron(self, values):
        return self._apply(self.modes, self._apply([mode.T for mode in self.modes], values) / self.eigenvalues)

    def solve(self, accuracy=1e-7):
        boxes = []
        for piece in self.pieces:
            if piece.mu == 1:
                continue
            dofs = [np.unique(line.elements(part)[0]) for line, part in zip(self.lines, piece.box)]
            ranges = [slice(max(one[0], kept.start), one[-1] + 1) for one, kept in zip(dofs, self.kept)]
            part = tuple(slice(one.start - kept.start, one.stop - kept.start) for one, kept in zip(ranges, self.kept))
            masses = [line.mass(box).toarray()[one, one] for line, box, one in zip(self.lines, piece.box, ranges)]
            stiffnesses = [line.stiffness(box).toarray()[one, one]
                           for line, box, one in zip(self.lines, piece.box, ranges)]
            boxes.append((piece.mu - 1, part, masses, stiffnesses))
        residual = self.source[self.kept].copy()
        phi = np.zeros_like(residual)
        better = self._without_iron(residual)
        direction, empty, product = better, residual.copy(), np.vdot(residual, better)
        first = product
        while product > accuracy**2 * first:
            image = empty.copy()  # what empty space makes of the direction is known without multiplying
            for factor, part, masses, stiffnesses in boxes:
                image[part] += factor * self._laplace(masses, stiffnesses, direction[part])
            length = product / np.vdot(direction, image)
            phi += length * direction
            residual -= length * image
            better = self._without_iron(residual)
            product, before = np.vdot(residual, better), product
            direction = better + product / before * direction
            empty = residual + product / before * empty
        result = np.zeros(self.free.shape)
        result[self.kept] = phi
        return result


# ---- what is solved

M = 1e6
STEEL = Curve(*np.array([(0, 0), (342, 1.0), (377, 1.1), (433, 1.2), (509, 1.3), (648, 1.4), (933, 1.5), (1228, 1.55),
                         (1934, 1.6), (2913, 1.65), (4993, 1.7), (7189, 1.75), (15000, 1.9257), (20000, 2.0091),
                         (25000, 2.0783), (30000, 2.1334), (35000, 2.1744), (40000, 2.2013), (50000, 2.2228),
                         (1e5, 2.2857), (1e6, 3.4167)]).T)


@dataclass
class Mesh:
    """How fine: the elements' order, the least element and the far box as parts of `unit`, and how elements grow."""
    unit: float = 0.01
    order: int = 6
    smallest: float = 1e-3
    growth: float = 3.0
    far: float = 100.0

    def line(self, marks, weights=(np.ones_like, np.ones_like), smooth=()):
        return Line([*marks, self.far * self.unit], self.order, self.smallest * self.unit, self.growth, weights,
                    (marks[0], self.far * self.unit, *smooth))

    def radius(self, marks):
        return self.line([0.0, *marks], (lambda r: r, lambda r: r))


def round_half(mesh, gap, mu=1000.0, magnet_mu=1.0, yoke=(0.0125, 0.005), curve=None, attracting=True):
    """A cylinder magnet of 10 mm radius and 5 mm height on a cylinder of iron (radius, height), if any."""
    radius, height = 0.010, 0.005
    z = [0.0, gap / 2, gap / 2 + height]
    pieces = [Piece(((0.0, radius), (z[1], z[2])), magnet_mu, M)]
    if yoke:
        z.append(z[2] + yoke[1])
        pieces.append(Piece(((0.0, yoke[0]), (z[2], z[3])), mu, curve=curve))
    return Plane([mesh.radius([radius] + ([yoke[0]] if yoke else [])), mesh.line(z)], pieces, attracting, 2 * pi)


def block_half(mesh, gap, mu=1000.0, magnet_mu=1.0, yoke=(0.016, 0.012, 0.004), attracting=True):
    """A block magnet of 12, 8 and 5 mm on a block of iron, if any."""
    magnet = (0.012, 0.008, 0.005)
    z = [0.0, gap / 2, gap / 2 + magnet[2]]
    x, y = ([0.0, edge / 2] for edge in magnet[:2])
    pieces = [Piece(((0.0, x[1]), (0.0, y[1]), (z[1], z[2])), magnet_mu, M)]
    if yoke:
        x.append(yoke[0] / 2)
        y.append(yoke[1] / 2)
        z.append(z[2] + yoke[2])
        pieces.append(Piece(((0.0, x[2]), (0.0, y[2]), (z[2], z[3])), mu))
    return Space([mesh.line(x), mesh.line(y), mesh.line(z)], pieces, attracting, 4.0)


def disc_pair(mesh, gap, mu=1000.0, magnet_mu=1.0, height=0.001, curve=None):
    """A cylinder magnet of 10 mm radius and height over a disc of iron of 15 mm radius, which ends at z = 0."""
    z = [-mesh.far * mesh.unit, -height, 0.0, gap / 2, gap, gap + 0.010]
    pieces = [Piece(((0.0, 0.010), (z[4], z[5])), magnet_mu, M), Piece(((0.0, 0.015), (z[1], z[2])), mu, curve=curve)]
    return Plane([mesh.radius([0.010, 0.015]), mesh.line(z, smooth=(gap / 2,))], pieces, True, 2 * pi)


def slope(energy, gap, change=0.02):
    """Differences of fourth order."""
    step = change * gap
    near, far = (energy(gap + part * step) - energy(gap - part * step) for part in (1, 2))
    return (8 * near - far) / (12 * step)


def forces(build, mesh, gap, halves=2, place=0.0, **of):
    """By the stress across `place` and by the coenergy of as many halves as there are, on the upper body."""
    def energy(there):
        grid = build(mesh, there, **of)
        return halves * (grid.solve_curves()[1] if of.get("curve") else grid.coenergy(grid.solve()))

    grid = build(mesh, gap, **of)
    phi = grid.solve_curves()[0] if of.get("curve") else grid.solve()
    return grid.stress(phi, place), slope(energy, gap)


def disc_force(radius, distance, charge):
    """Between two discs on one axis with charges of one density (A/m)."""
    def integrand(u):
        return special.j1(u)**2 * np.exp(-u * distance / radius) / u
    value = sum(integrate.quad(integrand, a, a + 5)[0] for a in np.arange(0, 60 * radius / distance, 5))
    return MU0 * pi * (charge * radius)**2 * value


def cylinder_force(radius, height, gap):
    """Attraction of two like cylinder magnets on one axis."""
    return sum(factor * disc_force(radius, gap + number * height, M) for number, factor in enumerate((1, -2, 1)))


def shell_field(mu, ratio, mesh):
    """Field in a spherical shell in a field of 1; of a ball where the ratio of its radii is 0. Over (radius, angle)."""
    marks = [0.0, ratio, 1.0] if ratio else [0.0, 1.0]
    radius = mesh.line(marks, (np.ones_like, np.square))
    angle = Line([0.0, pi / 2], mesh.order, 0.1, mesh.growth, (np.sin, np.sin))
    grid = Plane([radius, angle], [Piece(((ratio, 1.0), (0.0, pi / 2)), mu)], False, 2 * pi)
    steps = np.diff(angle.edges)[:, None]
    angles = np.append((angle.edges[:-1, None] + steps * (angle.nodes[:-1] + 1) / 2).ravel(), pi / 2)
    phi = np.zeros(grid.free.shape)
    phi[-1] = -radius.edges[-1] * np.cos(angles)
    free, matrix = grid.free.ravel(), grid.matrix()
    flat = phi.ravel()
    flat[free] = solvers.splu(matrix[free][:, free].tocsc()).solve(-(matrix @ flat)[free])
    return -float(radius.at(0.1, derivative=True) @ phi[:, 0])


def cube_polarisability(mu, mesh):
    """Dipole moment of a cube in a field of 1 over its volume; an eighth of it is solved, for what the cube adds."""
    lines = [mesh.line([0.0, 0.5]) for _ in range(3)]
    grid = Space(lines, [Piece(((0.0, 0.5),) * 3, mu, mu - 1)], True, 8.0)
    return mu - 1 - 8 * float(np.vdot(grid.source, grid.solve(1e-9)))


def show(name, *values):
    print(name.ljust(60), *(f"{value:.8g}" for value in values), flush=True)


def check():
    fine, coarse = Mesh(), Mesh(order=4, smallest=1e-2)
    for gap in (0.0005, 0.0015, 0.005):
        for sign in (1, -1):
            show(f"cylinders without iron, gap {gap}: stress, coenergy, exact",
                 *forces(round_half, coarse, gap, yoke=None, attracting=sign > 0),
                 -sign * cylinder_force(0.010, 0.005, gap))
    for mu in (10, 1000):
        whole = Mesh(unit=1.0, far=1000.0, order=6, smallest=1e-2)
        show(f"ball in a field, mu {mu}: solved, exact", shell_field(mu, 0.0, whole), 3 / (mu + 2))
        show(f"shell in a field, mu {mu}: solved, exact", shell_field(mu, 0.9, whole),
             9 * mu / ((2 * mu + 1) * (mu + 2) - 2 * 0.9**3 * (mu - 1)**2))
    for mesh in (Mesh(unit=1.0, order=4, smallest=1e-2, far=30), Mesh(unit=1.0, order=5, smallest=3e-3, far=30)):
        show(f"cube, mu 1e5, order {mesh.order}: solved, exact where mu is infinite", cube_polarisability(1e5, mesh),
             3.644305190268)
    straight = Curve(np.array([0.0, 1e7]), np.array([0.0, 1e7]) * 1000 * MU0)
    show("a straight curve and the same permeability", *forces(round_half, coarse, 0.0015, curve=straight),
         *forces(round_half, coarse, 0.0015))
    show("round halves, finer", *forces(round_half, fine, 0.0015))


def tabulate(name, build, meshes, gaps, choices, **shared):
    for gap in gaps:
        for choice in choices:
            values = [value for mesh in meshes
                      for value in forces(build, mesh, gap, **shared, **choice,
                                          **({"place": gap / 2} if build is disc_pair else {}))]
            show(f"{name}, gap {gap:g}, {choice}", *values)


def saturated(build, gap, place, **of):
    """Force, and B (r, z) at a place, by two grids."""
    for mesh in (Mesh(), Mesh(order=4, smallest=1e-2)):
        grid = build(mesh, gap, curve=STEEL, **of)
        phi = grid.solve_curves()[0]
        h = grid.field(phi, place)
        flux = STEEL(np.array([np.linalg.norm(h)]))[0] * h / np.linalg.norm(h)
        show(f"{build.__name__}: stress, B", grid.stress(phi, gap / 2 if build is disc_pair else 0.0), *flux)
    options = dict(halves=1, place=gap / 2) if build is disc_pair else {}
    show(f"{build.__name__}: stress, coenergy", *forces(build, Mesh(order=4, smallest=1e-2), gap, curve=STEEL, **of,
                                                        **options))


def main(what):
    ways = [dict(attracting=way, magnet_mu=mu) for way in (True, False) for mu in (1.0, 1.05)]
    grids = (Mesh(), Mesh(order=4, smallest=1e-2))
    block_grids = (Mesh(order=4, smallest=1.5e-2, far=25), Mesh(order=3, smallest=3e-2, far=25))
    if what == "check":
        check()
    elif what == "round":
        tabulate("round halves", round_half, grids, (0.0005, 0.0015, 0.005), ways)
    elif what == "block":
        tabulate("block halves", block_half, block_grids, (0.0005, 0.0015, 0.005), ways)
    elif what == "disc":
        tabulate("magnet over a disc", disc_pair, grids, (0.001, 0.003), [dict(magnet_mu=1.0)], halves=1)
    elif what == "saturated":
        for height in (0.0008, 0.0015, 0.003):
            saturated(round_half, 0.0015, (0.0075, 0.00075 + 0.005 + height / 2), yoke=(0.0125, height))
        for height in (0.0005, 0.001, 0.002):
            saturated(disc_pair, 0.001, (0.0075, -height / 2), height=height)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) == 2 else "")
