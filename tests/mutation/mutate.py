"""Makes small changes to the library's sources, one at a time, and sees whether a test of the family fails.

    scripts/mutate --sample 200 --seed 1   some, over all folders
    scripts/mutate --folder core           all of a folder
    scripts/mutate --file core/AString.cpp
    scripts/mutate --list                  what would be changed
    scripts/mutate --report                what is known from earlier runs
    scripts/mutate --again                 those that survived, after tests were added
    scripts/mutate --reasons               whether each reason to survive still has its place; builds nothing

What earlier runs found is kept in build/mutate/results.json as long as the file stays as it is. Survivors that no test
can tell from the original stand with their reason in tests/mutation/equivalent.txt. Needs root: a changed library may
do anything, and runs in namespaces of its own.
"""
import argparse
import concurrent.futures
import dataclasses
import hashlib
import json
import os
import pathlib
import random
import shlex
import subprocess
import sys
from collections.abc import Iterable

import trial
from mutants import Mutant, Mutants
from report import Reasons, report

HERE = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("core", "collections", "memory", "config", "net", "os", "events", "crypto", "host")
# A folder's tests, as folders and programs of tests/, where they are not just those in the folder of its name.
# What core/ and events/ have for other families is seen where these use it.
TESTED_BY = {"core": ("core/", "collections/Container_test", "config/IniFileParser_test"),
             "events": ("events/", "os/process_system_test", "crypto/Rijndael_files_test"),
             "host": ("host/", "faults/host_faults_test")}


class Tree:
    """A source tree with its own build, its tests and the results so far."""

    def __init__(self, root: pathlib.Path) -> None:
        self.root = root
        self.build = root / "build" / "mutate"
        self.results_file = self.build / "results.json"
        self.usual_file = self.build / "usual.json"

    def configure(self) -> None:
        options = {"CMAKE_BUILD_TYPE": "", "CMAKE_CXX_COMPILER": "g++", "CMAKE_CXX_FLAGS": "-O0 -w",
                   "CMAKE_SKIP_BUILD_RPATH": "OFF", "CMAKE_LINK_DEPENDS_NO_SHARED": "ON",
                   "CMAKE_EXPORT_COMPILE_COMMANDS": "ON"}
        quiet(["cmake", "-G", "Ninja", "-S", self.root, "-B", self.build,
               *(f"-D{name}={value}" for name, value in options.items())])

    def commands(self) -> dict[str, str]:
        """How each source of the library is compiled."""
        entries = json.loads((self.build / "compile_commands.json").read_text())
        commands = {os.path.relpath(entry["file"], self.root): entry["command"] for entry in entries}
        return {file: command for file, command in commands.items() if file.split("/")[0] in FOLDERS}

    def tests(self, folders: set[str]) -> list[trial.Test]:
        """The test programs of some folders, built, with the time that each usually takes."""
        places = sorted({place for folder in folders for place in places_of(folder)})
        quiet(["ninja", "-C", self.build, *(f"tests/{place}all" if place.endswith("/") else place.split("/")[1]
                                            for place in places)])
        listed = json.loads(subprocess.check_output(["ctest", "--show-only=json-v1"], cwd=self.build))
        tests = []
        for test in listed["tests"]:
            program = os.path.relpath(test.get("command", ["/"])[0], self.build / "tests")
            if os.path.basename(program) == test["name"] and is_in(program, places):
                built = os.stat(test["command"][0]).st_mtime_ns
                tests.append(trial.Test(program, test["command"], built=built))
        known = load(self.usual_file)
        for number, test in enumerate(tests):
            if known.get(test.name, {}).get("built") != test.built:
                print(f"{test.name}: how long it usually takes", flush=True)
                known[test.name] = dataclasses.asdict(trial.usual(self.root, test))
                self.usual_file.write_text(json.dumps(known, indent=1))
            tests[number] = trial.Test(**known[test.name])
        return tests

    def results(self) -> dict[str, dict]:
        """What was found of files that have not changed since."""
        digests: dict[str, str] = {}
        kept = {}
        for key, result in load(self.results_file).items():
            file = key.split(":")[0]
            if file not in digests:
                digests[file] = self.digest(file)
            if result["file"] == digests[file]:
                kept[key] = result
        return kept

    def digest(self, file: str) -> str:
        path = self.root / file
        return hashlib.sha256(path.read_bytes()).hexdigest() if path.exists() else ""

    def save(self, results: dict[str, dict]) -> None:
        new = self.results_file.with_suffix(".new")
        new.write_text(json.dumps(results, indent=1))
        new.replace(self.results_file)


def places_of(folder: str) -> tuple[str, ...]:
    return TESTED_BY.get(folder, (f"{folder}/",))


def is_in(program: str, places: Iterable[str]) -> bool:
    return any(program.startswith(place) if place.endswith("/") else program == place for place in places)


def load(path: pathlib.Path) -> dict:
    return json.loads(path.read_text()) if path.exists() else {}


def quiet(command: list) -> None:
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(done.stdout)


def order(tests: list[trial.Test], stems: set[str], folder: str) -> list[trial.Test]:
    """The tests of a folder; first those named after the sources, then the short ones."""
    return sorted((test for test in tests if is_in(test.program, places_of(folder))),
                  key=lambda test: (not any(test.name.startswith(stem) for stem in stems), test.seconds))


def chosen(options: argparse.Namespace, mutants: list[Mutant], results: dict[str, dict],
           reasons: Reasons) -> list[Mutant]:
    some = [mutant for mutant in mutants
            if (not options.folder or mutant.folder in options.folder)
            and (not options.file or mutant.file in options.file)]
    if options.again:
        return [mutant for mutant in some
                if results.get(mutant.key, {}).get("outcome") == "survived" and not reasons.of(mutant)]
    if options.sample:
        some = random.Random(options.seed).sample(some, min(options.sample, len(some)))
    return [mutant for mutant in some if mutant.key not in results]


def run(options: argparse.Namespace, tree: Tree, found: Mutants, results: dict[str, dict], reasons: Reasons) -> None:
    wanted = chosen(options, found.mutants, results, reasons)
    tests = tree.tests({mutant.folder for mutant in wanted}) if wanted else []
    commands = tree.commands()
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        running = {}
        for mutant in wanted:
            sources = sorted(found.sources[mutant.file])
            stems = {pathlib.PurePath(source).stem for source in sources}
            running[pool.submit(trial.trial, tree.root, mutant, order(tests, stems, mutant.folder),
                                [commands[source] for source in sources])] = mutant
        for number, done in enumerate(concurrent.futures.as_completed(running), 1):
            mutant, result = running[done], done.result()
            results[mutant.key] = {**result, "file": tree.digest(mutant.file)}
            tree.save(results)
            print(f"{number}/{len(wanted)} {result['outcome']}: {mutant.file}:{mutant.line}: {mutant.change}",
                  result.get("test", ""), flush=True)


def told_stale(reasons: Reasons, mutants: list[Mutant]) -> bool:
    stale = reasons.without_mutant(mutants)
    if stale:
        print("", "Reasons for what is not there:", *stale, sep="\n")
    return bool(stale)


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int, metavar="N", help="only N of them, chosen at random")
    parser.add_argument("--seed", type=int, default=1, help="of the choice")
    parser.add_argument("--folder", action="append", choices=FOLDERS)
    parser.add_argument("--file", action="append")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--report", action="store_true")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--reasons", action="store_true")
    parser.add_argument("--root", type=pathlib.Path, default=HERE, help="of the tree, if not this one")
    return parser.parse_args()


def main() -> None:
    options = arguments()
    tree = Tree(options.root.resolve())
    tree.configure()
    found = Mutants(tree.root, {file: shlex.split(command) for file, command in tree.commands().items()})
    reasons = Reasons(tree.root / "tests" / "mutation" / "equivalent.txt")
    if options.list:
        for mutant in chosen(options, found.mutants, {}, reasons):
            print(f"{mutant.file}:{mutant.line}: {mutant.change}")
        return
    if options.reasons:
        print(f"{len(found.mutants)} places, {len(reasons.reasons)} reasons")
        sys.exit(told_stale(reasons, found.mutants))
    results = tree.results()
    if not options.report:
        run(options, tree, found, results, reasons)
    text, is_wrong = report(found.mutants, results, reasons)
    print(text)
    is_stale = told_stale(reasons, found.mutants)
    sys.exit(is_wrong or is_stale)


if __name__ == "__main__":
    main()
