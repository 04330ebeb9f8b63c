"""What became of the mutants, as text."""
import collections
import pathlib
import re

from mutants import Mutant

KILLED = ("failed", "crashed", "timed out")
COLUMNS = "{:<12} {:>8} {:>8} {:>9} {:>9} {:>10} {:>9} {:>7}"


class Reasons:
    """The survivors that were looked at: a file and the text of a line, changes, and why no test can tell them apart.

        core/x.cpp: return a < b ? a : b;
            - < -> <=
            Both are the same where they are equal.
    """

    def __init__(self, path: pathlib.Path) -> None:
        self.reasons: dict[tuple[str, str, str], str] = {}
        text = re.sub(r"^#.*\n", "", path.read_text(), flags=re.M) if path.exists() else ""
        for block in filter(None, map(str.strip, text.split("\n\n"))):
            place, *rest = block.split("\n")
            file, line = place.split(": ", 1)
            changes = [row.strip()[2:] for row in rest if row.strip().startswith("- ")]
            reason = " ".join(row.strip() for row in rest if not row.strip().startswith("- "))
            if not changes or not reason:
                raise SystemExit(f"{path}: no change or no reason: {place}")
            for change in changes:
                self.reasons[file, line.strip(), change] = reason

    def of(self, mutant: Mutant) -> str | None:
        return self.reasons.get((mutant.file, mutant.text, mutant.change))

    def without_mutant(self, mutants: list[Mutant]) -> list[str]:
        known = {(mutant.file, mutant.text, mutant.change) for mutant in mutants}
        return [": ".join(place) for place in self.reasons if place not in known]


def row(name: str, outcomes: collections.Counter) -> str:
    killed = sum(outcomes[outcome] for outcome in KILLED)
    judged = killed + outcomes["survived"]
    score = f"{100 * killed / judged:.1f}%" if judged else "-"
    return COLUMNS.format(name, judged, killed, outcomes["timed out"], outcomes["survived"], outcomes["explained"],
                          outcomes["same code"], score)


def needless(mutants: list[Mutant], results: dict[str, dict], reasons: Reasons) -> list[str]:
    """Reasons to survive that no mutant has: equal lines of a file share theirs."""
    tests: dict[str, str] = {}
    survived = set()
    for mutant in mutants:
        result = results.get(mutant.key, {})
        place = f"{mutant.file}: {mutant.text}: {mutant.change}"
        if reasons.of(mutant) and result.get("outcome") in KILLED:
            tests[place] = result["test"]
        elif result.get("outcome") in ("survived", None):
            survived.add(place)
    return [f"{place}: has a reason to survive and is killed by {test}" for place, test in tests.items()
            if place not in survived]


def report(mutants: list[Mutant], results: dict[str, dict], reasons: Reasons) -> tuple[str, bool]:
    """The text, and whether something is wrong: survivors without a reason, reasons for what is killed."""
    folders: dict[str, collections.Counter] = collections.defaultdict(collections.Counter)
    survivors = []
    for mutant in mutants:
        outcome = results.get(mutant.key, {}).get("outcome")
        if outcome == "survived" and reasons.of(mutant):
            outcome = "explained"
        elif outcome == "survived":
            survivors.append(f"{mutant.file}:{mutant.line}: {mutant.change}\n    {mutant.text}")
        if outcome:
            folders[mutant.folder][outcome] += 1
    lines = [COLUMNS.format("folder", "mutants", "killed", "(by time)", "survived", "explained", "same code", "score")]
    lines += [row(name, outcomes) for name, outcomes in sorted(folders.items())]
    total = sum(folders.values(), collections.Counter())
    lines.append(row("all", total))
    lines.append(f"{len(mutants)} places in all; {total['not compiled']} of those tried do not compile.")
    faults = needless(mutants, results, reasons)
    if faults:
        lines += ["", *faults]
    if survivors:
        lines += ["", "Survived without a reason:", *survivors]
    return "\n".join(lines), bool(faults or survivors)
