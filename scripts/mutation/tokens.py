"""A C++ tokenizer that is good enough for this project's own, clang-formatted sources."""

import re
from dataclasses import dataclass

_MARKS = (
    "<=> <<= >>= ->* ... :: -> ++ -- << >> <= >= == != && || += -= *= /= %= &= |= ^= .* "
    "{ } [ ] ( ) < > ; : , . ? + - * / % & | ^ ~ ! = # @ \\"
).split()

_PATTERN = re.compile(
    r"""
    (?P<preprocessor> ^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<space>        [ \t\r]+|\n)
  | (?P<comment>      //[^\n]*|/\*.*?\*/)
  | (?P<raw>          (?:L|u8|u|U)?R"(?P<fence>[^()\\\s]{0,16})\(.*?\)(?P=fence)")
  | (?P<string>       (?:L|u8|u|U)?"(?:\\.|[^"\\\n])*")
  | (?P<character>    (?:L|u8|u|U)?'(?:\\.|[^'\\\n])*')
  | (?P<number>       0[xX][0-9A-Fa-f']+[uUlL]*
                    | 0[bB][01']+[uUlL]*
                    | (?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)?[uUlLfF]*)
  | (?P<word>         [A-Za-z_]\w*)
  | (?P<mark>         """
    + "|".join(re.escape(mark) for mark in _MARKS)
    + r""")
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

_SKIPPED = {"preprocessor", "space", "comment", "raw"}


@dataclass(frozen=True)
class Token:
    kind: str  # word, number, string, character or mark
    text: str
    start: int
    end: int
    spaced: bool  # white space on both sides, as clang-format puts it around binary operators


def tokenize(source):
    """The tokens of `source` that mean something, without what stands in a static_assert."""
    tokens = []
    position = 0
    while position < len(source):
        match = _PATTERN.match(source, position)
        if match is None:
            raise ValueError(f"no token at {source[position:position + 20]!r}")
        kind = match.lastgroup if match.lastgroup != "fence" else "raw"
        if kind not in _SKIPPED:
            start, end = match.span()
            spaced = source[start - 1 : start].isspace() and source[end : end + 1].isspace()
            tokens.append(Token(kind, match.group(), start, end, spaced))
        position = match.end()
    return _without_assertions(tokens)


def _without_assertions(tokens):
    kept = []
    index = 0
    while index < len(tokens):
        if tokens[index].text == "static_assert":
            index = matching(tokens, index + 1) + 1
        else:
            kept.append(tokens[index])
            index += 1
    return kept


_CLOSING = {"(": ")", "[": "]", "{": "}"}


def matching(tokens, index):
    """Where the bracket that opens at `index` closes; the last token if it does not."""
    opening, closing = tokens[index].text, _CLOSING[tokens[index].text]
    depth = 0
    for place in range(index, len(tokens)):
        if tokens[place].text == opening:
            depth += 1
        elif tokens[place].text == closing:
            depth -= 1
            if depth == 0:
                return place
    return len(tokens) - 1
