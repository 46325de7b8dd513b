"""Constants that belong together, so that one may be taken for another: the constants of one scope
and type, the values of one enum, and the library's results."""

from collections import defaultdict

from tokens import matching

# S_OK is zero; the others are the results that functions of the library return.
RESULTS = ("S_OK", "kRefused", "kDeviceRefused", "kBufferTooSmall", "kNoDevice", "kFail")
_PLATFORM_FAILURES = ("E_FAIL", "E_NOINTERFACE", "E_NOTIMPL", "E_POINTER")

_SCOPE_WORDS = ("namespace", "enum", "struct", "class")


class Families:
    """Filled file by file; then asked for the relatives of a name."""

    def __init__(self):
        self._members = defaultdict(list)  # (file, scope, type) -> names
        self._keys = defaultdict(list)  # name -> keys

    def add_file(self, path, tokens):
        """Takes in the constants of a file. Returns the starts of the tokens that declare them."""
        declared = set()
        scopes = []  # names of the braces that are open
        names = {}  # index of an opening brace -> (word, name)
        for index, token in enumerate(tokens):
            if token.text in _SCOPE_WORDS:
                brace, name = _scope_opened(tokens, index)
                if brace is not None and brace not in names:
                    names[brace] = (token.text, name)
            elif token.text == "{":
                word, name = names.get(index, ("", f"{{{token.start}"))
                scopes.append(name)
                if word == "enum":
                    declared |= self._add_enumerators(path, name, tokens, index)
            elif token.text == "}" and scopes:
                scopes.pop()
            elif token.text == "constexpr":
                declared |= self._add_constant(path, "::".join(scopes), tokens, index)
        return declared

    def _add_enumerators(self, path, name, tokens, brace):
        declared = set()
        for index in range(brace + 1, matching(tokens, brace)):
            before, token, after = tokens[index - 1 : index + 2]
            if token.kind == "word" and before.text in "{," and after.text in ("=", ",", "}"):
                self._add((path, name, "enum"), token.text)
                declared.add(token.start)
        return declared

    def _add_constant(self, path, scope, tokens, index):
        end = index + 1
        while end < len(tokens) and tokens[end].text not in ("=", "{", "(", ";"):
            end += 1
        if end == len(tokens) or tokens[end].text in ("(", ";"):
            return set()
        name = end - 1
        while name > index and tokens[name].text in ("[", "]") or tokens[name].kind == "number":
            name -= 1
        type_text = " ".join(token.text for token in tokens[index + 1 : name])
        self._add((path, scope, type_text), tokens[name].text)
        return {tokens[name].start}

    def _add(self, key, name):
        if name not in self._members[key]:
            self._members[key].append(name)
            self._keys[name].append(key)

    def relatives(self, path, name, qualifier):
        """What may stand in the place of `name`, used in the file `path` behind `qualifier`::."""
        if name in RESULTS:
            return [other for other in RESULTS if other != name]
        if name in _PLATFORM_FAILURES:
            # kFail and E_FAIL are the same number.
            return [other for other in ("S_OK", *_PLATFORM_FAILURES) if other != name]
        found = []
        for key in self._keys[name]:
            file, scope, _ = key
            in_scope = scope.split("::")[-1] == qualifier if qualifier else file == path or _is_header(file)
            if in_scope:
                found += [other for other in self._members[key] if other not in (name, *found)]
        return found


def _is_header(path):
    return path.endswith(".h")


def _scope_opened(tokens, index):
    """The brace that a scope's word opens, and the scope's name; None for a mere declaration."""
    name = ""
    for place in range(index + 1, len(tokens)):
        token = tokens[place]
        if token.text == "{":
            return place, name
        if token.text in (";", "(", ")", ">", ",", "="):
            return None, ""
        if token.text == ":" and tokens[index].text == "enum":
            continue
        if token.kind == "word" and token.text not in _SCOPE_WORDS and (
                not name or tokens[index].text == "namespace"):
            name = token.text
    return None, ""
