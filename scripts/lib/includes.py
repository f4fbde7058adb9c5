#!/usr/bin/env python3
"""Finds names of the standard library whose header neither a source nor the project's headers under it include.

usage: includes.py FILE...

The headers of one standard library bring others along that those of the next do not, so such a source compiles with one and not
with another. What the headers of all of them bring (move, forward, pair, swap) is not asked for. Prints the findings; exit status 1
when there are any.
"""
from __future__ import annotations

import functools
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = (ROOT, ROOT / "capi")
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)")', re.MULTILINE)
NAME = re.compile(r"\bstd::(\w+)")
# Comments, raw and other texts.
SILENT = re.compile(r'R"([^(\s]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
# Headers, any of which will do, and what they give.
GIVEN = """
algorithm: adjacent_find all_of any_of binary_search clamp copy copy_if copy_n count count_if equal equal_range fill fill_n find find_if
  find_if_not for_each for_each_n generate generate_n includes is_sorted lexicographical_compare lower_bound max max_element merge min
  min_element minmax minmax_element mismatch next_permutation none_of nth_element partial_sort partition remove_if replace reverse
  rotate search set_difference set_intersection set_symmetric_difference set_union sort stable_partition stable_sort transform unique
  upper_bound
array: array
atomic: atomic atomic_bool atomic_flag memory_order_acquire memory_order_release memory_order_relaxed
cctype: isalnum isalpha isdigit islower isprint ispunct isspace isupper isxdigit tolower toupper
charconv: chars_format from_chars to_chars
chrono: chrono
cmath: acos asin atan atan2 cbrt ceil copysign cos exp fabs floor fma fmod hypot ilogb isfinite isinf isnan ldexp llround log log10
  log1p log2 lround nextafter pow remainder rint round scalbn signbit sin sqrt tan trunc
cmath cstdlib: abs
condition_variable: condition_variable cv_status
cstdint: int16_t int32_t int64_t int8_t intptr_t uint16_t uint32_t uint64_t uint8_t uintptr_t
cstdio: FILE fclose fflush fopen fprintf fputc fputs fread fwrite perror printf putchar puts snprintf sscanf vsnprintf
cstdlib: _Exit abort atexit calloc exit free getenv malloc quick_exit realloc strtod strtol strtoul strtoull system
cstring: memcmp memcpy memmove memset strchr strcmp strerror strlen strncmp strrchr strstr
ctime: gmtime localtime mktime strftime time time_t tm
cwchar: mbstate_t swprintf wcschr wcscmp wcslen wcsncmp wcstod wmemcpy
deque: deque
exception: current_exception exception_ptr make_exception_ptr rethrow_exception set_terminate terminate uncaught_exceptions
exception new stdexcept: exception
filesystem: filesystem
fstream: filebuf fstream ifstream ofstream
functional: bind cref function greater less minus multiplies not_fn plus ref reference_wrapper
future: async future packaged_task promise
iomanip: put_time quoted setfill setprecision setw
ios fstream iomanip iostream istream ostream sstream: fixed hex ios ios_base scientific
iostream: cerr cin clog cout wcerr wcout
istream fstream iostream sstream: istream
iterator: back_inserter front_inserter inserter istream_iterator istreambuf_iterator make_move_iterator ostream_iterator
  ostreambuf_iterator
limits: numeric_limits
locale: locale use_facet
map: map multimap
memory: enable_shared_from_this make_shared make_unique shared_ptr unique_ptr weak_ptr
mutex: call_once lock_guard mutex once_flag recursive_mutex scoped_lock
mutex condition_variable shared_mutex: unique_lock
new: bad_alloc get_new_handler nothrow nothrow_t set_new_handler
numeric: accumulate gcd inner_product iota partial_sum reduce transform_reduce
optional: nullopt optional
ostream fstream iostream sstream: endl flush ostream
queue: priority_queue queue
random: mt19937 mt19937_64 normal_distribution random_device seed_seq uniform_int_distribution uniform_real_distribution
ratio chrono: milli ratio
regex: cmatch regex regex_match regex_replace regex_search smatch sregex_iterator
set: multiset set
shared_mutex: shared_lock shared_mutex
sstream: istringstream ostringstream stringbuf stringstream
stack: stack
stdexcept: domain_error invalid_argument length_error logic_error out_of_range overflow_error range_error runtime_error
string: getline stod stoi stol stoul string to_string to_wstring wstring
string_view string: string_view wstring_view
system_error: error_category generic_category make_error_code system_category system_error
system_error charconv: errc
system_error filesystem: error_code
thread: this_thread thread
tuple: apply forward_as_tuple make_tuple tie tuple
type_traits: conditional_t decay_t enable_if enable_if_t false_type invoke_result_t is_arithmetic_v is_base_of_v is_convertible_v
  is_enum_v is_floating_point_v is_integral_v is_pointer_v is_same is_same_v is_trivially_copyable_v remove_const_t remove_cv_t
  remove_reference_t true_type underlying_type_t void_t
unordered_map: unordered_map unordered_multimap
unordered_set: unordered_set
utility: as_const declval exchange index_sequence make_index_sequence piecewise_construct
variant: get_if holds_alternative monostate variant visit
vector: vector
"""


def table() -> dict[str, list[str]]:
    """For each name the headers that give it."""
    given = {}
    for line in GIVEN.replace("\n  ", " ").strip().splitlines():
        headers, names = line.split(":")
        given.update({name: headers.split() for name in names.split()})
    return given


@functools.cache
def read(path: pathlib.Path) -> tuple[set[str], list[pathlib.Path], str]:
    """The headers of others that a file includes, the project's, and its text without comments and texts."""
    text = path.read_text(encoding="utf-8")
    others, own = set(), []
    for other, name in INCLUDE.findall(text):
        if other:
            others.add(re.sub(r"^(std\w+|string|math|time|ctype|wchar)\.h$", r"c\1", other))
        else:
            places = (folder / name for folder in (path.parent, *FOLDERS))
            own += [place.resolve() for place in places if place.is_file()][:1]
    return others, own, SILENT.sub('""', text)


def headers_under(path: pathlib.Path) -> set[str]:
    """The headers of others that a file includes, by the project's headers too."""
    seen, pending, found = set(), [path], set()
    while pending:
        file = pending.pop()
        if file not in seen:
            seen.add(file)
            others, own, _ = read(file)
            found |= others
            pending += own
    return found


def main(arguments: list[str]) -> int:
    if not arguments:
        sys.exit(__doc__)
    given, found = table(), 0
    for argument in arguments:
        path = pathlib.Path(argument).resolve()
        included, text = headers_under(path), read(path)[2]
        for name in sorted(set(NAME.findall(text)) & set(given)):
            if not included.intersection(given[name]):
                print(f"{argument}: std::{name} is used without <{given[name][0]}>")
                found += 1
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
