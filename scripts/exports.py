"""The exports of the library: their declarations, and what ZemUVC.hpp makes of them.

    exports.py wrappers         each export and the functions of ZemUVC.hpp that call it; fails for one
                                that none calls and that has no reason for it
    exports.py fakes FILE       writes exports that record their calls, for tests"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = ROOT / "include"

# What ZemUVC.hpp does not call, and why.
UNWRAPPED = {
    "ZEMAPI_GetSerialNumber": "it ends the process, whatever it is given",
    "ZEMAPI_SetPframeCount": "it sends nothing and always fails",
}


class Export:
    """A declaration of the public header; `symbol` is the exported name."""

    def __init__(self, result, name, parameters, symbol):
        self.result = result
        self.name = name
        self.parameters = parameters
        self.symbol = symbol


def without_comments(text):
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)


def exports():
    """In the order of the module definition file; every declaration must be there, and nothing else."""
    header = without_comments((INCLUDE / "ZemUVCExtApi.h").read_text(encoding="utf-8"))
    found = {}
    for result, star, name, parameters, symbol in re.findall(
            r'^(?:ZEM_API )?(ZemResult|void|int32_t)( ?\*)? ?(\w+)\(([^()]*)\)'
            r'(?:\s*ZEM_DECORATED\("([^"]*)"\))?;', header, re.MULTILINE):
        words = [] if parameters == "void" else [
            " ".join(each.split()) for each in parameters.split(",")]
        export = Export(result + star.strip(), name, words, symbol or name)
        found[export.symbol] = export
    definition = (ROOT / "exports" / "ZemUVCExtApi.def").read_text(encoding="utf-8")
    symbols = re.findall(r'^  "?([^\s";]+)"?\s*$', definition, re.MULTILINE)
    if sorted(symbols) != sorted(found):
        raise SystemExit(f"not both declared and exported: {sorted(set(symbols) ^ set(found))}")
    return [found[symbol] for symbol in symbols]


def fakes():
    """A translation unit in which each export records its call."""
    lines = ['#include "tests/header/fake_exports.h"', ""]
    for export in exports():
        names = [re.search(r"(\w+)$", each).group(1) for each in export.parameters]
        arguments = "".join(f", {name}" for name in names)
        lines.append(f"{export.result} {export.name}({', '.join(export.parameters)}) "
                     f"{{ return zem::testing::Fake<{export.result}>(\"{export.symbol}\"{arguments}); }}")
    lines += ["", "namespace zem::testing {", "", "const std::vector<std::string> kWrappedExports = {"]
    lines += [f'    "{each.symbol}",' for each in exports() if each.symbol not in UNWRAPPED]
    return "\n".join(lines + ["};", "", "}  // namespace zem::testing", ""])


def wrappers():
    """For each exported symbol the functions of ZemUVC.hpp that call it."""
    text = without_comments((INCLUDE / "ZemUVC.hpp").read_text(encoding="utf-8"))
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
