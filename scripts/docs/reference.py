"""Makes the reference's pages from Doxygen's XML, and refuses what is not documented."""
import glob
import html
import re
import xml.etree.ElementTree as tree

XML = "build/docs-xml/xml"
EXPORTS = "exports/ZemUVCExtApi.def"

# How an element of Doxygen's text is written in HTML; what is not here is an error.
TAGS = {"para": "p", "computeroutput": "code", "bold": "strong", "emphasis": "em", "itemizedlist": "ul",
        "listitem": "li", "verbatim": "pre", "preformatted": "pre", "programlisting": "pre", "codeline": None,
        "highlight": None, "ref": None, "ndash": "–", "mdash": "—", "sp": " ", "linebreak": "\n"}


class Undocumented(Exception):
    pass


def exported_names():
    """The names in the module definition file, undecorated, and in its order."""
    with open(EXPORTS, encoding="utf-8") as file:
        entries = re.findall(r"^  ([A-Za-z_]\w*|\"[^\"]+\")", file.read().split("\nEXPORTS\n")[1], re.M)
    return [(entry.strip('"').split("@@")[0].lstrip("?"), entry.startswith('"')) for entry in entries]


def text_of(element):
    return "".join(element.itertext()).strip() if element is not None else ""


class Reference:
    def __init__(self):
        self.families = []
        for path in glob.glob(f"{XML}/group__*.xml"):
            compound = tree.parse(path).find("compounddef")
            classes = [inner for inner in (tree.parse(f"{XML}/{entry.get('refid')}.xml").find("compounddef")
                                           for entry in compound.iter("innerclass")) if self.is_described(inner)]
            names = {text_of(inner.find("compoundname")) for inner in classes}
            # A structure's typedef says no more than the structure.
            members = [m for m in compound.iter("memberdef") if m.get("kind") == "function" or
                       self.is_described(m) and text_of(m.find("name")) not in names]
            if not members and not classes:
                continue
            first = members[0].find("location") if members else classes[0].find("location")
            self.families.append((first.get("file"), min(
                int(m.find("location").get("line")) for m in members or classes), compound, members, classes))
        self.families.sort(key=lambda family: family[:2])
        # Where each name is: its family's page and the anchor there.
        self.places = {}
        for _, _, compound, members, classes in self.families:
            page = self.page(compound)
            for name in [text_of(m.find("name")) for m in members] + \
                    [text_of(c.find("compoundname")) for c in classes]:
                self.places.setdefault(name, f"{page}#{name}")
        self.names = re.compile(r"\b(" + "|".join(sorted(map(re.escape, self.places), key=len, reverse=True)) + r")\b")

    @staticmethod
    def is_described(element):
        return bool(text_of(element.find("briefdescription")) or text_of(element.find("detaileddescription")))

    @staticmethod
    def page(compound):
        return f"reference-{text_of(compound.find('compoundname'))}.html"

    def linked(self, text):
        return self.names.sub(lambda m: f'<a href="{self.places[m[1]]}">{m[1]}</a>', html.escape(text, quote=False))

    def prose(self, element, skip=()):
        """An element of Doxygen's text as HTML, without itself."""
        if element is None:
            return ""
        out = [self.linked(element.text or "")]
        for child in element:
            if child.tag not in skip:
                if child.tag not in TAGS:
                    raise ValueError(f"the reference has no way to write <{child.tag}>")
                tag = TAGS[child.tag]
                inner = self.prose(child, skip)
                if tag is None:
                    out.append(inner)
                elif not tag.isalnum():
                    out.append(tag)
                elif tag != "p" or inner.strip():
                    out.append(f"<{tag}>{inner}</{tag}>")
            out.append(self.linked(child.tail or ""))
        return "".join(out)

    @staticmethod
    def parameters(member):
        return [text_of(p.find("declname")) for p in member.findall("param") if p.find("declname") is not None]

    @staticmethod
    def described(member):
        return {text_of(name): item.find("parameterdescription") for item in member.iter("parameteritem")
                for name in item.iter("parametername")}

    def function(self, member, within=""):
        """One function as HTML: what it does, each parameter, what it returns."""
        name = within + text_of(member.find("name"))
        kind = text_of(member.find("type"))
        arguments = ["".join(p.find("type").itertext()) + " " + text_of(p.find("declname"))
                     for p in member.findall("param")]
        arguments = [re.sub(r"\s*\*\s*", "* ", a).strip() for a in arguments]
        kind = re.sub(r"\s+\*", "*", kind)
        prototype = f"{kind} {name}(".lstrip() + ", ".join(arguments) + ")"
        described = self.described(member)
        rows = "".join(f"<tr><td><code>{p}</code></td><td>{self.flat(described[p])}</td></tr>"
                       for p in self.parameters(member) if p in described)
        returned = member.find(".//simplesect[@kind='return']")
        return (f'<section class="function" id="{self.anchor(member)}"><h2>{html.escape(name)}</h2>'
                f"<pre class=\"prototype\">{self.linked(prototype)}</pre>"
                + self.text(member)
                + (f'<div class="table"><table class="parameters">{rows}</table></div>' if rows else "")
                + (f'<p class="returns"><b>Returns</b> {self.flat(returned)}</p>' if returned is not None else "")
                + "</section>")

    def flat(self, element):
        return re.sub(r"</?p>", "", self.prose(element)).strip()

    def text(self, member):
        return self.prose(member.find("briefdescription")) + \
            self.prose(member.find("detaileddescription"), ("parameterlist", "simplesect"))

    def anchor(self, member):
        name = text_of(member.find("name"))
        anchor, number = name, 1
        while anchor in self.seen:
            number += 1
            anchor = f"{name}-{number}"
        self.seen.add(anchor)
        return anchor

    def other(self, members, classes):
        """Constants, types and structures as tables."""
        out = []
        rows = [(text_of(m.find("name")), self.text(m)) for m in members if m.get("kind") != "function"]
        if rows:
            out.append('<div class="table"><table>' + "".join(
                f'<tr id="{name}"><td><code>{html.escape(name)}</code></td><td>{words}</td></tr>' for name, words in rows)
                + "</table></div>")
        for compound in classes:
            name = text_of(compound.find("compoundname"))
            fields = "".join(
                f"<tr><td><code>{html.escape(text_of(f.find('type')))} {text_of(f.find('name'))}"
                f"{text_of(f.find('argsstring'))}</code></td><td>{self.text(f)}</td></tr>"
                for f in compound.iter("memberdef"))
            out.append(f'<section id="{name}"><h2>{name}</h2>{self.text(compound)}'
                       f'<div class="table"><table>{fields}</table></div></section>')
        return "".join(out)

    def pages(self):
        """Yields file name, title and HTML of each page; the first is the index."""
        index, written = [], []
        for _, _, compound, members, classes in self.families:
            self.seen = set()
            title = text_of(compound.find("title"))
            functions = [m for m in members if m.get("kind") == "function"]
            body = f"<h1>{html.escape(title)}</h1>" + self.text(compound) + self.other(members, classes) + \
                "".join(self.function(m) for m in functions)
            written.append((self.page(compound), title, body))
            rows = "".join(f'<tr><td><a href="{self.places[text_of(m.find("name"))]}">{text_of(m.find("name"))}</a></td>'
                           f'<td>{self.flat(m.find("briefdescription"))}</td></tr>' for m in functions)
            index.append(f'<h2><a href="{self.page(compound)}">{html.escape(title)}</a></h2>'
                         + (f'<div class="table"><table class="functions">{rows}</table></div>' if rows else ""))
        header = tree.parse(f"{XML}/ZemUVCExtApi_8h.xml").find("compounddef")
        yield ("reference.html", "Reference",
               "<h1>Reference</h1>" + self.text(header) + "".join(index))
        yield from written

    def cpp_pages(self):
        """The same for the header-only layer: its namespace, and a page for each class."""
        namespaces = [tree.parse(f"{XML}/{name}.xml").find("compounddef")
                      for name in ("namespacezemuvc", "namespacezemuvc_1_1default__camera")]
        classes = [tree.parse(f"{XML}/{inner.get('refid')}.xml").find("compounddef")
                   for inner in namespaces[0].iter("innerclass")]
        rows = []
        for compound in classes:
            name = text_of(compound.find("compoundname"))
            page = "reference-cpp-" + name.split("::")[-1].lower() + ".html"
            rows.append(f'<tr><td><a href="{page}">{name}</a></td><td>'
                        f'{self.flat(compound.find("briefdescription"))}</td></tr>')
            yield page, name, self.cpp_body(compound, name)
        header = tree.parse(f"{XML}/ZemUVC_8hpp.xml").find("compounddef")
        self.seen = set()
        yield ("reference-cpp.html", "Reference for C++", "<h1>Reference for C++</h1>" + self.text(header)
               + '<h2>Classes</h2><div class="table"><table class="functions">' + "".join(rows) + "</table></div>"
               + "".join(self.cpp_members(space, text_of(space.find("compoundname"))) for space in namespaces))

    def cpp_body(self, compound, name):
        self.seen = set()
        return f"<h1>{name}</h1>" + self.text(compound) + self.cpp_members(compound, name)

    def cpp_members(self, compound, name):
        members = [m for m in compound.iter("memberdef") if m.get("prot") == "public" and self.is_described(m)]
        return self.other([m for m in members if m.get("kind") != "friend"], []) + "".join(
            self.function(m, f"{name}::".replace("zemuvc::", "", 1) if name != "zemuvc" else "")
            for m in members if m.get("kind") == "function")

    def count_documented(self):
        """How many exports there are; fails for one that lacks a word, a parameter or its result."""
        functions = {}
        for _, _, compound, members, _ in self.families:
            for member in members:
                if member.get("kind") == "function":
                    key = text_of(member.find("name")), text_of(compound.find("compoundname")) == "for-c-callers"
                    functions[key] = member
        missing = []
        exported = exported_names()
        for key in exported:
            member = functions.get(key)
            if member is None:
                missing.append(f"{key[0]}: is not in the header's reference")
                continue
            if not text_of(member.find("briefdescription")):
                missing.append(f"{key[0]}: nothing says what it does")
            missing += [f"{key[0]}: parameter {p} is not described" for p in self.parameters(member)
                        if not text_of(self.described(member).get(p))]
            if text_of(member.find("type")) != "void" and not text_of(member.find(".//simplesect[@kind='return']")):
                missing.append(f"{key[0]}: nothing says what it returns")
        missing += [f"{name}: is in the header and not exported" for name, decorated in functions
                    if (name, decorated) not in exported and functions[name, decorated].get("inline") == "no"]
        if missing:
            raise Undocumented("\n".join(missing))
        return len(exported)
