#!/usr/bin/env python3
"""Makes python/zemuvc/_exports.py, the table of everything that the library exports, from its public
headers: generate_python.py writes it, generate_python.py --check fails when it is not what the headers
say. Either fails when the header and the list of exported names do not name the same functions.
"""

from __future__ import annotations

import argparse
import difflib
import pathlib
import re
import sys
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADER = ROOT / "include/ZemUVCExtApi.h"
RESULTS = ROOT / "include/ZemUVCResults.h"
NAMES = ROOT / "exports/ZemUVCExtApi.def"
OUTPUT = ROOT / "python/zemuvc/_exports.py"

# A C type without const, and what it is to ctypes. Pointers to void and text stand here too; every
# other pointer is made of what it points to.
TYPES = {
    "ZemResult": "c_int32",
    "ZemLong": "c_int32",
    "ZemULong": "c_uint32",
    "void": "None",
    "void*": "c_void_p",
    "struct IBaseFilter*": "c_void_p",
    "wchar_t*": "c_wchar_p",
    "char": "c_char",
    "unsigned char": "c_ubyte",
    "uint8_t": "c_ubyte",
    "unsigned short": "c_uint16",
    "uint16_t": "c_uint16",
    "int": "c_int32",
    "int32_t": "c_int32",
    "unsigned int": "c_uint32",
    "uint32_t": "c_uint32",
    "uint64_t": "c_uint64",
}

# What the types of decorated functions are in the mangling of Linux.
MANGLED = {"void": "v", "char": "c", "unsigned int": "j", "unsigned short": "t"}


class Function(NamedTuple):
    name: str
    result: str
    parameters: list[tuple[str, str]]  # type and name
    decorated: str | None  # as a Microsoft compiler names it, for a C++ function
    signature: str  # the parameters as they are declared

    @property
    def symbol(self) -> str:
        return self.decorated or self.name


def without_comments(text: str) -> str:
    return re.sub(r"/\*.*?\*/|//[^\n]*", " ", text, flags=re.DOTALL)


def plain_type(text: str) -> str:
    """A type as it is looked up: no const, one blank between words, stars at the end."""
    words = re.sub(r"\bconst\b", " ", text).replace("*", " * ").split()
    return " ".join(word for word in words if word != "*") + "*" * words.count("*")


def mangle(function: Function) -> str:
    """The symbol that GCC and Clang give a C++ function of these simple types."""
    mangled = f"_Z{len(function.name)}{function.name}"
    seen: list[str] = []  # pointers, which are not written out twice
    for kind, _ in function.parameters:
        if not kind.endswith("*"):
            mangled += MANGLED[kind]
        elif kind in seen:
            index = seen.index(kind)
            mangled += "S_" if index == 0 else f"S{index - 1}_"
        else:
            seen.append(kind)
            mangled += "P" + MANGLED[kind[:-1]]
    return mangled


def parameters_of(text: str) -> list[tuple[str, str]]:
    if text.strip() in ("", "void"):
        return []
    parameters = []
    for parameter in text.split(","):
        match = re.fullmatch(r"\s*(.*?[\s*])(\w+)\s*", parameter, re.DOTALL)
        if match is None:
            raise ValueError(f"not a parameter: {parameter!r}")
        parameters.append((plain_type(match[1]), match[2]))
    return parameters


def functions_of(header: str) -> list[Function]:
    pattern = re.compile(
        r"(?P<mark>ZEM_API\s+)?\b(?P<result>ZemResult|void|int32_t)\s*(?P<star>\*?)\s+(?P<name>\w+)"
        r"\s*\((?P<parameters>[^()]*)\)\s*(?:ZEM_DECORATED\(\"(?P<decorated>[^\"]+)\"\))?\s*;")
    functions = []
    for match in pattern.finditer(without_comments(header)):
        if not (match["mark"] or match["decorated"]):
            raise ValueError(f"{match['name']} is neither ZEM_API nor ZEM_DECORATED")
        functions.append(Function(match["name"], match["result"] + match["star"],
                                  parameters_of(match["parameters"]), match["decorated"],
                                  " ".join(match["parameters"].split())))
    return functions


def exported_names(text: str) -> list[str]:
    lines = (line.strip() for line in text.split("EXPORTS", 1)[1].splitlines())
    return [line.strip('"') for line in lines if line and not line.startswith(";")]


def compare_names(functions: list[Function], names: list[str]) -> None:
    declared = [function.symbol for function in functions]
    twice = sorted({name for name in declared if declared.count(name) > 1})
    missing = sorted(set(names) - set(declared))
    unknown = sorted(set(declared) - set(names))
    if missing or unknown or twice:
        raise ValueError(f"exported and not declared: {missing}; declared and not exported: "
                         f"{unknown}; declared twice: {twice}")


def attribute_names(functions: list[Function]) -> list[str]:
    """What each is called in Python: an overload for C++ has its plain name taken."""
    plain = {function.name for function in functions if not function.decorated}
    return [f"{function.name}_cpp" if function.decorated and function.name in plain else function.name
            for function in functions]


def structures_of(header: str) -> list[tuple[str, list[tuple[str, str, int | None]]]]:
    structures = []
    for match in re.finditer(r"typedef\s+struct\s+\w+\s*\{(.*?)\}\s*(\w+)\s*;",
                             without_comments(header), re.DOTALL):
        fields = []
        for line in filter(None, (part.strip() for part in match[1].split(";"))):
            field = re.fullmatch(r"(.*?)\s+(\w+)(?:\[(\d+)\])?", line, re.DOTALL)
            if field is None:
                raise ValueError(f"not a field: {line!r}")
            fields.append((plain_type(field[1]), field[2], int(field[3]) if field[3] else None))
        structures.append((match[2], fields))
    return structures


def callbacks_of(header: str) -> list[tuple[str, str, list[tuple[str, str]]]]:
    return [(match[2], plain_type(match[1]), parameters_of(match[3])) for match in re.finditer(
        r"typedef\s+(\w+)\s+\(\*(\w+)\)\(([^)]*)\)\s*;", without_comments(header))]


def python_type(kind: str, declared: set[str]) -> str:
    if kind in TYPES:
        return TYPES[kind]
    if kind in declared:
        return kind
    if kind.endswith("*"):
        return f"POINTER({python_type(kind[:-1], declared)})"
    raise ValueError(f"no type of ctypes for {kind!r}")


def joined_lines(text: str) -> str:
    return re.sub(r"\\\n", " ", text)


def results_of(header: str) -> list[tuple[str, int]]:
    return [(match[1], int(match[2], 0)) for match in re.finditer(
        r"#define (ZEM_OK|ZEM_E_\w+) \(\(ZemResult\)(\w+)\)", header)]


def units_of(header: str) -> list[tuple[str, list[str]]]:
    return [(match[1], re.findall(r"0x[0-9A-F]+", match[2])) for match in re.finditer(
        r"#define (ZEM_\w+_XU)\s+(\{.*)", joined_lines(header))]


def texts_of(results: str, table: str) -> list[tuple[str, str]]:
    body = re.search(rf"#define {table}\(ENTRY\)(.*)", joined_lines(results))
    if body is None:
        raise ValueError(f"no table {table}")
    return re.findall(r"ENTRY\((\w+), (\"[^\"]*\")\)", body[1])


def signed(number: int) -> str:
    return f"0x{number:08X} - 0x100000000" if number >= 0x80000000 else str(number)


def version_of(header: str) -> str:
    numbers = dict(re.findall(r"#define ZEM_VERSION_(MAJOR|MINOR|PATCH) (\d+)", header))
    return ".".join(numbers[part] for part in ("MAJOR", "MINOR", "PATCH"))


def generate(header: str, results: str, names: str) -> str:
    functions = functions_of(header)
    compare_names(functions, exported_names(names))
    structures = structures_of(header)
    callbacks = callbacks_of(header)
    declared = {name for name, *_ in structures} | {name for name, *_ in callbacks}

    lines = [
        '"""Every function, type and constant of ZemUVCExtApi for ctypes.',
        "",
        "Made by scripts/generate_python.py from the library's headers; changes belong there. What a",
        "function does, and which threads may call it, stands with its name in ZemUVCExtApi.h.",
        '"""',
        "",
        "from __future__ import annotations",
        "",
        "import os",
        "from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_int32, c_ubyte, c_uint16,",
        "                    c_uint32, c_uint64, c_void_p, c_wchar_p)",
        "from typing import Any, Callable, NamedTuple",
        "",
        f'VERSION = "{version_of(header)}"',
        "",
        "# Results, as the functions return them: 32 bits with a sign.",
    ]
    lines += [f"{name} = {signed(number)}" for name, number in results_of(header)]
    lines += ["", "# What each of them is called and means.", "RESULTS: dict[int, tuple[str, str]] = {"]
    lines += [f'    {name}: ("{name}", {text}),' for name, text in
              texts_of(results, "ZEM_RESULT_TEXTS")]
    lines += ["}", "", "# What failures of the platform say about the transfer that they ended.",
              "TRANSFER_FAILURES: dict[int, str] = {"]
    lines += [f"    {signed(int(number, 0))}: {text}," for number, text in
              texts_of(results, "ZEM_TRANSFER_FAILURE_TEXTS")]
    lines += ["}"]

    for name, fields in structures:
        lines += ["", "", f"class {name}(Structure):", "    _fields_ = ["]
        for kind, field, count in fields:
            of = python_type(kind, declared)
            lines.append(f'        ("{field}", {of if count is None else f"{of} * {count}"}),')
        lines.append("    ]")

    lines += ["", "", "# x86-64 has one calling convention on each system, so this is the library's on both."]
    for name, result, parameters in callbacks:
        kinds = ", ".join(python_type(kind, declared) for kind in [result] + [p[0] for p in parameters])
        lines.append(f"{name} = CFUNCTYPE({kinds})")

    lines += ["", "# Extension units of the camera."]
    for name, numbers in units_of(header):
        lines.append(f"{name} = GUID({', '.join(numbers[:3])},")
        lines.append(f"{' ' * len(name)}        (c_ubyte * 8)({', '.join(numbers[3:])}))")

    lines += [
        "", "",
        "class Export(NamedTuple):",
        '    """A function of the library."""',
        "",
        "    name: str  # in this module; a C++ overload of another function ends in _cpp",
        "    result: Any  # a type of ctypes; None for nothing",
        "    arguments: tuple[tuple[str, Any], ...]  # names and types",
        "    decorated: tuple[str, str] | None = None  # symbols on Windows and Linux, of C++ functions",
        "",
        "    @property",
        "    def symbol(self) -> str:",
        '        """The name by which this system\'s library exports it."""',
        "        if self.decorated is None:",
        "            return self.name",
        '        return self.decorated[0 if os.name == "nt" else 1]',
        "", "",
        "EXPORTS: tuple[Export, ...] = (",
    ]
    attributes = attribute_names(functions)
    for attribute, function in zip(attributes, functions):
        arguments = [f'("{name}", {python_type(kind, declared)})'
                     for kind, name in function.parameters]
        lines.append(f'    Export("{attribute}", {python_type(function.result, declared)}, (')
        lines += [f"        {argument}," for argument in arguments]
        symbols = (f', ("{function.decorated}", "{mangle(function)}")' if function.decorated else "")
        lines.append(f"    ){symbols}),")
    lines += [")", "", "", "class Exports:",
              '    """The functions of a loaded library, by their names."""', ""]
    for attribute, function in zip(attributes, functions):
        names_only = ", ".join(name for _, name in function.parameters)
        lines.append(f"    {attribute}: Callable[..., Any]  # ({names_only})")
    lines += [
        "",
        "    def __init__(self, library: Any) -> None:",
        '        """Takes each from `library`, a ctypes.CDLL. Raises AttributeError for one that it lacks."""',
        "        for export in EXPORTS:",
        "            # A name may begin with a question mark, which only this way of asking takes.",
        "            function = library[export.symbol]",
        "            function.restype = export.result",
        "            function.argtypes = [kind for _, kind in export.arguments]",
        "            setattr(self, export.name, function)",
        "",
    ]
    return "\n".join(lines)


def main() -> int:
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--check", action="store_true", help="write nothing; fail when it is stale")
    check = arguments.parse_args().check
    table = generate(HEADER.read_text("utf-8"), RESULTS.read_text("utf-8"), NAMES.read_text("utf-8"))
    if not check:
        OUTPUT.write_text(table, "utf-8")
        return 0
    present = OUTPUT.read_text("utf-8") if OUTPUT.exists() else ""
    if present == table:
        return 0
    sys.stdout.writelines(difflib.unified_diff(present.splitlines(True), table.splitlines(True),
                                               str(OUTPUT.relative_to(ROOT)), "what the headers say"))
    print("\nrun scripts/generate_python.py")
    return 1


if __name__ == "__main__":
    sys.exit(main())
