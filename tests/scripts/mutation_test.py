"""Tests of what scripts/mutation.sh makes its mutants with. Run as a program."""

import json
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path[:0] = [str(ROOT / "scripts" / "mutation"), str(ROOT / "scripts")]

import equivalents  # noqa: E402
import run  # noqa: E402
from families import Families  # noqa: E402
from mutants import Sources, draw_order, enumerate_mutants, number_groups, text_mutations  # noqa: E402
from rooms import ROOMS, files_of, read_rows, with_rows  # noqa: E402
from testing import Tests  # noqa: E402
from tokens import tokenize  # noqa: E402


def sites_of(source, path="room/file.cpp", headers=None):
    families = Families()
    for header, text in (headers or {}).items():
        families.add_file(header, tokenize(text))
    tokens = tokenize(source)
    declared = families.add_file(path, tokens)
    return enumerate_mutants(path, source, tokens, families, declared)


def mutants_of(source, **others):
    return [mutant for site in sites_of(source, **others) for group in site for mutant in group]


def changes_of(source, **others):
    return {mutant.apply(source) for mutant in mutants_of(source, **others)}


class TokenTest(unittest.TestCase):
    def texts(self, source):
        return [token.text for token in tokenize(source)]

    def test_comments_and_preprocessor_lines_are_passed_over(self):
        self.assertEqual(self.texts("a // 1\n/* 2\n3 */ b\n#define X 4 \\\n  5\n  #if 6\nc"),
                         ["a", "b", "c"])

    def test_literals_are_whole(self):
        self.assertEqual(self.texts(r'''L"a \" // b" u8'\'' 0xFF'00u 1.5F R"(")" x'''),
                         [r'L"a \" // b"', r"u8'\''", "0xFF'00u", "1.5F", "x"])

    def test_the_longest_mark_wins(self):
        self.assertEqual(self.texts("a<<=b>>c<=d->e::f...++g"),
                         ["a", "<<=", "b", ">>", "c", "<=", "d", "->", "e", "::", "f", "...", "++", "g"])

    def test_static_assertions_are_passed_over(self):
        self.assertEqual(self.texts('a; static_assert(sizeof(B) == 32, "32"); c;'),
                         ["a", ";", ";", "c", ";"])


class MutantTest(unittest.TestCase):
    def test_numbers(self):
        self.assertEqual(number_groups("5")[:3], [["6"], ["4"], ["0"]])
        self.assertEqual(number_groups("5")[3], ["7", "1", "13", "21", "37", "69", "133"])
        self.assertEqual(number_groups("0x0Fu")[:3], [["0x10u"], ["0x0Eu"], ["0x00u"]])
        self.assertEqual(number_groups("0")[:3], [["1"], ["-1"], []])
        self.assertEqual(len(number_groups("0x8000")[3]), 14)
        self.assertEqual(number_groups("1.772"), [["1.773"], ["2.772"]])
        self.assertEqual(number_groups("128.0F"), [["128.1F"], ["129.0F"]])

    def test_texts(self):
        self.assertEqual(text_mutations('L"a9 \\n%z"'),
                         ['L"b9 \\n%z"', 'L"a0 \\n%z"', 'L"a9_\\n%z"', 'L"a9 \\n_z"', 'L"a9 \\n%a"'])
        self.assertEqual(text_mutations("L'\\0'"), ["L'\\1'"])
        self.assertEqual(text_mutations("'\\n'"), [])
        self.assertEqual(text_mutations('""'), [])

    def test_operators_but_no_template_brackets_pointers_or_references(self):
        self.assertEqual(changes_of("A<B> c = d < e;"), {"A<B> c = d <= e;", "A<B> c = d >= e;"})
        self.assertEqual(changes_of("A* b(C& d, E&& f);"), set())
        self.assertEqual(changes_of("return a & b;"), {"return a | b;"})
        self.assertEqual(changes_of("return -a - ~b;"),
                         {"return a - ~b;", "return -a + ~b;", "return -a - b;"})
        self.assertEqual(changes_of("template <class T, int a = 1> void f();"), set())

    def test_words(self):
        self.assertEqual(changes_of("{ x = true; }"), {"{ x = false; }", "{ ; }"})
        self.assertEqual(changes_of("return FAILED(x);"), {"return SUCCEEDED(x);"})
        self.assertEqual(changes_of("return std::min(a, b);"), {"return std::max(a, b);"})
        self.assertEqual(changes_of("for (;;) { break; }"), {"for (;;) { continue; }", "for (;;) { ; }"})

    def test_conditions(self):
        self.assertEqual(changes_of("if (a.b(c)) {}"), {"if (!a.b(c)) {}"})
        self.assertEqual(changes_of("if (!a) {}"), {"if (a) {}"})
        self.assertEqual(changes_of("return a && b;"),
                         {"return !a && b;", "return a && !b;", "return a || b;"})
        self.assertEqual(changes_of("return a ? b : c;"), {"return !a ? b : c;"})
        self.assertEqual(changes_of("f(a, b)"), set())

    def test_statements(self):
        self.assertEqual(changes_of("{ a::b<C>(d)->e(f); }"), {"{ ; }"})
        self.assertEqual(changes_of("{ *a = b; }"), {"{ ; }"})
        self.assertEqual(changes_of("{ ++a; }"), {"{ --a; }", "{ ; }"})
        self.assertEqual(changes_of("{ A b(c); const D e = f; return g(h); }"), set())

    def test_pure_virtual_functions_stay(self):
        self.assertEqual(changes_of("virtual int a() = 0;"), set())

    def test_relatives_of_a_constant(self):
        header = ("namespace selector {\ninline constexpr int kA = 1;\ninline constexpr int kB = 2;\n"
                  "inline constexpr long kC = 3;\n}\nenum class Kind : int { kD, kE = 5 };\n")
        headers = {"room/header.h": header}
        self.assertEqual(changes_of("return x(selector::kA);", headers=headers),
                         {"return x(selector::kB);"})
        self.assertEqual(changes_of("return Kind::kD;", headers=headers), {"return Kind::kE;"})
        self.assertEqual(changes_of("return other::kA;", headers=headers), set())
        self.assertEqual(changes_of("return kRefused;"),
                         {f"return {name};" for name in
                          ("S_OK", "kDeviceRefused", "kBufferTooSmall", "kNoDevice", "kFail")})

    def test_a_declared_name_stays(self):
        self.assertEqual(changes_of("constexpr A kA = {};\nconstexpr A kB = {};\n"), set())

    def test_what_is_told_of_a_mutant(self):
        mutant = mutants_of("\n  if (a ==\n      b) {\n")[0]
        self.assertEqual((mutant.line, mutant.before, mutant.after),
                         (2, "if (a ==", "if (a !="))
        removed = mutants_of("{\n  a(b,\n    c);\n}")[0]
        self.assertEqual((removed.line, removed.before, removed.after), (2, "a(b, c);", ";"))

    def test_a_mutant_changes_one_place(self):
        source = (ROOT / "transfer" / "data_channel.cpp").read_text(encoding="utf-8")
        for mutant in mutants_of(source):
            changed = mutant.apply(source)
            self.assertNotEqual(changed, source)
            self.assertEqual(changed[: mutant.start], source[: mutant.start])
            self.assertTrue(changed.endswith(source[mutant.end :]))


class DrawTest(unittest.TestCase):
    SOURCE = "".join(f"int f{number}() {{ return {number} < g({number}); }}\n" for number in range(40))

    def test_a_seed_draws_the_same_each_time(self):
        first = draw_order(sites_of(self.SOURCE), "1")
        self.assertEqual(first, draw_order(sites_of(self.SOURCE), "1"))
        self.assertNotEqual(first[:20], draw_order(sites_of(self.SOURCE), "2")[:20])
        # Neither a run's nor a version's: these stay as they are.
        self.assertEqual([mutant.after for mutant in first[:3]],
                         ["int f15() { return 15 <= g(15); }", "int f19() { return 19 < g(17); }",
                          "int f19() { return 20 < g(19); }"])

    def test_all_are_drawn_and_each_site_once_before_any_twice(self):
        sites = sites_of(self.SOURCE)
        drawn = draw_order(sites, "1")
        self.assertEqual(sorted(map(repr, drawn)), sorted(map(repr, mutants_of(self.SOURCE))))
        self.assertEqual(len({(mutant.start, mutant.end) for mutant in drawn[: len(sites)]}), len(sites))

    def test_an_edit_elsewhere_changes_nothing(self):
        def told(source):
            return [(mutant.before, mutant.after) for mutant in draw_order(sites_of(source), "1")]

        self.assertEqual(told("// A remark.\nint x();\n" + self.SOURCE), told(self.SOURCE))


class FilterTest(unittest.TestCase):
    SUITES = {"device": ("OpenTest", {"quick": "0.001s", "slow": "2.5s"}),
              "transfer": ("SendTest", {"quick": "0s", "slow": "0.3s"})}

    def filters(self, rooms):
        suites = [{"name": suite, "testsuite": [
            {"name": name, "time": time, "file": f"/x/tests/{room}/a_test.cpp"}
            for name, time in tests.items()]} for room, (suite, tests) in self.SUITES.items()]
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder) / "report.json"
            report.write_text(json.dumps({"testsuites": suites}), encoding="utf-8")
            return Tests(report).filters(rooms)

    def test_quick_tests_of_the_room_come_first_and_slow_ones_of_others_last(self):
        self.assertEqual(self.filters(["device"]),
                         ["OpenTest.*-OpenTest.slow", "*-OpenTest.*:OpenTest.slow:SendTest.slow",
                          "OpenTest.slow", "SendTest.slow"])

    def test_a_room_without_tests_has_those_of_all(self):
        self.assertEqual(self.filters(["media"]),
                         ["*-OpenTest.slow:SendTest.slow", "OpenTest.slow:SendTest.slow"])


class PageTest(unittest.TestCase):
    def rows(self, page):
        return read_rows((ROOT / "docs" / page).read_text(encoding="utf-8"))

    def test_the_table_has_every_room_and_none_below_the_goal(self):
        rows = self.rows("mutation.md")
        self.assertEqual(list(rows), list(ROOMS))
        for room, (mutants, killed, equivalent, survived, share) in rows.items():
            self.assertEqual(int(mutants), int(killed) + int(equivalent) + int(survived), room)
            self.assertEqual(share, f"{100 * int(killed) / (int(killed) + int(survived)):.0f} %", room)
            self.assertGreaterEqual(int(share.removesuffix(" %")), run.GOAL, room)

    def test_the_page_on_coverage_has_the_same_shares(self):
        self.assertEqual({room: cells[-1] for room, cells in self.rows("coverage.md").items()},
                         {room: cells[-1] for room, cells in self.rows("mutation.md").items()})

    def test_rows_are_put_into_the_table_in_the_rooms_order(self):
        page = "a\n\n| Room | N |\n|---|---:|\n| media | 1 |\n\nb\n"
        self.assertEqual(with_rows(page, {"media": ["2"], "device": ["3"]}),
                         "a\n\n| Room | N |\n|---|---:|\n| device | 3 |\n| media | 2 |\n\nb\n")


class EquivalentsTest(unittest.TestCase):
    LIST = "# remark\n\na/b.cpp: int c = 0; => int c = {number};\n    Set before\n    it is read.\n"

    def test_an_entry_matches_by_content(self):
        (entry,) = equivalents.parse(self.LIST)
        self.assertEqual(entry.reason, "Set before it is read.")
        mutants = mutants_of("\n\n  int c = 0;\n", path="a/b.cpp")
        self.assertTrue(mutants)
        self.assertTrue(all(entry.matches(mutant) for mutant in mutants))
        self.assertFalse(any(entry.matches(mutant) for mutant in
                             mutants_of("int c = 0;", path="a/c.cpp")))
        self.assertFalse(any(entry.matches(mutant) for mutant in
                             mutants_of("int c = 0; // x", path="a/b.cpp")))

    def test_an_entry_may_stand_for_any_mutant_of_a_line(self):
        (entry,) = equivalents.parse("a/b.cpp: Fetch(c * 2); => {anything}\n  Why.\n")
        mutants = mutants_of("{\n  Fetch(c * 2);\n}", path="a/b.cpp")
        self.assertGreater(len(mutants), 5)
        self.assertTrue(all(entry.matches(mutant) for mutant in mutants))
        self.assertFalse(any(entry.matches(mutant) for mutant in
                             mutants_of("{\n  Fetch(c * 3);\n}", path="a/b.cpp")))

    def test_an_entry_that_matches_nothing_is_stale(self):
        entries = equivalents.parse(self.LIST)
        self.assertEqual(equivalents.stale(entries, mutants_of("int c = 0;", path="a/b.cpp")), [])
        self.assertEqual(equivalents.stale(entries, mutants_of("int d = 0;", path="a/b.cpp")), entries)

    def test_entries_may_share_a_reason(self):
        entries = equivalents.parse("a: b => c\na: d => e\n  Why.\nf: g => h\n  Else.\n")
        self.assertEqual([(str(entry), entry.reason) for entry in entries],
                         [("a: b => c", "Why."), ("a: d => e", "Why."), ("f: g => h", "Else.")])

    def test_each_entry_of_the_list_is_a_mutant_that_there_is(self):
        known = equivalents.parse(run.KNOWN.read_text(encoding="utf-8"))
        self.assertTrue(known)
        sources = Sources(ROOT, [path for room in ROOMS for path in files_of(room, ROOT)])
        self.assertEqual(run.stale_entries(known, run.sites_of_rooms(sources, ROOT)), [])

    def test_an_entry_needs_a_reason_and_a_change(self):
        for text in ("a/b.cpp: c => d\n", "a/b.cpp: c\n    Why.\n"):
            with self.assertRaises(ValueError):
                equivalents.parse(text)


if __name__ == "__main__":
    unittest.main()
