"""The ctypes declarations against the header and the list of the binary interface."""

import ctypes
import re
import subprocess

import pytest
from kinora_veltrix import Code, _native
from magnet_pair import ROOT
from pycparser import c_ast, c_parser

HEADER = (ROOT / "capi" / "kinora_veltrix.h").read_text("utf-8")
PLAIN = {ctypes.c_int32: "int32_t", ctypes.c_uint32: "uint32_t", ctypes.c_size_t: "size_t", ctypes.c_double: "double"}
# What the package takes for an address, and for the C interface is a type of its own.
OPAQUE = {"kv_coupling": "void", "kv_texts": "void", "kv_status": "int32_t"}


@pytest.fixture(scope="module")
def declarations() -> c_ast.FileAST:
    own = re.sub(r"^#include.*$", "", HEADER, flags=re.MULTILINE)
    plain = "typedef int int32_t; typedef unsigned uint32_t; typedef unsigned long size_t;\n"
    text = subprocess.run(["cpp", "-P", "-U__GNUC__"], input=plain + own, capture_output=True, text=True, check=True)
    return c_parser.CParser().parse(text.stdout)


def c_name(node) -> str:
    if isinstance(node, c_ast.PtrDecl):
        return c_name(node.type) + "*"
    if isinstance(node, c_ast.ArrayDecl):
        return f"{c_name(node.type)}[{node.dim.value}]"
    if isinstance(node, c_ast.TypeDecl):
        return c_name(node.type)
    name = node.names[0] if isinstance(node, c_ast.IdentifierType) else node.name
    return OPAQUE.get(name, name)


def ctypes_name(kind) -> str:
    if kind is ctypes.c_char_p:
        return "char*"
    if kind is ctypes.c_void_p:
        return "void*"
    if kind in PLAIN:
        return PLAIN[kind]
    if issubclass(kind, ctypes.Array):
        return f"{ctypes_name(kind._type_)}[{kind._length_}]"
    if issubclass(kind, ctypes.Structure):
        return next(name for name, record in _native.RECORDS.items() if record is kind)
    return ctypes_name(kind._type_) + "*"


def test_functions_are_those_of_the_header(declarations):
    expected = {
        item.name: [c_name(parameter.type) for parameter in item.type.args.params]
        for item in declarations.ext
        if isinstance(item, c_ast.Decl) and isinstance(item.type, c_ast.FuncDecl)
    }
    assert len(expected) == 22
    assert {name: [*map(ctypes_name, arguments)] for name, arguments in _native.FUNCTIONS.items()} == expected


def test_every_function_returns_a_status(declarations):
    for item in declarations.ext:
        if isinstance(item, c_ast.Decl) and isinstance(item.type, c_ast.FuncDecl):
            assert c_name(item.type.type) == "int32_t", item.name


def test_records_have_the_fields_of_the_header_in_their_order(declarations):
    expected = {
        item.name: [(field.name, c_name(field.type)) for field in item.type.type.decls]
        for item in declarations.ext
        if isinstance(item, c_ast.Typedef)
        and isinstance(item.type, c_ast.TypeDecl)
        and isinstance(item.type.type, c_ast.Struct)
        and item.type.type.decls
    }
    found = {
        name: [(field, ctypes_name(kind)) for field, kind in record._fields_]
        for name, record in _native.RECORDS.items()
    }
    assert found == expected


def test_codes_are_those_of_the_header(declarations):
    (codes,) = (item.type.values.enumerators for item in declarations.ext if isinstance(item.type, c_ast.Enum))
    assert {f"KV_{code.name}": int(code) for code in Code} == {code.name: int(code.value.value) for code in codes}


def test_constants_are_those_of_the_header():
    assert re.search(r"#define KV_API_VERSION (\d+)", HEADER)[1] == str(_native.API_VERSION)
    assert "#define KV_WAIT_FOREVER UINT32_MAX" in HEADER and _native.WAIT_FOREVER == ctypes.c_uint32(-1).value


def test_sizes_offsets_values_and_names_are_those_of_the_binary_interface():
    lines = (ROOT / "capi" / "abi.txt").read_text("utf-8").splitlines()
    facts = {line for line in lines if line and not line.startswith("#")}
    found = {f"size kv_status {ctypes.sizeof(ctypes.c_int32)}"}
    found |= {f"function {name}" for name in _native.FUNCTIONS}
    for name, record in _native.RECORDS.items():
        found.add(f"size {name} {ctypes.sizeof(record)}")
        found |= {f"offset {name} {field} {getattr(record, field).offset}" for field, _ in record._fields_}
    found |= {f"value KV_{code.name} {int(code)}" for code in Code}
    found |= {f"value KV_API_VERSION {_native.API_VERSION}", f"value KV_WAIT_FOREVER {_native.WAIT_FOREVER}"}
    assert found == facts
