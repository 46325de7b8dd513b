"""Builds mutants of the library's rooms and tells which of them the tests notice: see
docs/mutation.md."""

import argparse
import fcntl
import os
import queue
import re
import sys
from concurrent.futures import FIRST_COMPLETED, ThreadPoolExecutor, wait
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

import equivalents
from build import PROGRAMS, Build
from mutants import Sources, draw_order
from rooms import ROOMS, files_of, read_rows, with_rows
from testing import Tests, run_tests

ROOT = Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build" / "mutation"
PAGE = ROOT / "docs" / "mutation.md"
KNOWN = Path(__file__).with_name("equivalents.txt")

GOAL = 97  # of 100 that are not equivalent


def sites_of_rooms(sources, tree):
    return {room: [site for path in files_of(room, tree) for site in sources.sites(path)]
            for room in ROOMS}


def stale_entries(known, sites):
    """Entries of the list that match none of the mutants there are."""
    mutants = [mutant for room in sites.values() for site in room for group in site
               for mutant in group]
    return equivalents.stale(known, mutants)


class Verdict:
    def __init__(self, mutant, kind, detail=""):
        self.mutant = mutant
        self.kind = kind  # killed, survived, equivalent or broken, which does not compile
        self.detail = detail


class Runner:
    def __init__(self, workers):
        self._workers = workers
        self._folders = queue.Queue()
        for number in range(workers):
            folder = FOLDER / f"worker{number}"
            folder.mkdir(parents=True, exist_ok=True)
            self._folders.put(folder)
        self._pool = ThreadPoolExecutor(workers)
        self._build = Build(ROOT, ROOT / "build" / "native", FOLDER)
        self.tree = self._build.tree
        self.sources = Sources(self.tree, [path for room in ROOMS
                                           for path in files_of(room, self.tree)])
        self._tests = {}  # of each program
        self._limits = {}
        self._verdicts = open(FOLDER / "verdicts.txt", "w", encoding="utf-8")

    def prepare(self):
        """Builds the unchanged programs and sees their tests pass."""
        self._build.compile_unchanged(self._pool)
        for name in PROGRAMS:
            program = FOLDER / "unchanged"
            self._build.link(name, program)
            report = FOLDER / "tests.json"
            run = run_tests(program, "*", FOLDER, 3600, report)
            if run.failure:
                sys.exit(f"the tests fail without any mutant: {run.failure}")
            self._tests[name] = Tests(report)
            # Twice what all the tests take, and a little for a start on a busy machine.
            self._limits[name] = int(2 * run.seconds) + 10
            print(f"{name} pass in {run.seconds:.1f} s of processor time", flush=True)

    def judge_all(self, mutants, count, known):
        """The verdicts on the first `count` mutants that compile. Takes the mutants in their order,
        whichever worker is done first."""
        verdicts = {}
        running = {}
        issued = iter(enumerate(mutants))

        def compiled():
            return sum(verdict.kind != "broken" for verdict in verdicts.values())

        while True:
            while len(running) < self._workers and compiled() + len(running) < count:
                number, mutant = next(issued, (None, None))
                if mutant is None:
                    break
                running[self._pool.submit(self._judge, mutant, known)] = number
            if not running:
                return [verdicts[number] for number in sorted(verdicts)
                        if verdicts[number].kind != "broken"]
            for future in wait(running, return_when=FIRST_COMPLETED).done:
                verdict = future.result()
                verdicts[running.pop(future)] = verdict
                print(f"{verdict.kind:11} {describe(verdict.mutant)}  [{verdict.detail}]",
                      file=self._verdicts, flush=True)
                if verdict.kind == "survived":
                    print(f"survived    {describe(verdict.mutant)}", flush=True)

    def _judge(self, mutant, known):
        folder = self._folders.get()
        try:
            return self._judge_in(mutant, known, folder)
        finally:
            self._folders.put(folder)

    def _judge_in(self, mutant, known, folder):
        original = self.sources.text[mutant.path]
        changed = mutant.apply(original)
        objects = self._build.compile_changed(mutant.path, changed, folder)
        if objects is None:
            return Verdict(mutant, "broken")
        program = folder / "program"
        linked = None
        for name, test_filter in self._plan(mutant.path):
            if linked is not None and self._build.same_code(mutant.path, original, changed, folder):
                return Verdict(mutant, "equivalent", "the same code")
            if name != linked:
                self._build.link(name, program, mutant.path, objects)
                linked = name
            run = run_tests(program, test_filter, folder, self._limits[name])
            if run.failure:
                return Verdict(mutant, "killed", run.failure)
        if any(entry.matches(mutant) for entry in known):
            return Verdict(mutant, "equivalent", "listed")
        return Verdict(mutant, "survived")

    def _plan(self, path):
        """Programs and filters of their tests, those first that look at the file itself."""
        programs = self._build.programs_with(path)
        if Path(path).parent.name == "linux":
            programs.reverse()
        rooms = self._first_rooms(path)
        return [(name, test_filter) for name in programs
                for test_filter in self._tests[name].filters(rooms)]

    def _first_rooms(self, path):
        """The rooms whose tests look at a file first: its own, and those it speaks for."""
        rooms = [Path(path).parts[0]]
        if rooms == ["exports"]:
            rooms = sorted({name.partition("/")[0] for name in
                            re.findall(r'#include "(.+)"', self.sources.text[path])})
        return rooms


def describe(mutant):
    return f"{mutant.path}:{mutant.line}: {mutant.before} => {mutant.after}"


def counts(verdicts):
    return {kind: sum(verdict.kind == kind for verdict in verdicts)
            for kind in ("killed", "equivalent", "survived")}


def share(row):
    counted = row["killed"] + row["survived"]
    return 100 * row["killed"] / counted if counted else 100.0


def print_table(results):
    print(f"\n{'room':15} {'mutants':>8} {'killed':>7} {'equivalent':>11} {'survived':>9} {'share':>7}")
    for room, verdicts in results.items():
        row = counts(verdicts)
        print(f"{room:15} {len(verdicts):8} {row['killed']:7} {row['equivalent']:11} "
              f"{row['survived']:9} {share(row):6.1f}%")


def write_table(results):
    page = PAGE.read_text(encoding="utf-8")
    rows = read_rows(page)
    for room, verdicts in results.items():
        row = counts(verdicts)
        rows[room] = [str(len(verdicts)), *map(str, row.values()), f"{share(row):.0f} %"]
    PAGE.write_text(with_rows(page, rows), encoding="utf-8")


def listed_but_killed(results, known, runner):
    """Entries that the tests contradict. Of a line that stands several times in its file another
    one may be meant."""
    for verdict in results:
        if verdict.kind != "killed":
            continue
        lines = [" ".join(line.split())
                 for line in runner.sources.text[verdict.mutant.path].splitlines()]
        if lines.count(verdict.mutant.before) > 1:
            continue
        for entry in known:
            if entry.matches(verdict.mutant):
                yield entry, verdict.detail


def named_rooms(text):
    rooms = text.split(",")
    if unknown := set(rooms) - set(ROOMS):
        raise argparse.ArgumentTypeError(f"no such room: {', '.join(sorted(unknown))}")
    return rooms


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutation.sh", description=__doc__)
    parser.add_argument("rooms", nargs="?", type=named_rooms, default=list(ROOMS), metavar="ROOM,...",
                        help=f"of {', '.join(ROOMS)}; all of them without it")
    parser.add_argument("count", nargs="?", type=int, default=100, metavar="COUNT",
                        help="mutants of each room (100)")
    parser.add_argument("--seed", default="1", help="which mutants are drawn (1)")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="those whose line in the list of survivors has this text")
    parser.add_argument("--write", action="store_true",
                        help="put the rows of these rooms into the table of docs/mutation.md")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), help="how many at a time")
    arguments = parser.parse_args()

    FOLDER.mkdir(parents=True, exist_ok=True)
    with open(FOLDER / "lock", "w", encoding="utf-8") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            sys.exit("another run is using build/mutation")
        return run(arguments)


def run(arguments):
    runner = Runner(arguments.workers)
    known = equivalents.parse(KNOWN.read_text(encoding="utf-8"))
    sites = sites_of_rooms(runner.sources, runner.tree)
    wrong = [f"stale entry, matches no mutant: {entry}" for entry in stale_entries(known, sites)]

    print(f"seed {arguments.seed}, {arguments.count} mutants of each room", flush=True)
    runner.prepare()
    results = {}
    for room in arguments.rooms:
        drawn = [mutant for mutant in draw_order(sites[room], arguments.seed)
                 if arguments.only in describe(mutant)]
        verdicts = runner.judge_all(drawn, arguments.count, known)
        results[room] = verdicts
        row = counts(verdicts)
        print(f"{room}: {row['killed']} killed, {row['survived']} survived, "
              f"{row['equivalent']} equivalent", flush=True)
        wrong += [f"listed as equivalent, but {killer} fails: {entry}"
                  for entry, killer in listed_but_killed(verdicts, known, runner)]
    print_table(results)
    if arguments.write:
        write_table(results)
    if wrong:
        print("\n" + "\n".join(wrong))
    good = not wrong and all(share(counts(verdicts)) >= GOAL for verdicts in results.values())
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
