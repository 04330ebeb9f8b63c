"""Tries scripts/mutate on a small library whose test is known to miss something."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
FATE = re.compile(r"^\d+/\d+ ([\w ]+): net/planted\.cpp:(\d+): (.*?) ?(planted_test)?$", re.M)


class SelfTest(unittest.TestCase):
    """One run of all, then some again: what it prints is looked at from several sides."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = tempfile.TemporaryDirectory()
        cls.root = pathlib.Path(cls.folder.name) / "planted"
        shutil.copytree(HERE / "planted", cls.root)
        cls.first = cls.mutate()
        cls.fates = {(int(line), change): fate for fate, line, change, _ in FATE.findall(cls.first.stdout)}
        if not cls.fates:
            raise SystemExit(f"nothing was tried:\n{cls.first.stdout}")

    @classmethod
    def tearDownClass(cls) -> None:
        cls.folder.cleanup()

    @classmethod
    def mutate(cls, *words: str) -> subprocess.CompletedProcess:
        return subprocess.run([sys.executable, "-B", HERE / "mutate.py", "--root", cls.root, *words],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def test_changes_that_the_test_sees_are_killed(self) -> None:
        self.assertEqual(self.fates[18, "<= -> <"], "failed", self.first.stdout)
        self.assertEqual(self.fates[18, "a <= 0 -> !(a <= 0)"], "failed")
        self.assertEqual(self.fates[23, "n -> (n) + 1"], "failed")

    def test_changes_that_never_end_are_killed_by_time(self) -> None:
        self.assertEqual(self.fates[22, "++n -> nothing"], "timed out")

    def test_changes_that_no_test_sees_survive(self) -> None:
        self.assertEqual(self.fates[16, "+ -> -"], "survived")
        self.assertEqual(self.first.returncode, 1)
        self.assertIn("net/planted.cpp:16: + -> -\n    int untested(int a) { return a + 7; }", self.first.stdout)

    def test_changes_that_make_no_other_code_are_left_out(self) -> None:
        self.assertEqual(self.fates[21, "0 -> 1"], "same code")

    def test_changes_with_a_reason_count_apart(self) -> None:
        self.assertEqual(self.fates[12, "questions += 1 -> nothing"], "survived")
        self.assertNotIn("net/planted.cpp:12: questions", self.first.stdout.split("Survived without a reason:")[1])
        self.assertRegex(self.first.stdout, r"(?m)^all +20 +14 +2 +6 +4 +1 +70\.0%$")

    def test_comments_texts_and_macros_are_no_places(self) -> None:
        self.assertEqual({line for line, _ in self.fates}, {12, 13, 16, 18, 21, 22, 23})
        self.assertNotIn((13, "< -> <="), self.fates)

    def test_the_tree_itself_stays_as_it_is(self) -> None:
        source = "net/planted.cpp"
        self.assertEqual((self.root / source).read_bytes(), (HERE / "planted" / source).read_bytes())

    def test_what_is_known_is_not_tried_again(self) -> None:
        again = self.mutate()
        self.assertFalse(FATE.findall(again.stdout), again.stdout)
        survivors = self.mutate("--again")
        self.assertEqual({fate for fate, *_ in FATE.findall(survivors.stdout)}, {"survived"}, survivors.stdout)

    def test_reasons_for_nothing_are_faults(self) -> None:
        file = self.root / "tests" / "mutation" / "equivalent.txt"
        reasons = file.read_text()
        file.write_text(f"{reasons}\nnet/planted.cpp: bool isZero(unsigned int a) {{ return a <= 0; }}\n"
                        "    - <= -> <\n    - <= -> !=\n    Is told apart.\n")
        shown = self.mutate("--report").stdout
        places = self.mutate("--reasons")
        file.write_text(reasons)
        self.assertEqual(places.returncode, 1, places.stdout)
        self.assertIn("{ return a <= 0; }: <= -> !=", places.stdout)
        self.assertNotIn("{ return a <= 0; }: <= -> <\n", places.stdout)
        self.assertEqual(self.mutate("--reasons").returncode, 0)
        self.assertIn("Reasons for what is not there:\nnet/planted.cpp: bool isZero(unsigned int a) "
                      "{ return a <= 0; }: <= -> !=", shown)
        self.assertIn("{ return a <= 0; }: <= -> <: has a reason to survive and is killed by planted_test", shown)


if __name__ == "__main__":
    unittest.main()
