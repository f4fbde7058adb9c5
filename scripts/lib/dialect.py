#!/usr/bin/env python3
"""Holds the sources to the one dialect that CONTRIBUTING.md decides, as far as clang-format and clang-tidy cannot.

usage: dialect.py [--fix] FILE...

Looked for, line by line, in sources that clang-format has laid out:
  braces      every statement behind if, else, for and while stands in braces
  pointers    conditions ask `p` and `!p`, not `p != nullptr` and `p == nullptr`
  heads       what documents a declaration begins with `///` and stands before it; remarks inside functions begin with `//`
  length      comment lines have at most 120 characters (clang-format leaves them as they are)
  functions   have at most 75 lines, but for those of tests and benchmarks
  names       of functions in unnamed namespaces differ among the sources of a folder, but for tests and benchmarks: compiled together
              they would be overloads of each other
Prints the findings; exit status 1 when there are any. --fix mends braces, pointers and heads.
"""
import re
import sys
from pathlib import Path

import tidy

LONGEST = 120
# The longest is a plain table of error texts.
LONGEST_FUNCTION = 75
# A function at the left margin, where everything in a namespace begins.
FUNCTION = re.compile(r"[A-Za-z][\w:<>,&* \[\]]*[ &*](\w+)\(")
CONTROL = re.compile(r"(?:\} )?(?:else if|if|for|while)(?: constexpr)? \(|(?:\} )?else$")
NULL_COMPARISON = re.compile(r"[!=]= nullptr")
# What a comment above it does not document.
NO_DECLARATION = re.compile(r"#|\}|\)|namespace\b|public:|protected:|private:|static_assert\b|extern \"C\" \{|@")
NO_DOCUMENTATION = re.compile(r"// (NOLINT|clang-format|cppcheck)")


def without_texts(line):
    """The line without its comment at the end, with its texts and characters emptied, up to a raw text that goes on."""
    line = re.sub(r'R"[^(\s]*\((?!.*\)[^(\s]*").*', "", line)
    line = re.sub(r'"(?:\\.|[^"\\])*"', '""', line)
    line = re.sub(r"(?<![0-9A-Fa-f])'(?:\\.|[^'\\])+'", "''", line)
    return re.sub(r"\s*//.*$", "", line).rstrip()


def indent_of(line):
    return len(line) - len(line.lstrip())


def raw_text_lines(lines):
    """The numbers of the lines that begin inside a raw text."""
    inside, end = set(), None
    for number, line in enumerate(lines):
        if end:
            inside.add(number)
            if end in line:
                end = None
            continue
        start = re.search(r'R"([^(\s]*)\(', line)
        if start and f'){start.group(1)}"' not in line[start.end():]:
            end = f'){start.group(1)}"'
    return inside


def header_end(lines, first):
    """The last line of the control statement's head that begins at a line."""
    depth = 0
    for number in range(first, len(lines)):
        text = without_texts(lines[number])
        depth += text.count("(") - text.count(")")
        if depth <= 0:
            return number
    return first


def missing_braces(lines, raw):
    """Each statement without braces: the last line of its head, and the last one of its body."""
    for first, line in enumerate(lines):
        if first in raw or not CONTROL.match(without_texts(line.lstrip())):
            continue
        head = header_end(lines, first)
        if not re.search(r"(\)|\belse)$", without_texts(lines[head])):
            continue
        indent, last = indent_of(line), head
        while last + 1 < len(lines) and lines[last + 1].strip() and indent_of(lines[last + 1]) > indent:
            last += 1
        if last > head:
            yield head, last


def add_braces(lines):
    raw = raw_text_lines(lines)
    found = sorted(missing_braces(lines, raw), key=lambda one: (-one[1], one[0]))
    # From the end, so that numbers stay true; of bodies that end together the inner one ends first.
    ends = {}
    for head, last in found:
        ends.setdefault(last, []).append(head)
    heads = {head for head, _ in found}
    result = []
    for number, line in enumerate(lines):
        if number in heads:
            code = without_texts(line)
            rest = line[len(code):] if line.startswith(code) else None
            line = f"{line} {{" if rest is None or not rest.strip() else f"{code} {{{rest}"
        result.append(line)
        for head in sorted(ends.get(number, []), reverse=True):
            first = head
            while not CONTROL.match(without_texts(lines[first].lstrip())):
                first -= 1
            result.append(" " * indent_of(lines[first]) + "}")
    return result


def scopes(lines, raw):
    """For each line the kind of the scope in which it begins: "declarations" or "code"."""
    stack, pending, kinds = [], "", []
    for number, line in enumerate(lines):
        kinds.append(stack[-1] if stack else "declarations")
        text = without_texts(line)
        if number in raw or text.lstrip().startswith("#"):
            continue
        for character in text:
            if character == "{":
                head = re.sub(r"template\s*<[^{]*?>(?=\s)", "", pending)
                outer = stack[-1] if stack else "declarations"
                opens = re.search(r"\bnamespace\b|extern \"\"|\b(class|struct|union|enum)\b(?!.*\)\s*(const|override)?\s*$)", head)
                is_type = opens and not re.search(r"=\s*$|\breturn\b", head)
                stack.append("declarations" if is_type and (outer == "declarations" or "namespace" not in head) else "code")
                pending = ""
            elif character == "}":
                if stack:
                    stack.pop()
                pending = ""
            elif character == ";":
                pending = ""
            else:
                pending += character
        pending += " "
    return kinds


def comment_blocks(lines, raw):
    """Each block of comment lines: its first line, and the line behind it."""
    number = 0
    while number < len(lines):
        if number not in raw and lines[number].lstrip().startswith("//"):
            first = number
            while number < len(lines) and lines[number].lstrip().startswith("//"):
                number += 1
            yield first, number
        else:
            number += 1


def wrong_heads(lines, raw, kinds):
    """Each line of a comment with the wrong head, and the head that it should have."""
    depths = continuation_depths(lines, raw)
    for first, behind in comment_blocks(lines, raw):
        following = lines[behind].lstrip() if behind < len(lines) else ""
        if kinds[first] == "code" or depths[first]:
            wanted = "//"
        elif following and not NO_DECLARATION.match(following):
            wanted = "///"
        else:
            continue
        for number in range(first, behind):
            head = re.match(r"/{2,}", lines[number].lstrip()).group()
            if head != wanted and len(head) < 4 and not NO_DOCUMENTATION.match(lines[number].lstrip()):
                yield number, wanted


def continuation_depths(lines, raw):
    """For each line how many round brackets are open where it begins."""
    depth, depths = 0, []
    for number, line in enumerate(lines):
        depths.append(depth)
        text = without_texts(line)
        if number not in raw and not text.lstrip().startswith("#"):
            depth = max(0, depth + text.count("(") - text.count(")"))
    return depths


def mend_heads(lines):
    mended = list(lines)
    raw = raw_text_lines(lines)
    for number, wanted in wrong_heads(lines, raw, scopes(lines, raw)):
        mended[number] = re.sub(r"^(\s*)/{2,3}", lambda found: found.group(1) + wanted, mended[number])
    return mended


def is_null_comparison(line):
    """Whether a condition compares with nullptr; a flag that is made of a pointer may."""
    return NULL_COMPARISON.search(without_texts(line)) and not re.search(r"\breturn\b|[^=!<>]= |ASSERT|EXPECT", line)


def mend_pointers(lines):
    pointer = r"([*]?[A-Za-z_][\w:.\[\]]*(?:->[\w.]+)*(?:\([^()]*\))?)"
    for line in lines:
        if is_null_comparison(line):
            line = re.sub(pointer + r" == nullptr", r"!\1", line)
            line = re.sub(pointer + r" != nullptr", r"\1", line)
        yield line


def long_functions(lines, kinds):
    """The first line of each function that cannot be seen whole."""
    kinds = [*kinds, "declarations"]
    for first in range(len(lines)):
        if kinds[first] == "declarations" and kinds[first + 1] == "code" and not re.search(r"= \{$", without_texts(lines[first])):
            behind = kinds.index("declarations", first + 1)
            if behind - 1 - first > LONGEST_FUNCTION:
                yield first


def own_functions(lines):
    """The functions of a source's unnamed namespaces, and where each first stands."""
    found, inside = {}, False
    for number, line in enumerate(lines):
        if line == "namespace {":
            inside = True
        elif line == "} // namespace":
            inside = False
        elif name := FUNCTION.match(line):
            if inside or line.startswith("static "):
                found.setdefault(name.group(1), number)
    return found


def findings(lines, of_users):
    raw = raw_text_lines(lines)
    kinds = scopes(lines, raw)
    for head, _ in missing_braces(lines, raw):
        yield head, "braces: the statement behind this line stands without"
    for number, wanted in wrong_heads(lines, raw, kinds):
        yield number, f"heads: this comment begins with {wanted}"
    for number in long_functions(lines, kinds) if of_users else []:
        yield number, f"functions: one of more than {LONGEST_FUNCTION} lines"
    for number, line in enumerate(lines):
        if number in raw:
            continue
        if "///<" in line:
            yield number, "heads: documentation stands before what it documents"
        if re.search(r"^\s*//", line) and len(line) > LONGEST:
            yield number, f"length: a comment line of more than {LONGEST} characters"
        if is_null_comparison(line):
            yield number, "pointers: ask the pointer itself"


def main(arguments):
    fix = "--fix" in arguments
    found = 0
    taken = {}
    for path in (argument for argument in arguments if argument != "--fix"):
        with open(path, encoding="utf-8", newline="") as file:
            text = file.read()
        lines = text.split("\n")
        if fix:
            lines = mend_heads(add_braces(list(mend_pointers(lines))))
            with open(path, "w", encoding="utf-8", newline="") as file:
                file.write("\n".join(lines))
        of_users = path.split("/")[0] not in tidy.OUTSIDE
        told = list(findings(lines, of_users))
        for name, number in own_functions(lines).items() if of_users else []:
            first = taken.setdefault((Path(path).parent, name), path)
            if first != path:
                told.append((number, f"names: {first} has a function {name} of its own"))
        for number, what in told:
            print(f"{path}:{number + 1}: {what}")
        found += len(told)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]) if len(sys.argv) > 1 else __doc__)
