"""One-token mutants of a source file: every one there is, and the order in which a seed draws them.

A mutant is a change of one token, or of one statement or condition that counts as one. Template
brackets, pointers and references are told from operators by clang-format's blanks: an operator with
two sides stands between blanks."""

import hashlib
import math
import re
from dataclasses import dataclass

from families import Families
from tokens import matching, tokenize


@dataclass(frozen=True)
class Mutant:
    path: str
    start: int
    end: int
    text: str  # what stands between start and end instead
    line: int  # the first line changed, counted from 1
    before: str  # the lines changed, joined and without indentation
    after: str

    def apply(self, source):
        return source[: self.start] + self.text + source[self.end :]


_OPERATORS = {
    "<": ("<=", ">="),
    "<=": ("<", ">"),
    ">": (">=", "<="),
    ">=": (">", "<"),
    "==": ("!=",),
    "!=": ("==",),
    "+": ("-",),
    "-": ("+",),
    "*": ("/",),
    "/": ("*",),
    "%": ("*",),
    "&": ("|",),
    "|": ("&",),
    "^": ("|",),
    "&&": ("||",),
    "||": ("&&",),
    "<<": (">>",),
    ">>": ("<<",),
    "+=": ("-=",),
    "-=": ("+=",),
    "*=": ("/=",),
    "/=": ("*=",),
    "&=": ("|=",),
    "|=": ("&=",),
    "^=": ("|=",),
    "<<=": (">>=",),
    ">>=": ("<<=",),
}
_STEPS = {"++": "--", "--": "++"}
_WORDS = {
    "true": "false",
    "false": "true",
    "FAILED": "SUCCEEDED",
    "SUCCEEDED": "FAILED",
    "min": "max",
    "max": "min",
    "min_element": "max_element",
    "max_element": "min_element",
}
_JUMPS = {"break": "continue", "continue": "break"}
_ASSIGNMENTS = {"=", *(mark for mark in _OPERATORS if mark.endswith("=") and mark not in
                       ("<=", ">=", "==", "!="))}
# Words that begin no expression statement.
_KEYWORDS = {
    "alignas", "auto", "break", "case", "catch", "class", "const", "constexpr", "continue", "default",
    "delete", "do", "else", "enum", "explicit", "extern", "for", "friend", "goto", "if", "inline",
    "namespace", "operator", "private", "protected", "public", "return", "static", "struct", "switch",
    "template", "throw", "try", "typedef", "typename", "union", "using", "virtual", "while",
}
_CASTS = {"static_cast", "reinterpret_cast", "const_cast"}


def enumerate_mutants(path, source, tokens, families, declared):
    """The sites of a file, each a list of groups of like mutants; a draw takes a group first."""
    finder = _Finder(path, source, tokens, families, declared)
    return finder.sites()


class _Finder:
    def __init__(self, path, source, tokens, families, declared):
        self._path = path
        self._source = source
        self._tokens = tokens
        self._families = families
        self._declared = declared
        self._line_starts = [0] + [match.end() for match in re.finditer("\n", source)]
        self._skipped = _template_heads(tokens)

    def sites(self):
        sites = []
        for index, token in enumerate(self._tokens):
            if index in self._skipped:
                continue
            sites.append([[self._mutant(token.start, token.end, text) for text in group]
                          for group in self._token_groups(index, token)])
            end = self._statement_end(index)
            if end is not None:
                sites.append([[self._mutant(token.start, self._tokens[end].start, "")]])
            if self._is_condition(index):
                sites.append([[self._mutant(token.start, token.start, "!")]])
        return [[group for group in site if group] for site in sites if any(site)]

    def _mutant(self, start, end, text):
        first = self._line_of(start)
        last = self._line_of(max(start, end - 1))
        begin = self._line_starts[first]
        stop = self._line_starts[last + 1] if last + 1 < len(self._line_starts) else len(self._source)
        return Mutant(self._path, start, end, text, first + 1,
                      _joined(self._source[begin:stop]),
                      _joined(self._source[begin:start] + text + self._source[end:stop]))

    def _line_of(self, position):
        low, high = 0, len(self._line_starts)
        while high - low > 1:
            middle = (low + high) // 2
            low, high = (middle, high) if self._line_starts[middle] <= position else (low, middle)
        return low

    def _text(self, index):
        return self._tokens[index].text if 0 <= index < len(self._tokens) else ""

    # ---- tokens ----

    def _token_groups(self, index, token):
        if token.kind == "number":
            return [] if self._is_pure_virtual(index) else number_groups(token.text)
        if token.kind in ("string", "character"):
            return [text_mutations(token.text)]
        if token.kind == "word":
            return self._word_groups(index, token)
        return [self._mark_mutations(index, token)]

    def _is_pure_virtual(self, index):
        return self._text(index - 1) == "=" and self._text(index - 2) in (")", "const", "noexcept")

    def _word_groups(self, index, token):
        if token.text in _JUMPS:
            return [[_JUMPS[token.text]], [""]]
        if token.text in _WORDS:
            return [[_WORDS[token.text]]]
        if token.start in self._declared:
            return []
        qualifier = self._text(index - 2) if self._text(index - 1) == "::" else ""
        return [self._families.relatives(self._path, token.text, qualifier)]

    def _mark_mutations(self, index, token):
        if token.text in _STEPS:
            return [_STEPS[token.text]]
        if token.spaced:
            return list(_OPERATORS.get(token.text, ()))
        if token.text == "!" or token.text in "-~" and self._begins_operand(index):
            return [""]
        return []

    def _begins_operand(self, index):
        before = self._text(index - 1)
        return before == "return" or before in _ASSIGNMENTS or before in _OPERATORS or (
            before in ("(", "[", "{", ",", "?", ":"))

    # ---- statements and conditions ----

    def _statement_end(self, index):
        """The semicolon behind the expression statement that begins at `index`, if one does: a call,
        an assignment, a step."""
        if self._text(index - 1) not in (";", "{", "}", ":", ")") or index == 0:
            return None
        place = index
        while self._text(place) in ("*", "++", "--"):
            place += 1
        stepped = place > index and self._text(place - 1) in _STEPS
        place, called = self._chain_end(place)
        if place is None:
            return None
        if self._text(place) in _STEPS:
            place, stepped = place + 1, True
        if self._text(place) in _ASSIGNMENTS:
            return self._semicolon(place)
        return place if self._text(place) == ";" and (called or stepped) else None

    def _semicolon(self, index):
        for place in range(index, len(self._tokens)):
            if self._text(place) == ";":
                return place
            if self._text(place) == "}":
                return None
            if self._text(place) in ("(", "[", "{"):
                return self._semicolon_behind(place)
        return None

    def _semicolon_behind(self, bracket):
        return self._semicolon(matching(self._tokens, bracket) + 1)

    def _chain_end(self, index):
        """Behind names joined by . -> ::, with their arguments, and whether it ends with a call."""
        called = False
        place = index
        while True:
            if self._text(place) == "::":
                place += 1
            token = self._tokens[place] if place < len(self._tokens) else None
            if token is None or token.kind != "word" or token.text in _KEYWORDS:
                return None, False
            place += 1
            called = False
            if self._text(place) == "<" and not self._tokens[place].spaced:
                place = self._angle_end(place)
            while self._text(place) in ("(", "["):
                called = self._text(place) == "("
                place = matching(self._tokens, place) + 1
            if self._text(place) not in (".", "->", "::"):
                return place, called
            place += 1

    def _angle_end(self, index):
        depth = 0
        for place in range(index, min(index + 40, len(self._tokens))):
            if not self._tokens[place].spaced:
                depth += {"<": 1, ">": -1, ">>": -2}.get(self._text(place), 0)
            if depth <= 0:
                return place + 1
        return index

    def _is_condition(self, index):
        """Whether a name or a call that begins at `index` is a truth value, so that it can be
        negated. Where a comparison, a FAILED or a ! decides, that token has mutants of its own."""
        token = self._tokens[index]
        if token.kind != "word" or token.text in _WORDS or token.text in _CASTS:
            return False
        before = self._logical_text(index - 1)
        if before not in ("&&", "||", "(", "=", "return", "?", ":", ",", ";"):
            return False
        end, _ = self._chain_end(index)
        after = self._logical_text(end) if end is not None else ""
        if after not in ("&&", "||", "?", ")", ";", ",", ":"):
            return False
        logical = before in ("&&", "||") or after in ("&&", "||", "?")
        return logical or before in ("(", ";") and after == ")" and self._is_head(index - 1, end)

    def _logical_text(self, index):
        """The token's text, but nothing for the && of a reference."""
        text = self._text(index)
        return "" if text == "&&" and not self._tokens[index].spaced else text

    def _is_head(self, opening, closing):
        """Whether the last part of an if's or a while's parentheses lies between the two."""
        while opening >= 0 and self._text(opening) != "(":
            opening -= 1
            if self._text(opening) in ("{", "}"):
                return False
        return self._text(opening - 1) in ("if", "while") and matching(self._tokens, opening) == closing


def _joined(lines):
    return " ".join(lines.split())


def _template_heads(tokens):
    """Indices of the tokens between template < and its >."""
    skipped = set()
    for index, token in enumerate(tokens):
        if token.text != "template":
            continue
        depth = 0
        for place in range(index + 1, len(tokens)):
            depth += {"<": 1, ">": -1, ">>": -2}.get(tokens[place].text, 0)
            skipped.add(place)
            if depth <= 0:
                break
    return skipped


# ---- constants ----


def number_groups(text):
    """One more, one less, zero, one bit the other way; of a fraction, its last digit."""
    body, suffix = re.fullmatch(r"(0[xX][0-9A-Fa-f']+|0[bB][01']+|[\d.']+(?:[eE][+-]?\d+)?)(\w*)",
                                text).groups()
    body = body.replace("'", "")
    if "." in body or ("e" in body.lower() and not body.lower().startswith("0x")):
        return _fraction_groups(body, suffix)
    hexadecimal = body.lower().startswith("0x")
    value = int(body, 0) if hexadecimal or body.lower().startswith("0b") else int(body)

    def written(number):
        if number < 0:
            return f"-{-number}{suffix}"
        if hexadecimal:
            return f"0x{number:0{len(body) - 2}X}{suffix}"
        return f"{number}{suffix}"

    width = 8 if value < 1 << 8 else 16 if value < 1 << 16 else 32
    used = {value}
    groups = []
    for numbers in ([value + 1], [value - 1], [0], [value ^ 1 << bit for bit in range(width)]):
        fresh = [number for number in numbers if number not in used]
        used.update(fresh)
        groups.append([written(number) for number in fresh])
    return groups


def _fraction_groups(body, suffix):
    mantissa, exponent = re.fullmatch(r"([\d.]+)((?:[eE][+-]?\d+)?)", body).groups()
    whole, _, rest = mantissa.partition(".")
    last = str((int(rest[-1:] or "0") + 1) % 10)
    return [[f"{whole}.{rest[:-1]}{last}{exponent}{suffix}"],
            [f"{int(whole) + 1}.{rest}{exponent}{suffix}"]]


_CHARACTERS = re.compile(r"\\(?:x[0-9A-Fa-f]+|[0-7]+|u[0-9A-Fa-f]{4}|.)|[^\\]", re.DOTALL)


def text_mutations(text):
    """One character another one, for each character; escapes other than \\0 stay."""
    quote = text[-1]
    begin = text.index(quote) + 1
    changed = []
    for match in _CHARACTERS.finditer(text, begin, len(text) - 1):
        other = _other_character(match.group())
        if other is not None:
            changed.append(text[: match.start()] + other + text[match.end() :])
    return changed


def _other_character(character):
    if character == "\\0":
        return "\\1"
    if len(character) > 1:
        return None
    if character in "zZ9":
        return {"z": "a", "Z": "A", "9": "0"}[character]
    if character.isalnum():
        return chr(ord(character) + 1)
    return "_" if character != "_" else "-"


# ---- drawing ----


def _fraction(*parts):
    """A number between 0 and 1 that depends on nothing but the parts."""
    digest = hashlib.sha256("\0".join(map(str, parts)).encode()).digest()
    return (int.from_bytes(digest[:8], "big") + 1) / (2**64 + 2)


def draw_order(sites, seed):
    """All mutants of the sites in the order in which the seed draws them: one of every site before a
    second one of any. A site's place depends on the seed and its own text only, so that an edit
    elsewhere changes nothing."""
    seen = {}
    keyed = []
    for site in sites:
        first = site[0][0]
        text = (first.path, first.before, _column(first))
        seen[text] = seen.get(text, 0) + 1
        name = (seed, *text, seen[text])
        ranked = []
        for group in site:
            for mutant in group:
                # Drawn with a weight of one for the group.
                ranked.append((-math.log(_fraction(*name, mutant.text)) * len(group), mutant))
        ranked.sort(key=lambda pair: pair[0])
        place = _fraction(*name)
        keyed += [(turn, place, mutant) for turn, (_, mutant) in enumerate(ranked)]
    keyed.sort(key=lambda entry: entry[:2])
    return [mutant for _, _, mutant in keyed]


def _column(mutant):
    """Where in its line the mutant begins, counted by the text that stays before it."""
    same = 0
    while same < min(len(mutant.before), len(mutant.after)) and (
            mutant.before[same] == mutant.after[same]):
        same += 1
    return same


class Sources:
    """The library's files, read once."""

    def __init__(self, root, paths):
        self.text = {path: (root / path).read_text(encoding="utf-8") for path in paths}
        self._tokens = {path: tokenize(text) for path, text in self.text.items()}
        self._families = Families()
        self._declared = {path: self._families.add_file(path, tokens)
                          for path, tokens in self._tokens.items()}

    def sites(self, path):
        return enumerate_mutants(path, self.text[path], self._tokens[path], self._families,
                                 self._declared[path])
