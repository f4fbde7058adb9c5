"""From parameters to runs: which values each run has."""

from __future__ import annotations

import itertools
import math
import random
from collections.abc import Iterator
from dataclasses import dataclass
from functools import cached_property
from statistics import NormalDist

Value = float | str


@dataclass(frozen=True)
class Levels:
    """A list: certain values, in their order."""

    values: tuple[Value, ...]

    def __len__(self) -> int:
        return len(self.values)

    def at(self, share: float) -> Value:
        """The value at a share, 0 to 1, of the way through it."""
        return self.values[min(int(share * len(self.values)), len(self.values) - 1)]


@dataclass(frozen=True)
class Range:
    """Values with even steps or even factors; samples are drawn between its ends."""

    low: float
    high: float
    count: int
    is_logarithmic: bool = False
    is_open: bool = False

    def __len__(self) -> int:
        return self.count

    @cached_property
    def values(self) -> tuple[Value, ...]:
        """Made when they are asked for: there may be more than memory holds."""
        parts = self.count if self.is_open else max(self.count - 1, 1)
        # The last one as it was written, not as rounding makes it.
        return tuple(self.high if i == parts else self.at(i / parts) for i in range(self.count))

    def at(self, share: float) -> Value:
        """The value at a share, 0 to 1, of the way through it."""
        if self.is_logarithmic:
            return float(self.low * (self.high / self.low) ** share)
        value = self.low + share * (self.high - self.low)
        # What rounding leaves of a nought would make another run of it.
        return 0.0 if abs(value) < 1e-14 * max(abs(self.low), abs(self.high)) else value


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


Source = Levels | Range | Normal | Uniform
# What has values of its own, rather than samples.
CERTAIN = (Levels, Range)
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
    levels = [len(source) for source in sources.values() if isinstance(source, CERTAIN)]
    if design == "grid":
        return math.prod(levels) * (runs if len(levels) < len(sources) else 1)
    if design == "list":
        return levels[0] if levels else runs
    return runs


def rows(design: str, sources: dict[str, Source], runs: int, seed: int) -> Iterator[Row]:
    """The values of every run, in the order of the table.

    grid             every combination of lists and ranges, the first parameter slowest; each with the same `runs`
                     samples of what is random, where anything is
    list             all lists and ranges together, row by row
    random           `runs` samples of everything
    latin-hypercube  the same, each parameter's spread evenly over its range
    """
    if design == "grid":
        yield from _grid(sources, runs, seed)
        return
    together = design == "list"
    certain = {name: source.values for name, source in sources.items() if together and isinstance(source, CERTAIN)}
    count = count_runs(design, sources, runs)
    draw = {
        name: strata(seed, name, count) if design == "latin-hypercube" else shares(seed, name) for name in sources
    }
    for i in range(count):
        yield {
            name: certain[name][i] if name in certain else source.at(next(draw[name]))
            for name, source in sources.items()
        }


def _grid(sources: dict[str, Source], runs: int, seed: int) -> Iterator[Row]:
    certain = {name: source.values for name, source in sources.items() if isinstance(source, CERTAIN)}
    draw = {name: shares(seed, name) for name in sources if name not in certain}
    # The same at every point: points then differ by what was set, and a further point leaves the others as they are.
    samples = [{name: sources[name].at(next(draw[name])) for name in draw} for _ in range(runs if draw else 1)]
    for combination in itertools.product(*certain.values()):
        for sample in samples:
            row = dict(zip(certain, combination)) | sample
            yield {name: row[name] for name in sources}
