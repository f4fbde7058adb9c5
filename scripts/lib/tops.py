"""Motion of a rigid body with an axis of symmetry under force and torque, independent of the host's integrator.

SI units. A state is a list of twelve numbers: centre of mass x, its velocity v, the unit vector n of the axis, and the
angular momentum L about the centre of mass, all in global axes. The spin is no coordinate: nothing here depends on the
angle about the axis.
"""
from math import sqrt

from magnets import cross


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def placed(charges, centre, axis):
    """Charges drawn about the origin with the axis z, moved to a centre and an axis (unit vector)."""
    helper = [1.0, 0.0, 0.0] if abs(axis[0]) < 0.7 else [0.0, 1.0, 0.0]
    second = cross(axis, helper)
    length = sqrt(dot(second, second))
    second = [value / length for value in second]
    first = cross(second, axis)
    return [
        ([centre[i] + place[0] * first[i] + place[1] * second[i] + place[2] * axis[i] for i in range(3)], charge)
        for place, charge in charges
    ]


def load_in_fields(parts, centre, axis):
    """Force and torque about the centre on a body at a centre and axis. parts: pairs of a field and of those charges of the
    body, drawn about the origin, that feel it."""
    force, torque = [0.0] * 3, [0.0] * 3
    for field, charges in parts:
        pull, moment = field.load(placed(charges, centre, axis))
        force = [a + b for a, b in zip(force, pull)]
        torque = [a + b for a, b in zip(torque, moment)]
    lever = cross(centre, force)
    return force, [a - b for a, b in zip(torque, lever)]


def check_load(load, exact_load, sizes, tolerance):
    """Stops where a load is farther from an exact one than a share of the sizes of force and torque."""
    for part, exact_part, size in zip(load, exact_load, sizes):
        for value, exact in zip(part, exact_part):
            if abs(value - exact) > tolerance * size:
                raise ValueError(f"the reference has {value:.9g} instead of {exact:.9g} in {load}: take more terms")


class Top:
    """A body with its moments of inertia across and along its axis, and what brakes it (N s/m, N m s/rad)."""

    def __init__(self, mass, across, along, damping=0.0, angular_damping=0.0):
        self.mass, self.across, self.along = mass, across, along
        self.damping, self.angular_damping = damping, angular_damping

    def state(self, centre, velocity, axis, angular_velocity):
        spin = dot(angular_velocity, axis)
        momentum = [
            self.across * (angular_velocity[i] - spin * axis[i]) + self.along * spin * axis[i] for i in range(3)
        ]
        return [*centre, *velocity, *axis, *momentum]

    def angular_velocity(self, state):
        axis, momentum = state[6:9], state[9:12]
        along = dot(momentum, axis)
        return [(momentum[i] - along * axis[i]) / self.across + along / self.along * axis[i] for i in range(3)]

    def rate(self, load, state):
        """Time derivative of a state. `load` gives force and torque about the centre of mass at centre and axis."""
        force, torque = load(state[0:3], state[6:9])
        velocity, turning = state[3:6], self.angular_velocity(state)
        return [
            *velocity,
            *[(force[i] - self.damping * velocity[i]) / self.mass for i in range(3)],
            *cross(turning, state[6:9]),
            *[torque[i] - self.angular_damping * turning[i] for i in range(3)],
        ]

    def whirls(self, spin, stiffness):
        """Angular frequencies of the small sideways motions about an upright, centred axis, ascending real parts.

        Positive ones go round in the direction of the spin; complex ones grow (one of every pair). With u = x + i y and
        n = n_x + i n_y the equations of motion are

            mass u'' = -k_u u - k_un n        across n'' = i along spin n' - k_un u - k_n n

        (M. V. Berry, Proc. R. Soc. A 452 (1996) 1207, M. D. Simon, L. O. Heflinger, S. L. Ridgway, Am. J. Phys. 65
        (1997) 286). stiffness: (k_u, k_un, k_n).
        """
        k_u, k_un, k_n = stiffness
        gyroscopic = self.along * spin
        return polynomial_roots(
            [
                self.mass * self.across,
                -self.mass * gyroscopic,
                -self.mass * k_n - self.across * k_u,
                k_u * gyroscopic,
                k_u * k_n - k_un * k_un,
            ]
        )

    def is_stable(self, spin, stiffness):
        return all(abs(root.imag) < 1e-6 * abs(root) for root in self.whirls(spin, stiffness))


def polynomial_roots(coefficients):
    """All roots, highest power first, by the method of K. Weierstrass (1891), sorted by their real parts."""
    degree = len(coefficients) - 1
    monic = [value / coefficients[0] for value in coefficients]
    size = max(abs(value) ** (1 / n) for n, value in enumerate(monic) if n)
    roots = [size * (0.4 + 0.9j) ** n for n in range(degree)]
    for _ in range(500):
        for i, root in enumerate(roots):
            value, divisor = 1.0, 1.0
            for coefficient in monic[1:]:
                value = value * root + coefficient
            for j, other in enumerate(roots):
                if j != i:
                    divisor *= root - other
            roots[i] -= value / divisor
    return sorted(roots, key=lambda root: root.real)


def sideways_stiffness(load, height):
    """(k_u, k_un, k_n) of an upright axis z at a height, by central differences: minus the changes of force x and of
    torque y with the way along x and the tilt towards x."""
    way, tilt = 1e-4, 1e-3
    upright, up = [0.0, 0.0, height], [0.0, 0.0, 1.0]
    moved = [load([side * way, 0.0, height], up)[0][0] for side in (-1, 1)]
    tilted = [load(upright, [side * tilt, 0.0, sqrt(1 - tilt * tilt)]) for side in (-1, 1)]
    return (
        (moved[0] - moved[1]) / (2 * way),
        (tilted[0][0][0] - tilted[1][0][0]) / (2 * tilt),
        (tilted[0][1][1] - tilted[1][1][1]) / (2 * tilt),
    )


def upright_stiffness(load, height):
    """Minus the change of force z with the height."""
    way = 1e-4
    forces = [load([0.0, 0.0, height + side * way], [0.0, 0.0, 1.0])[0][2] for side in (-1, 1)]
    return (forces[0] - forces[1]) / (2 * way)


def bisect(function, low, high):
    """Where a function that has different signs at low and high changes it."""
    sign = function(low) > 0
    for _ in range(60):
        middle = (low + high) / 2
        if (function(middle) > 0) == sign:
            low = middle
        else:
            high = middle
    return (low + high) / 2


def integrate(rate, state, times, substeps):
    """States at the times, from the one at the first, by the classical Runge-Kutta method; rate(time, state)."""
    states = [state]
    for start, end in zip(times, times[1:]):
        h = (end - start) / substeps
        for n in range(substeps):
            t = start + n * h
            k1 = rate(t, state)
            k2 = rate(t + h / 2, [s + h / 2 * k for s, k in zip(state, k1)])
            k3 = rate(t + h / 2, [s + h / 2 * k for s, k in zip(state, k2)])
            k4 = rate(t + h, [s + h * k for s, k in zip(state, k3)])
            state = [
                s + h / 6 * (a + 2 * b + 2 * c + d) for s, a, b, c, d in zip(state, k1, k2, k3, k4)
            ]
        states.append(state)
    return states
