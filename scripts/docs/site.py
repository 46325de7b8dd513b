#!/usr/bin/env python3
"""Writes the site: pages from Markdown, the reference, one style sheet; then checks every link in it."""
import html
import json
import os
import re
import shutil
import sys
import urllib.parse

import markdown

import reference

# The pages in the order of the menu: heading, then (source, or page of the reference, and title).
MENU = [
    ("Begin", [
        ("README.md", "ZemUVCExtApi"),
        ("docs/packages.md", "Packages"),
        ("docs/start-on-windows.md", "On Windows"),
        ("docs/start-under-wine.md", "Under Wine"),
        ("docs/start-on-linux.md", "On Linux"),
    ]),
    ("Use", [
        ("docs/zemctl.md", "zemctl by task"),
        ("docs/updating.md", "Updating safely"),
        ("docs/recovering.md", "Recovering a camera"),
        ("python/README.md", "From Python"),
        ("docs/station-tests.md", "Testing without a camera"),
        ("docs/simulator.md", "The simulated camera"),
        ("docs/traces.md", "Traces"),
    ]),
    ("Look up", [
        ("reference.html", "Reference"),
        ("reference-cpp.html", "Reference for C++"),
        ("docs/wire-protocol.md", "Wire protocol"),
        ("docs/linux.md", "Linux in detail"),
        ("docs/open-behaviours.md", "What the interface leaves open"),
        ("docs/reliability.md", "Reliability"),
        ("docs/performance.md", "Performance"),
        ("docs/mutation.md", "Which faults the tests notice"),
        ("docs/coverage.md", "What the tests run through"),
        ("docs/fuzzing.md", "Fuzzing"),
    ]),
    ("Work on it", [
        ("docs/architecture.md", "The house"),
        ("docs/adding-an-export.md", "Adding an export"),
        ("docs/dependencies.md", "Dependencies"),
        ("CONTRIBUTING.md", "Contributing"),
        ("SECURITY.md", "Security"),
        ("CHANGELOG.md", "Changes"),
    ]),
]
SOURCES = [(source, title) for _, pages in MENU for source, title in pages if source.endswith(".md")]

TEMPLATE = """<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title}</title>
<link rel="stylesheet" href="style.css">
</head>
<body>
<details class="menu"><summary>Menu</summary><nav>{menu}</nav></details>
<div class="sides"><nav aria-label="Pages">{menu}</nav>
<main>{body}</main></div>
</body>
</html>
"""


def page_of(source):
    """The page that a source becomes."""
    if source.endswith(".html"):
        return source
    if source == "README.md":
        return "index.html"
    if source.endswith("/README.md"):
        return os.path.dirname(source) + ".html"
    return os.path.splitext(os.path.basename(source))[0].lower() + ".html"


def menu(current):
    out = []
    for heading, pages in MENU:
        out.append(f"<h2>{heading}</h2><ul>")
        for source, title in pages:
            here = ' aria-current="page"' if page_of(source) == current else ""
            out.append(f'<li><a href="{page_of(source)}"{here}>{html.escape(title)}</a></li>')
        out.append("</ul>")
    return "".join(out)


class Site:
    def __init__(self, folder):
        self.folder = folder
        self.pages = {os.path.normpath(source): page_of(source) for source, _ in SOURCES}
        os.makedirs(folder)

    def write(self, page, title, body):
        name = title if page == "index.html" else f"{title} - ZemUVCExtApi"
        with open(os.path.join(self.folder, page), "w", encoding="utf-8") as file:
            file.write(TEMPLATE.format(title=html.escape(name), menu=menu(page), body=body))

    def target(self, source, link):
        """Where a link of a source leads in the site; files that are no pages come along."""
        parts = urllib.parse.urlsplit(link)
        if parts.scheme or not parts.path:
            return link
        path = os.path.normpath(os.path.join(os.path.dirname(source), parts.path))
        fragment = f"#{parts.fragment}" if parts.fragment else ""
        if path in self.pages:
            return self.pages[path] + fragment
        if not os.path.isfile(path):
            sys.exit(f"{source}: {link} is no file")
        if not os.path.exists(copy := os.path.join(self.folder, "files", path)):
            os.makedirs(os.path.dirname(copy), exist_ok=True)
            shutil.copy(path, copy)
        return f"files/{path}{fragment}"

    def from_markdown(self, source, title):
        with open(source, encoding="utf-8") as file:
            text = file.read()
        body = markdown.markdown(text, extensions=["fenced_code", "tables", "toc", "sane_lists"])
        body = re.sub(r'(href|src)="([^"]*)"',
                      lambda m: f'{m[1]}="{html.escape(self.target(source, html.unescape(m[2])))}"', body)
        # A picture that stands alone has its words below it.
        body = re.sub(r'<p>(<img alt="([^"]*)"[^>]*>)</p>', r"<figure>\1<figcaption>\2</figcaption></figure>", body)
        # An option is not broken behind its hyphens.
        body = re.sub(r"(?<=[>\s(])--?[a-z][\w-]*(?=[^<>]*</code>)", r'<span class="option">\g<0></span>', body)
        body = body.replace("<table>", '<div class="table"><table>').replace("</table>", "</table></div>")
        self.write(page_of(source), title, body)


def check_links(folder):
    """Every link of every page leads to a file, and to an anchor that it has. Returns their number."""
    pages = {}
    for name in sorted(os.listdir(folder)):
        if name.endswith(".html"):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                pages[name] = file.read()
    anchors = {name: re.findall(r'\bid="([^"]+)"', text) for name, text in pages.items()}
    wrong = [f"{name}: two anchors {anchor}" for name, all_of in anchors.items()
             for anchor in sorted({a for a in all_of if all_of.count(a) > 1})]
    count = 0
    for name, text in pages.items():
        for link in re.findall(r'(?:href|src)="([^"]*)"', text):
            parts = urllib.parse.urlsplit(html.unescape(link))
            count += 1
            if parts.scheme:
                wrong.append(f"{name}: {link} needs the network")
                continue
            file = urllib.parse.unquote(parts.path) or name
            if not os.path.isfile(os.path.join(folder, file)):
                wrong.append(f"{name}: {link} leads to no file")
            elif parts.fragment and file in anchors and parts.fragment not in anchors[file]:
                wrong.append(f"{name}: {link} leads to no anchor")
    if wrong:
        sys.exit("\n".join(wrong))
    return len(pages), count


def check_names(sources):
    """The files and presets that pages name exist."""
    with open("CMakePresets.json", encoding="utf-8") as file:
        presets = {preset["name"] for preset in json.load(file)["buildPresets"]}
    wrong = []
    for source in sources:
        with open(source, encoding="utf-8") as file:
            text = file.read()
        folders = "scripts|tests|examples|docs|benchmarks|simulator|tools|include|exports|platform|device|commands"
        wrong += [f"{source}: there is no {name}" for name in re.findall(rf"(?<![\w/.-])(?:\./)?((?:{folders})/[\w./-]*\w)", text)
                  if not os.path.exists(name)]
        wrong += [f"{source}: there is no preset {name}" for name in re.findall(r"--preset (\w+)", text)
                  if name not in presets]
    if wrong:
        sys.exit("\n".join(wrong))


def main(folder):
    missing = {f"docs/{name}" for name in os.listdir("docs") if name.endswith(".md")} - {s for s, _ in SOURCES}
    if missing:
        sys.exit(f"not in the menu: {', '.join(sorted(missing))}")
    check_names(source for source, _ in SOURCES)
    site = Site(folder)
    for source, title in SOURCES:
        site.from_markdown(source, title)
    header = reference.Reference()
    for page, title, body in [*header.pages(), *header.cpp_pages()]:
        site.write(page, title, body)
    shutil.copy("scripts/docs/style.css", folder)
    try:
        print(f"{header.count_documented()} exports, each documented with its parameters and its result")
    except reference.Undocumented as error:
        sys.exit(str(error))
    print("{} pages, {} links, each leads somewhere".format(*check_links(folder)))


if __name__ == "__main__":
    main(sys.argv[1])
