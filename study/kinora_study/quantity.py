"""Quantities as scenarios write them: numbers, or formulas such as "4*mm" and "30*deg"."""

from __future__ import annotations

import ast
import math
import operator
from collections.abc import Callable

CONSTANTS = {"pi": math.pi, "deg": math.pi / 180, "mm": 0.001, "gram": 0.001, "gn": 9.80665}

FUNCTIONS: dict[str, tuple[int, Callable[..., float]]] = {
    "sin": (1, math.sin),
    "cos": (1, math.cos),
    "tan": (1, math.tan),
    "asin": (1, math.asin),
    "acos": (1, math.acos),
    "atan": (1, math.atan),
    "sqrt": (1, math.sqrt),
    "exp": (1, math.exp),
    "log": (1, math.log),
    "abs": (1, math.fabs),
    "step": (1, lambda x: 0.0 if x < 0 else 1.0),
    "min": (2, min),
    "max": (2, max),
    "atan2": (2, math.atan2),
}

OPERATORS: dict[type[ast.AST], Callable[..., float]] = {
    ast.Add: operator.add,
    ast.Sub: operator.sub,
    ast.Mult: operator.mul,
    ast.Div: operator.truediv,
    ast.Pow: math.pow,
    ast.USub: operator.neg,
    ast.UAdd: operator.pos,
}


def _evaluate(node: ast.AST) -> float:
    match node:
        case ast.Expression(body=body):
            return _evaluate(body)
        case ast.Constant(value=int() | float() as value) if not isinstance(value, bool):
            return float(value)
        case ast.Name(id=name) if name in CONSTANTS:
            return CONSTANTS[name]
        case ast.Name(id=name):
            raise ValueError(f'"{name}" is not known here')
        case ast.BinOp(left=left, op=sign, right=right) if type(sign) in OPERATORS:
            return OPERATORS[type(sign)](_evaluate(left), _evaluate(right))
        case ast.UnaryOp(op=sign, operand=operand) if type(sign) in OPERATORS:
            return OPERATORS[type(sign)](_evaluate(operand))
        case ast.Call(func=ast.Name(id=name), args=arguments, keywords=[]) if name in FUNCTIONS:
            count, function = FUNCTIONS[name]
            if len(arguments) != count:
                raise ValueError(f"{name} takes {count} value{'s' if count > 1 else ''}")
            return float(function(*(_evaluate(argument) for argument in arguments)))
    raise ValueError("it is no formula")


def evaluate(value: object) -> float:
    """The value of a number or a formula.

    Raises ValueError, with the formula and what is wrong with it.
    """
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        result = float(value)
    elif isinstance(value, str):
        # "**" is no operator of scenarios, and a formula has one line.
        text = value.strip()
        try:
            if "**" in text or "//" in text or "\n" in text:
                raise ValueError("it is no formula")
            result = _evaluate(ast.parse(text.replace("^", "**"), mode="eval"))
        except SyntaxError:
            raise ValueError(f'formula "{value}": it is no formula') from None
        except (ValueError, ArithmeticError, RecursionError, MemoryError) as error:
            raise ValueError(f'formula "{value}": {error}') from None
    else:
        raise ValueError("a number or a formula is wanted")
    if not math.isfinite(result):
        raise ValueError(f"{value} is not a finite number")
    return result
