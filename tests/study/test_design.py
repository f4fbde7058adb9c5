"""Which values the runs of a design have."""

from __future__ import annotations

import math
from statistics import NormalDist, fmean, stdev

import pytest
from conftest import StudyFolder

from kinora_study.design import Levels, Normal, Range, Uniform, count_runs, rows, shares
from kinora_study.quantity import evaluate
from kinora_study.studyfile import read_study

GAPS = Levels((1.0, 2.0, 3.0))
ANGLES = Levels((0.0, 0.5))


def test_a_grid_is_every_combination_the_first_slowest() -> None:
    made = [(row["gap"], row["angle"]) for row in rows("grid", {"gap": GAPS, "angle": ANGLES}, 1, 0)]
    assert made == [(1, 0), (1, 0.5), (2, 0), (2, 0.5), (3, 0), (3, 0.5)]
    assert count_runs("grid", {"gap": GAPS, "angle": ANGLES}, 1) == 6


def test_a_grid_with_tolerances_has_samples_at_every_point() -> None:
    sources = {"gap": GAPS, "br": Normal(1.0, 0.1)}
    made = list(rows("grid", sources, 4, 0))
    assert len(made) == count_runs("grid", sources, 4) == 12
    assert [row["gap"] for row in made] == [1.0] * 4 + [2.0] * 4 + [3.0] * 4
    samples = [row["br"] for row in made]
    assert len(set(samples[:4])) == 4 and samples == samples[:4] * 3, "the same ones at every point"
    more = list(rows("grid", sources | {"angle": ANGLES}, 6, 0))
    assert [row["br"] for row in more[:4]] == samples[:4], "and with further parameters and samples"


def test_lists_go_together() -> None:
    made = [(row["gap"], row["name"]) for row in rows("list", {"gap": GAPS, "name": Levels(("a", "b", "c"))}, 1, 0)]
    assert made == [(1, "a"), (2, "b"), (3, "c")]


@pytest.mark.parametrize("source", [Uniform(2.0, 6.0), Range(2.0, 6.0, 30)])
def test_a_latin_hypercube_has_one_sample_in_every_part(source: Uniform | Range) -> None:
    made = list(rows("latin-hypercube", {"a": source, "b": Normal(0.0, 1.0), "c": GAPS}, 30, 5))
    assert sorted(int((float(row["a"]) - 2.0) / 4.0 * 30) for row in made) == list(range(30))
    assert sorted(int(NormalDist().cdf(float(row["b"])) * 30) for row in made) == list(range(30))
    assert sorted(row["c"] for row in made) == [1.0] * 10 + [2.0] * 10 + [3.0] * 10
    # In random order, and not in that of another parameter.
    first, second = ([row[name] for row in made] for name in "ab")
    ranks = [[sorted(column).index(value) for value in column] for column in (first, second)]
    assert ranks[0] != sorted(ranks[0]) and ranks[0] != ranks[1]


def test_samples_have_the_moments_of_their_distribution() -> None:
    made = list(rows("random", {"n": Normal(3.0, 0.5), "u": Uniform(-1.0, 2.0)}, 4000, 1))
    normal, uniform = ([float(row[name]) for row in made] for name in "nu")
    # Four standard errors.
    assert fmean(normal) == pytest.approx(3.0, abs=4 * 0.5 / math.sqrt(4000))
    assert stdev(normal) == pytest.approx(0.5, abs=4 * 0.5 / math.sqrt(8000))
    assert fmean(uniform) == pytest.approx(0.5, abs=4 * 3 / math.sqrt(12 * 4000))
    assert min(uniform) >= -1.0 and max(uniform) <= 2.0


def test_samples_are_the_same_everywhere_and_those_of_other_seeds_are_others() -> None:
    # What the generator, a Mersenne twister seeded by SHA-512 of the text, gives on every machine.
    stream = shares(7, "gap")
    assert [next(stream) for _ in range(3)] == [0.09045899202591656, 0.013643754791055396, 0.6591046419687262]
    normal = [row["gap"] for row in rows("random", {"gap": Normal(2.0, 0.5)}, 3, 7)]
    # Their quantiles, by bisection of the error function.
    assert normal == pytest.approx([2 + 0.5 * z for z in (-1.3379339034, -2.2073801843, 0.4100207638)], abs=1e-9)
    few = list(rows("random", {"n": Normal(0, 1)}, 5, 7))
    more = list(rows("random", {"a": Uniform(0, 1), "n": Normal(0, 1)}, 9, 7))
    assert [row["n"] for row in few] == [row["n"] for row in more[:5]]
    assert [row["n"] for row in few] != [row["n"] for row in rows("random", {"n": Normal(0, 1)}, 5, 8)]


@pytest.mark.parametrize(
    ("formula", "value"),
    [("4*mm", 0.004), ("30*deg", math.pi / 6), ("-2^2", -4), ("2^3^2", 512), ("atan2(1, -1)", 0.75 * math.pi),
     ("max(1, 2)/4", 0.5), (" 1e-3 ", 0.001), (5, 5), ("gn*gram", 0.00980665), ("step(-1)+step(0)", 1)],
)
def test_quantities_are_those_of_scenarios(formula: object, value: float) -> None:
    assert evaluate(formula) == pytest.approx(value, rel=1e-15)


@pytest.mark.parametrize("formula", ["4*m", "2**3", "1/0", "sqrt(-1)", "__import__('os')", "max(1)", "", "1e999", True,
                                     None, "x.y", "(" * 500 + "1" + ")" * 500, "9^9^9^9"])
def test_what_is_no_quantity_is_refused(formula: object) -> None:
    with pytest.raises(ValueError):
        evaluate(formula)


def test_ranges_have_both_ends_unless_they_are_open(study: StudyFolder) -> None:
    study.study({"a": {"from": "1*mm", "to": "5*mm", "count": 5}, "b": {"from": 0, "to": 4, "count": 4, "end": "open"},
                 "c": {"from": 1, "to": 1000, "count": 4, "spacing": "log"}, "d": ["2*mm", 7], "e": ["x", "2*mm"]})
    read = read_study(study.file)
    values = {name: parameter.source.values for name, parameter in read.parameters.items()}  # type: ignore[union-attr]
    assert values["a"] == pytest.approx((0.001, 0.002, 0.003, 0.004, 0.005))
    assert values["a"][-1] == 0.005
    assert values["b"] == (0, 1, 2, 3)
    assert values["c"] == pytest.approx((1, 10, 100, 1000))
    assert values["d"] == (0.002, 7.0)
    assert values["e"] == ("x", "2*mm")
    assert [parameter.kind for parameter in read.parameters.values()] == ["range", "range", "range", "list", "text"]


def test_a_range_has_no_trace_of_a_nought() -> None:
    assert 0.0 in Range(-0.3, 0.3, 7).values
