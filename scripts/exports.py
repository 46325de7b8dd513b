"""The exports of the library: their declarations, and what ZemUVC.hpp makes of them.

    exports.py wrappers         each export and the functions of ZemUVC.hpp that call it; fails for one
                                that none calls and that has no reason for it
    exports.py fakes FILE       writes exports that record their calls, for tests"""

import pathlib
import re
import sys

from generate_python import (
    HEADER, NAMES, compare_names, exported_names, functions_of, without_comments)

CPP_HEADER = HEADER.with_name("ZemUVC.hpp")

# What ZemUVC.hpp does not call, and why.
UNWRAPPED = {
    "ZEMAPI_GetSerialNumber": "it ends the process, whatever it is given",
    "ZEMAPI_SetPframeCount": "it sends nothing and always fails",
}


def exports():
    """In the order of the header; fails when that and the list of exported names differ."""
    functions = functions_of(HEADER.read_text(encoding="utf-8"))
    compare_names(functions, exported_names(NAMES.read_text(encoding="utf-8")))
    return functions


def fakes():
    """A translation unit in which each export records its call."""
    lines = ['#include "tests/header/fake_exports.h"', ""]
    for export in exports():
        arguments = "".join(f", {name}" for _, name in export.parameters)
        lines.append(f"{export.result} {export.name}({export.signature}) "
                     f"{{ return zem::testing::Fake<{export.result}>(\"{export.symbol}\"{arguments}); }}")
    lines += ["", "namespace zem::testing {", "", "const std::vector<std::string> kWrappedExports = {"]
    lines += [f'    "{each.symbol}",' for each in exports() if each.symbol not in UNWRAPPED]
    return "\n".join(lines + ["};", "", "}  // namespace zem::testing", ""])


def wrappers():
    """For each exported symbol the functions of ZemUVC.hpp that call it."""
    text = without_comments(CPP_HEADER.read_text(encoding="utf-8"))
    text = re.sub(r'"[^"\n]*"', '""', text)
    scope = re.compile(
        r"^(?P<close>\};|\}  *)$|^(?:class|namespace) (?P<scope>\w+)[^;]*?\{"
        r"|(?P<function>~?\b\w+)\((?:[^()]|\([^()]*\))*\)(?: const)?\s*(?:noexcept(?:\(kQuiet<Code\.\.\.>\))?)?\s*\{"
        r"|\b(?P<call>(?:ZEMAPI|ZEMUVCEXT|ZEMROMAPI|WREN|ORVAAPI)_\w+|NV12_to_RGB|Convert\w+toBMP|PackWavFile)\(",
        re.MULTILINE)
    where, function, found = "", "", []
    for match in scope.finditer(text):
        if match["close"]:
            where = ""
        elif match["scope"]:
            where = match["scope"] + "::"
        elif match["function"] and match["function"] not in ("if", "while", "for", "switch", "catch"):
            function = match["function"]
        elif match["call"]:
            found.append((match["call"], f"{where}{function}"))
    return found


def show_wrappers():
    found = wrappers()
    status = 0
    for export in exports():
        by = list(dict.fromkeys(wrapper for call, wrapper in found if call == export.name))
        if export.symbol in UNWRAPPED:
            print(f"{export.symbol:45} not wrapped: {UNWRAPPED[export.symbol]}")
            status |= bool(by)
            continue
        print(f"{export.symbol:45} {', '.join(by) or 'NOTHING'}")
        status |= not by
    names = {export.name for export in exports()}
    for call, wrapper in found:
        if call not in names:
            print(f"{wrapper} calls {call}, which is no export")
            status = 1
    print(f"{len(exports())} exports, {len(UNWRAPPED)} of them not wrapped")
    return int(status)


def main():
    if sys.argv[1:] == ["wrappers"]:
        sys.exit(show_wrappers())
    if sys.argv[1:2] == ["fakes"] and len(sys.argv) == 3:
        pathlib.Path(sys.argv[2]).write_text(fakes(), encoding="utf-8")
        return
    sys.exit(__doc__)


if __name__ == "__main__":
    main()
