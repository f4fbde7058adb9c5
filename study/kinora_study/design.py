"""From parameters to runs: which values each run has."""

from __future__ import annotations

import itertools
import math
import random
from collections.abc import Iterator
from dataclasses import dataclass
from statistics import NormalDist

Value = float | str


@dataclass(frozen=True)
class Levels:
    """A list or a range: certain values, in their order."""

    values: tuple[Value, ...]
    is_logarithmic: bool = False
    # Of a range its two ends, between which samples are drawn; None for a list.
    ends: tuple[float, float] | None = None

    def at(self, share: float) -> Value:
        """The value at a share, 0 to 1, of the way through it."""
        if self.ends is None:
            return self.values[min(int(share * len(self.values)), len(self.values) - 1)]
        low, high = self.ends
        return low * (high / low) ** share if self.is_logarithmic else low + share * (high - low)


@dataclass(frozen=True)
class Normal:
    """A normal distribution."""

    mean: float
    deviation: float

    def at(self, share: float) -> Value:
        """The quantile at a share, 0 to 1."""
        tiny = 2.0**-60  # the quantile at 0 is infinite
        return NormalDist(self.mean, self.deviation).inv_cdf(min(max(share, tiny), 1 - 2.0**-53))


@dataclass(frozen=True)
class Uniform:
    """An even distribution between two ends."""

    low: float
    high: float

    def at(self, share: float) -> Value:
        """The value at a share, 0 to 1, of the way."""
        return self.low + share * (self.high - self.low)


Source = Levels | Normal | Uniform
Row = dict[str, Value]


def shares(seed: int, name: str) -> Iterator[float]:
    """Even random numbers from 0 to 1: a stream of its own for every name, the same on every machine.

    A further parameter leaves the others' numbers as they are, and so does a greater number of runs.
    """
    # What Python promises to keep from version to version: the numbers of random() after a seed that is a text.
    return iter(random.Random(f"{seed}/{name}").random, None)


def strata(seed: int, name: str, count: int) -> Iterator[float]:
    """Of a Latin hypercube: one number in each of `count` equal parts of 0 to 1, in random order."""
    numbers = shares(seed, name)
    keys = [next(numbers) for _ in range(count)]
    for stratum in sorted(range(count), key=keys.__getitem__):
        yield (stratum + next(numbers)) / count


def count_runs(design: str, sources: dict[str, Source], runs: int) -> int:
    """How many runs a design has, without making them."""
    levels = [len(source.values) for source in sources.values() if isinstance(source, Levels)]
    if design == "grid":
        return math.prod(levels) * (runs if len(levels) < len(sources) else 1)
    if design == "list":
        return levels[0] if levels else runs
    return runs


def rows(design: str, sources: dict[str, Source], runs: int, seed: int) -> Iterator[Row]:
    """The values of every run, in the order of the table.

    grid             every combination of lists and ranges, the first parameter slowest; each with `runs` samples of
                     what is random, where anything is
    list             all lists and ranges together, row by row
    random           `runs` samples of everything
    latin-hypercube  the same, each parameter's spread evenly over its range
    """
    if design == "grid":
        yield from _grid(sources, runs, seed)
        return
    certain = {name: source.values for name, source in sources.items() if isinstance(source, Levels)}
    count = count_runs(design, sources, runs)
    draw = {
        name: strata(seed, name, count) if design == "latin-hypercube" else shares(seed, name) for name in sources
    }
    for i in range(count):
        yield {
            name: certain[name][i] if design == "list" and name in certain else source.at(next(draw[name]))
            for name, source in sources.items()
        }


def _grid(sources: dict[str, Source], runs: int, seed: int) -> Iterator[Row]:
    certain = {name: source.values for name, source in sources.items() if isinstance(source, Levels)}
    draw = {name: shares(seed, name) for name in sources if name not in certain}
    for combination in itertools.product(*certain.values()):
        fixed = dict(zip(certain, combination))
        for _ in range(runs if draw else 1):
            yield {
                name: fixed[name] if name in fixed else source.at(next(draw[name]))
                for name, source in sources.items()
            }
