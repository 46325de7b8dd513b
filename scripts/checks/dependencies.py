"""Whether docs/dependencies.md names what is installed, contained and needed, in the versions that are there."""
import glob
import re
import subprocess
import sys

PAGE = "docs/dependencies.md"


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def installed():
    """What the scripts install: their lists, and what stands beside these in a call."""
    names = set()
    for words in re.findall(r"^\w+_packages=\(([^)]*)\)", read("scripts/setup.sh"), re.MULTILINE):
        names.update(words.split())
    for path in [*glob.glob("*.sh"), *glob.glob("scripts/**/*.sh", recursive=True)]:
        for call in re.findall(r"^\s*step \"packages\" install_missing (.*)", read(path).replace("\\\n", " "),
                               re.MULTILINE):
            names.update(word for word in call.split() if not word.startswith('"$'))
    return names


def contained():
    """Whose licences are in the packages."""
    return {name for path in glob.glob("packaging/*.list")
            for name in re.findall(r"third-party/(.+)\.txt$", read(path), re.MULTILINE)}


def named(section):
    """Packages and versions of a section's table; a row may have several of both."""
    found = {}
    for cells in re.findall(r"^\| (`.*?) \|(.*?)\|", section, re.MULTILINE):
        names, versions = re.findall(r"`([^`]+)`", cells[0]), cells[1].strip().split(", ")
        for index, name in enumerate(names):
            found[name] = versions[index] if len(versions) == len(names) else versions[0]
    return found


def numbers_of(version):
    """The first two."""
    return re.match(r"\d+(?:\.\d+)?", version).group()


def versions_here(packages):
    """Without epoch."""
    listed = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *packages], check=True,
                            capture_output=True, text=True).stdout
    return {name: re.sub(r"^\d+:", "", version) for name, version in map(str.split, listed.splitlines())}


def main():
    complaints = []
    sections = dict(re.findall(r"^## (.*?)\n(.*?)(?=^## |\Z)", read(PAGE), re.MULTILINE | re.DOTALL))
    inside, build, test = (named(sections[title]) for title in ("Inside", "To build", "To test"))
    for what, page, facts in (("inside", set(inside), contained()), ("installed", {*build, *test}, installed())):
        for name in sorted(page ^ facts):
            complaints.append(f"{name}: {'named' if name in page else 'not named'} as {what}")
    needed = {version for path in glob.glob("packaging/*.list")
              for version in re.findall(r"^Depends: .*libc6 \(>= ([\d.]+)\)", read(path), re.MULTILINE)}
    told = set(re.findall(r"`libc6` ([\d.]+) or newer", sections["To run"]))
    if not needed or needed != told:
        complaints.append(f"of libc6 the packages need {sorted(needed)}, and {sorted(told)} is named")
    if 'VERSION_ID="12"' in read("/etc/os-release"):
        here = versions_here(sorted({*inside, *build, *test}))
        for name, version in [*inside.items(), *build.items(), *test.items()]:
            # Debian's corrections count up behind the first two numbers.
            if version and numbers_of(version) != numbers_of(here[name]):
                complaints.append(f"{name}: {version} is named, {here[name]} is here")
            if not version and name not in inside:
                complaints.append(f"{name}: no version is named")
    print("\n".join(f"{PAGE}: {complaint}" for complaint in complaints), file=sys.stderr)
    sys.exit(bool(complaints))


if __name__ == "__main__":
    main()
