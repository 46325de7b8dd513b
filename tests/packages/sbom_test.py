"""What packaging/sbom.py makes of the linker's maps and the compiler's lists, and what it does not accept."""
import contextlib
import io
import os
import sys
import tempfile
import unittest

ROOT = os.path.realpath(os.path.join(os.path.dirname(__file__), "../.."))
sys.path.insert(0, os.path.join(ROOT, "packaging"))
import sbom  # noqa: E402

os.environ["SOURCE_DATE_EPOCH"] = "1700000000"
C_LIBRARY = "/usr/lib/x86_64-linux-gnu"


class Build(sbom.Build):
    """A build folder in which one program was linked."""

    def __init__(self, folder, linked, headers):
        self.folder = self.project = os.path.realpath(folder)
        self.headers = headers
        with open(os.path.join(folder, "program.map"), "w", encoding="utf-8") as file:
            file.write(linked)


class Ingredients(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def of(self, linked, headers):
        return Build(self.folder, linked, headers).ingredients("program")

    def refusal(self, function, *arguments):
        with self.assertRaises(SystemExit) as end:
            function(*arguments)
        return end.exception.code

    def test_objects_members_and_headers_are_told_apart(self):
        linked, compiled, shared = self.of(
            "Archive member included to satisfy reference by file (symbol)\n\n"
            f"{C_LIBRARY}/libc_nonshared.a(atexit.oS)\n                              main.o (atexit)\n"
            "libours.a(unit.cxx.o)         main.o (Ours())\n\n"
            "Memory Configuration\n\n"
            f"LOAD {C_LIBRARY}/crt1.o\nLOAD main.o\nLOAD libours.a\nLOAD {C_LIBRARY}/libunused.a\n"
            f"LOAD /lib/x86_64-linux-gnu/libc.so.6\nLOAD {C_LIBRARY}/libc_nonshared.a\n",
            {"main.o": ["main.cpp", "/usr/include/stdio.h"], "CMakeFiles/ours.dir/unit.cxx.o": ["/usr/include/errno.h"],
             "CMakeFiles/other.dir/unit.cxx.o": ["/usr/include/fcntl.h"], "unused.o": ["/usr/include/math.h"]})
        self.assertEqual(linked, {f"{C_LIBRARY}/crt1.o", f"{C_LIBRARY}/libc_nonshared.a"})
        self.assertEqual(compiled, {"/usr/include/stdio.h", "/usr/include/errno.h"})
        self.assertEqual(shared, {os.path.realpath("/lib/x86_64-linux-gnu/libc.so.6")})

    def test_what_the_linker_took_is_known(self):
        self.assertIn("the linker took blob.bin", self.refusal(self.of, "LOAD blob.bin\n", {}))

    def test_a_map_of_another_linker_is_refused(self):
        self.assertIn("no map of the GNU linker", self.refusal(self.of, "VMA LMA Size Align Out In Symbol\n", {}))

    def test_what_a_unit_was_compiled_from_is_known(self):
        self.assertEqual(self.refusal(self.of, "LOAD main.o\n", {}), "main.o: not known what it was compiled from")

    def test_a_member_is_a_unit(self):
        self.assertIn("0 units may be it", self.refusal(
            self.of, "Archive member included because\n\nlibours.a(unit.o)   main.o (f)\n\nLOAD libours.a\n",
            {"CMakeFiles/theirs.dir/unit.o": []}))

    def test_a_file_that_is_of_no_package_is_refused(self):
        with contextlib.redirect_stderr(io.StringIO()):
            files = frozenset([f"{C_LIBRARY}/crt1.o", "/usr/local/lib/libstrange.a"])
            message = self.refusal(sbom.debian_packages, files)
        self.assertEqual(message, "no package of Debian has /usr/local/lib/libstrange.a")

    def test_files_are_known_by_their_packages(self):
        self.assertEqual(
            sbom.debian_packages(frozenset([f"{C_LIBRARY}/crt1.o", "/usr/lib/x86_64-linux-gnu/libc.so.6"])),
            {f"{C_LIBRARY}/crt1.o": "libc6-dev", "/usr/lib/x86_64-linux-gnu/libc.so.6": "libc6"})

    def test_a_package_without_a_licence_is_refused(self):
        self.assertIn("what the licence of dpkg is", self.refusal(sbom.Bill("program", "1.0.0").debian_package, "dpkg"))

    def test_a_library_that_nobody_brings_is_refused(self):
        for library in ("libwinpthread-1.dll", "libstrange.so.1"):
            message = self.refusal(sbom.Bill("program", "1.0.0").loaded, library, self.folder, set(), ())
            self.assertEqual(message, f"{library} is needed, and nobody knows where it comes from")


if __name__ == "__main__":
    unittest.main()
