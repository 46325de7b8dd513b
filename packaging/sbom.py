"""What a package's programs and libraries are made of, as SPDX 2.3: each of them with its check sum, what is
linked into it, whose headers are compiled in, which libraries it loads.

    sbom.py BUILD STAGE FOLDER NAME VERSION [STAGE...]

writes FOLDER/NAME.spdx.json in STAGE, and the licences of what is contained beside it, in third-party. Further
stages are packages that this one needs. All of it is read from what the linker and the compiler say that they
took; a file of which nobody knows where it comes from ends the script.
"""
import datetime
import functools
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import uuid

AUTHORS = "Organization: the ZemUVCExtApi authors"

# By Debian's source packages. One that is new here wants somebody to read its licence.
LICENCES = {
    "cli11": "BSD-3-Clause",
    "gcc-12": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "gcc-mingw-w64": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "glibc": "LGPL-2.1-or-later",
    "linux": "GPL-2.0-only WITH Linux-syscall-note",
    "mingw-w64": "ZPL-2.1 AND LicenseRef-mingw-w64",
    "nlohmann-json3": "MIT",
}

# Windows 10 and newer bring these.
WINDOWS = re.compile(r"(advapi32|kernel32|ole32|oleaut32|shell32|shlwapi|user32|winmm)\.dll|api-ms-win-crt-.*\.dll",
                     re.IGNORECASE)


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


@functools.cache
def binaries(stage):
    """The programs, libraries and import libraries in a folder, by their paths there; links are none."""
    found = []
    for folder, _, names in os.walk(stage):
        for name in names:
            path = os.path.join(folder, name)
            if os.path.islink(path):
                continue
            with open(path, "rb") as file:
                if file.read(8).startswith((b"\x7fELF", b"MZ", b"!<arch>\n")):
                    found.append(os.path.relpath(path, stage))
    return sorted(found)


def needed(path):
    """The libraries that the loader wants for it, by name."""
    listed = output("llvm-readobj", "--needed-libs", path)
    return re.search(r"NeededLibraries \[\n(.*?)\]", listed, re.DOTALL)[1].split()


class Build:
    """What a build folder tells of how its binaries were made."""

    def __init__(self, folder):
        self.folder = os.path.realpath(folder)
        self.project = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
        self.headers = {}
        for block in output("ninja", "-C", folder, "-t", "deps").split("\n\n"):
            if match := re.match(r"(?:ninja: .*\n)?(.*): #deps \d+, deps mtime \d+ \(VALID\)", block):
                self.headers[match[1]] = block.split("\n    ")[1:]

    @functools.cache
    def path(self, name):
        return os.path.realpath(os.path.join(self.folder, name))

    def is_ours(self, path):
        return path.startswith(self.project + os.sep)

    def compiled_from(self, unit):
        """The files that a unit of ours was compiled from."""
        if unit not in self.headers:
            sys.exit(f"{unit}: not known what it was compiled from")
        return map(self.path, self.headers[unit])

    def unit_of(self, archive, member):
        """The unit of ours that is a member of an archive of ours."""
        target = f"/{os.path.basename(archive).removeprefix('lib').removesuffix('.a')}.dir/"
        units = [unit for unit in self.headers if target in f"/{unit}" and os.path.basename(unit) == member]
        if len(units) != 1:
            sys.exit(f"{archive}({member}): {len(units)} units may be it")
        return units[0]

    @functools.cache
    def ingredients(self, binary):
        """Of others: the files linked into a binary, the files compiled into it, the libraries it was linked with."""
        with open(os.path.join(self.folder, f"{binary}.map"), encoding="utf-8", errors="replace") as file:
            text = file.read()
        members = []
        if text.startswith("Archive member included"):
            members = re.findall(r"^(\S+)\(([^)\s]+)\)", text.split("\n\n")[1], re.MULTILINE)
        linked, units, shared = set(), set(), set()
        for name in re.findall(r"^LOAD (.*)", text, re.MULTILINE):
            path = self.path(name)
            if re.search(r"\.so(\.[\d.]+)?$", name):
                shared.add(path)
            elif name.endswith((".o", ".obj", ".res")):
                (units if self.is_ours(path) else linked).add(name if self.is_ours(path) else path)
            elif not name.endswith((".a", ".def")) and name != "dll stuff":
                sys.exit(f"{binary}: the linker took {name}, of which nobody knows what it is")
        for name, member in members:
            path = self.path(name)
            if not self.is_ours(path):
                linked.add(path)
            elif not name.endswith(".dll.a"):
                units.add(self.unit_of(name, member))
        if not units:
            sys.exit(f"{binary}: its map names nothing of ours; it is no map of the GNU linker")
        compiled = {path for unit in units for path in self.compiled_from(unit) if not self.is_ours(path)}
        return frozenset(linked), frozenset(compiled), frozenset(shared)


@functools.cache
def debian_packages(paths):
    """Which of Debian's packages each of these files is of."""
    # Debian 12 has the files of some below /lib and finds them below /usr/lib too.
    asked = {name for path in paths for name in (path, path.removeprefix("/usr"))}
    listed = subprocess.run(["dpkg-query", "-S", *sorted(asked)], capture_output=True, text=True, check=False).stdout
    owners = {}
    for line in listed.splitlines():
        package, name = line.split(": ", 1)
        owners[name] = package.split(",")[0].split(":")[0]
    found = {path: owners.get(path) or owners.get(path.removeprefix("/usr")) for path in paths}
    if strangers := sorted(path for path in paths if not found[path]):
        sys.exit("no package of Debian has " + ", ".join(strangers))
    return found


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.]+", "-", name)


class Bill:
    def __init__(self, name, version):
        created = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
        self.name = name
        self.version = version
        self.upstream_version = version.split("-")[0]
        self.packages = {}
        self.relations = set()
        self.contained = set()
        self.created = created.strftime("%Y-%m-%dT%H:%M:%SZ")
        root = self.package("Package", name, version, supplier=AUTHORS, licenseDeclared="MIT",
                            primaryPackagePurpose="ARCHIVE" if name == "ZemUVCExtApi" else "INSTALL")
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", root)
        self.root = root

    def package(self, kind, name, version=None, **fields):
        key = identifier(kind, fields.get("packageFileName", name))
        self.packages[key] = {
            "SPDXID": key, "name": name, "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseDeclared": "NOASSERTION", "supplier": "NOASSERTION",
            **({"versionInfo": version} if version else {}), **fields}
        return key

    def relate(self, one, how, other, comment=None):
        self.relations.add((one, how, other, comment or ""))

    @functools.cache
    def debian_package(self, name):
        version, source, source_version, architecture = output(
            "dpkg-query", "-W", "-f", "${Version} ${source:Package} ${source:Version} ${Architecture}", name).split()
        if source not in LICENCES:
            sys.exit(f"{name}: say in packaging/sbom.py what the licence of {source} is")
        return self.package(
            "Debian", name, version, supplier="Organization: Debian", licenseDeclared=LICENCES[source],
            sourceInfo=f"Debian's source package {source} {source_version}",
            externalRefs=[{
                "referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                "referenceLocator":
                    f"pkg:deb/debian/{name}@{version}".replace("+", "%2B") + f"?arch={architecture}"}])

    def contain(self, binary, paths, how, comment):
        by_package = {}
        for path, package in debian_packages(paths).items():
            by_package.setdefault(package, set()).add(path)
        for package, files in by_package.items():
            self.contained.add(package)
            self.relate(binary, how, self.debian_package(package), comment(files))

    def add_binary(self, build, stage, path, beside):
        name = os.path.basename(path)
        with open(os.path.join(stage, path), "rb") as file:
            content = file.read()
        is_program = "/bin/" in f"/{path}" and not name.endswith(".dll")
        binary = self.package("Binary", name, self.upstream_version, packageFileName=path, supplier=AUTHORS,
                              licenseDeclared="MIT", primaryPackagePurpose="APPLICATION" if is_program else "LIBRARY",
                              checksums=[{"algorithm": "SHA256", "checksumValue": hashlib.sha256(content).hexdigest()}])
        self.relate(self.root, "CONTAINS", binary)
        if content.startswith(b"!<arch>"):
            return  # An import library: names of a DLL.
        linked, compiled, shared = build.ingredients(name)
        self.contain(binary, linked, "STATIC_LINK", lambda files: "linked: " + ", ".join(
            sorted({os.path.basename(file) for file in files})))
        self.contain(binary, compiled, "CONTAINS", lambda files: "compiled in: headers")
        for library in needed(os.path.join(stage, path)):
            self.relate(binary, "DYNAMIC_LINK", self.loaded(library, stage, shared, beside), f"loads: {library}")

    def loaded(self, library, stage, shared, beside):
        """The package that brings a library which the loader wants."""
        for other in (stage, *beside):
            for path in binaries(other):
                if os.path.basename(path) == library or os.path.basename(path).startswith(f"{library}."):
                    if other == stage:
                        return identifier("Binary", path)
                    return self.package("Package", os.path.basename(other), self.version, supplier=AUTHORS,
                                        licenseDeclared="MIT", comment=f"has {library}")
        if WINDOWS.fullmatch(library):
            return self.package("Windows", library, comment="Part of Windows 10 and newer.")
        for path in shared:
            if os.path.basename(path) == library:
                return self.debian_package(debian_packages(frozenset([path]))[path])
        sys.exit(f"{library} is needed, and nobody knows where it comes from")

    def document(self):
        document = {
            "spdxVersion": "SPDX-2.3",
            "dataLicense": "CC0-1.0",
            "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"{self.name}-{self.version}",
            "creationInfo": {"created": self.created, "creators": [AUTHORS, f"Tool: sbom.py-{self.upstream_version}"]},
            "packages": [self.packages[key] for key in sorted(self.packages)],
            "relationships": [{"spdxElementId": one, "relationshipType": how, "relatedSpdxElement": other,
                               **({"comment": comment} if comment else {})}
                              for one, how, other, comment in sorted(self.relations)],
        }
        if any("LicenseRef-mingw-w64" in package["licenseDeclared"] for package in document["packages"]):
            with open("/usr/share/doc/mingw-w64-common/copyright", encoding="utf-8") as file:
                document["hasExtractedLicensingInfos"] = [
                    {"licenseId": "LicenseRef-mingw-w64", "name": "Further licences of MinGW-w64",
                     "extractedText": file.read()}]
        # The same content has the same name.
        content = json.dumps(document, sort_keys=True)
        document["documentNamespace"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, content)}"
        return document


def main(build, stage, folder, name, version, *beside):
    bill = Bill(name, version)
    made = Build(build)
    for path in binaries(stage):
        bill.add_binary(made, stage, path, beside)
    target = os.path.join(stage, folder)
    licences = os.path.join(target, "third-party")
    os.makedirs(licences)
    for package in sorted(bill.contained):
        shutil.copyfile(f"/usr/share/doc/{package}/copyright", os.path.join(licences, f"{package}.txt"))
    with open(os.path.join(target, f"{name}.spdx.json"), "w", encoding="utf-8") as file:
        json.dump(bill.document(), file, indent=1, ensure_ascii=False)
        file.write("\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
