"""Compiles mutated files and links them with the unchanged rest of the native test programs.

The tests, the simulator and the flags are those of the native build; the library's own files are
compiled here, one by one, from a copy of their folders. Nothing is written outside the build
folder."""

import json
import os
import re
import shlex
import shutil
import subprocess
from collections import defaultdict
from pathlib import Path

PROGRAMS = ("zem_tests", "zem_linux_tests")
LIBRARY = "libZemUVCExtApi.a"
# Where the build has the library's objects, and which programs are linked with them.
_PARTS = {"ZemUVCExtApi.dir/": PROGRAMS, "zem_linux_platform.dir/": ("zem_linux_tests",),
          "zem_linux_kernel.dir/": ("zem_tests",)}
LIBRARY_FOLDERS = ("include", "platform", "device", "commands", "transfer", "romboot", "encoding", "media",
                   "exports")

# A cache for what stays the same from run to run, where the build has one too.
_LAUNCHER = os.environ.get("CMAKE_CXX_COMPILER_LAUNCHER", "").split()

# For the comparison of what two sources come to.
_PLAIN = ["-O1", "-fno-sanitize=all", "-frandom-seed=0"]


class BuildError(Exception):
    pass


class Build:
    def __init__(self, root, native, folder):
        self._native = native
        self._folder = folder
        self.tree = folder / "tree"
        self._copy_library(root)
        self._flags = {}  # of each .cpp file of the library
        self._units = {}  # what it is compiled into by the native build
        self._sources = {name: [] for name in PROGRAMS}
        self._read_sources(root)
        self._link_words = {name: self._read_link_command(name) for name in PROGRAMS}
        self._includers = defaultdict(set)  # of each file of the library, itself among them
        self._plain_objects = {}  # of unchanged sources, by what is compiled together

    def _copy_library(self, root):
        shutil.rmtree(self.tree, ignore_errors=True)
        for name in LIBRARY_FOLDERS:
            shutil.copytree(root / name, self.tree / name)

    def _read_sources(self, root):
        commands = json.loads((self._native / "compile_commands.json").read_text(encoding="utf-8"))
        for command in commands:
            words = shlex.split(command["command"])
            output = words[words.index("-o") + 1]
            programs = next((programs for part, programs in _PARTS.items() if part in output), ())
            path = Path(command["file"])
            for source in _sources_of(path) if programs else ():
                name = str(source.relative_to(root))
                self._flags[name] = self._own_flags(words, str(path), root)
                self._units[name] = output
                for program in programs:
                    self._sources[program].append(name)

    def _own_flags(self, words, source, root):
        """The compiler and its flags, for the copy of the sources: a compile command without its
        source, output, debug symbols and launcher."""
        compiler = next(index for index, word in enumerate(words) if re.search(r"\+\+(-\d+)?$", word))
        kept = [words[compiler]]
        rest = iter(words[compiler + 1 :])
        for word in rest:
            if word in ("-o", "-MF", "-MT", "-MQ"):
                next(rest)
            elif word not in ("-c", "-MD", "-MMD", source) and not re.fullmatch(r"-g\d?", word):
                kept.append(f"-I{self.tree}" if word == f"-I{root}" else word)
        return tuple(kept)

    def _read_link_command(self, program):
        commands = subprocess.run(["ninja", "-C", str(self._native), "-t", "commands", program],
                                  check=True, capture_output=True, text=True).stdout.splitlines()
        link = next(line for line in reversed(commands) if f"-o {program} " in line)
        words = [word for word in shlex.split(link) if word not in (":", "&&")]
        if LIBRARY not in words:
            raise BuildError(f"{program} is not linked with {LIBRARY}")
        output = words.index("-o")
        del words[output : output + 2]
        return [self._own_copy(word) for word in words
                if word not in (LIBRARY, "-g", "-g1") and not any(part in word for part in _PARTS)]

    def _own_copy(self, word):
        """Of an object or archive of the native build, a copy without debug symbols, which nobody
        builds anew during the run and which links faster."""
        original = self._native / word
        if Path(word).is_absolute() or not original.is_file():
            return word
        copy = self._folder / "native" / word
        copy.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["objcopy", "--strip-debug", str(original), str(copy)], check=True)
        return str(copy)

    # ---- the unchanged library ----

    def compile_unchanged(self, pool):
        """All files of the library, and who includes what."""
        def compile_one(source):
            output = self._base_object(source)
            output.parent.mkdir(parents=True, exist_ok=True)
            depfile = output.with_suffix(".d")
            dependencies = ["-MMD", "-MF", str(depfile)]
            if not self._compile(source, output, dependencies, self.tree, launcher=_LAUNCHER):
                raise BuildError(f"{source} does not compile")
            return source, _read_depfile(depfile, self.tree)

        for source, files in pool.map(compile_one, sorted(self._flags)):
            for file in files:
                self._includers[file].add(source)

    def _base_object(self, source):
        return self._folder / "objects" / f"{source}.o"

    def programs_with(self, path):
        """The programs that have a part made of `path`."""
        return [name for name in PROGRAMS if self._includers[path].intersection(self._sources[name])]

    # ---- a mutant ----

    def object_groups(self, path):
        """What must be compiled when `path` has changed: sources that the native build compiles
        together as well."""
        groups = defaultdict(list)
        for source in sorted(self._includers[path]):
            groups[self._units[source]].append(source)
        return [tuple(group) for group in groups.values()]

    def compile_changed(self, path, text, folder):
        """The objects of all that depends on `path` with `text` in it, each with its sources; None if
        it does not compile."""
        overlay = self._lay(path, text, folder)
        objects = []
        for number, group in enumerate(self.object_groups(path)):
            output = folder / f"changed{number}.o"
            if not self._compile_group(group, output, [], overlay):
                return None
            objects.append((group, output))
        return objects

    def same_code(self, path, original, text, folder):
        """Whether the optimised code is the same, byte by byte, with `text` in `path`."""
        for group in self.object_groups(path):
            key = (path, group)
            if key not in self._plain_objects:
                self._plain_objects[key] = self._plain_object(group, path, original, folder)
            if self._plain_object(group, path, text, folder) != self._plain_objects[key]:
                return False
        return True

    def _plain_object(self, group, path, text, folder):
        overlay = self._lay(path, text, folder)
        output = folder / "plain.o"
        if not self._compile_group(group, output, _PLAIN, overlay):
            return None
        return output.read_bytes()

    @staticmethod
    def _lay(path, text, folder):
        overlay = folder / "overlay"
        shutil.rmtree(overlay, ignore_errors=True)
        (overlay / path).parent.mkdir(parents=True)
        (overlay / path).write_text(text, encoding="utf-8")
        return overlay

    def _compile_group(self, group, output, flags, overlay):
        together = overlay / "together.cpp"
        together.write_text("".join(f'#include "{source}"\n' for source in group), encoding="utf-8")
        return self._compile(group[0], output, flags, overlay, "together.cpp")

    def _compile(self, source, output, flags, overlay, input_name=None, launcher=()):
        compiler, *own = self._flags[source]
        command = [*launcher, compiler, f"-I{overlay}", *own, "-g0", *flags, "-c", "-o", str(output),
                   input_name or source]
        return subprocess.run(command, cwd=overlay, capture_output=True, check=False).returncode == 0

    def link(self, name, program, path=None, objects=()):
        """Links the test program `name` with `objects` in the place of what depends on `path`; an
        object is given with its sources. They come first: of an inline function the linker keeps the
        first copy."""
        replaced = self._includers[path] if path is not None else set()
        changed = [str(output) for group, output in objects if group[0] in self._sources[name]]
        unchanged = [str(self._base_object(source)) for source in self._sources[name]
                     if source not in replaced]
        compiler, *others = self._link_words[name]
        words = [compiler, "-fuse-ld=lld", "-o", str(program), *changed, *unchanged, *others]
        result = subprocess.run(words, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise BuildError(f"{name} does not link:\n{result.stderr}")


def _sources_of(path):
    """The sources that a source of the build stands for: itself, or those a unity source includes."""
    if not path.name.startswith("unity_"):
        return [path]
    return [Path(name) for name in re.findall(r'#include "(.+)"', path.read_text(encoding="utf-8"))]


def _read_depfile(depfile, tree):
    """The files of the library that a source is made of, relative to the tree."""
    text = depfile.read_text(encoding="utf-8").replace("\\\n", " ")
    files = []
    for name in text.partition(":")[2].split():
        path = (tree / name).resolve()
        if path.is_relative_to(tree):
            files.append(str(path.relative_to(tree)))
    return files
