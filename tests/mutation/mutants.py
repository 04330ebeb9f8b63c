"""Finds the places of a source where a small change should make a test fail.

Places come from clang's syntax tree: what stands in comments, texts, macros or preprocessor lines is no place.
"""
import collections
import dataclasses
import pathlib
import re

from clang.cindex import Cursor, CursorKind, Index, SourceRange, TranslationUnit, TypeKind

# What stands for an operator, and what may be told apart from it by a test.
BINARY = {
    "==": ["!="], "!=": ["=="],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], ">>": ["<<"],
}
COMPOUND = {operator + "=": [other + "=" for other in others] for operator, others in BINARY.items()
            if operator in {"+", "-", "*", "/", "%", "&", "|", "^", "<<", ">>"}}
UNARY = {"++": ["--"], "--": ["++"], "!": [""], "-": [""], "~": [""]}
INTEGER = re.compile(r"(0[xX][0-9a-fA-F]+|0[bB][01]+|[0-9]+)([uUlL]*)")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.S)

CONDITIONAL = {CursorKind.IF_STMT, CursorKind.CONDITIONAL_OPERATOR}
LOOPS = {CursorKind.WHILE_STMT, CursorKind.DO_STMT, CursorKind.FOR_STMT}
DELETED = {CursorKind.CALL_EXPR, CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR,
           CursorKind.UNARY_OPERATOR, CursorKind.CXX_DELETE_EXPR, CursorKind.BREAK_STMT,
           CursorKind.CONTINUE_STMT}
BODIES = {CursorKind.COMPOUND_STMT, CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.DO_STMT,
          CursorKind.FOR_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT}
WRAPPERS = {CursorKind.UNEXPOSED_EXPR}


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change: the bytes [start, end) of a file become `new`."""
    file: str
    line: int
    start: int
    end: int
    old: str
    new: str
    text: str  # the line, without the space around it
    nth: int = 1  # of those with the same change in the line

    @property
    def key(self) -> str:
        """The same mutant in another run, as long as the file has not changed in front of it."""
        return f"{self.file}:{self.start}:{self.end}:{self.new}"

    @property
    def change(self) -> str:
        which = f" ({self.nth})" if self.nth > 1 else ""
        return f"{shortened(self.old)} -> {shortened(self.new) or 'nothing'}{which}"

    @property
    def folder(self) -> str:
        return self.file.split("/")[0]

    def applied_to(self, source: bytes) -> bytes:
        return source[:self.start] + self.new.encode() + source[self.end:]


def shortened(code: str) -> str:
    return re.sub(r"\s+", " ", code)


def numbered(mutants: list[Mutant]) -> list[Mutant]:
    """The same, those with the same change in the same line told apart."""
    seen: collections.Counter[tuple[int, str, str]] = collections.Counter()
    told = []
    for mutant in mutants:
        place = (mutant.line, mutant.old, mutant.new)
        seen[place] += 1
        told.append(dataclasses.replace(mutant, nth=seen[place]))
    return told


class Finder:
    """The mutants of one file, as one translation unit sees it."""

    def __init__(self, root: pathlib.Path, file: str, unit: TranslationUnit) -> None:
        self.file, self.path = file, str(root / file)
        self.source = (root / file).read_bytes()
        self.unit = unit
        self.found: dict[tuple[int, int, str], Mutant] = {}

    def mutants(self) -> list[Mutant]:
        for cursor in self.unit.cursor.get_children():
            if cursor.location.file and cursor.location.file.name == self.path:
                self.visit(cursor)
        return numbered(sorted(self.found.values(), key=lambda mutant: (mutant.start, mutant.end, mutant.new)))

    def visit(self, cursor: Cursor) -> None:
        if cursor.kind == CursorKind.STATIC_ASSERT:
            return
        children = list(cursor.get_children())
        self.change(cursor, children)
        for child in children:
            self.visit(child)

    def change(self, cursor: Cursor, children: list[Cursor]) -> None:
        kind = cursor.kind
        if kind == CursorKind.BINARY_OPERATOR:
            self.between(children, BINARY)
        elif kind == CursorKind.COMPOUND_ASSIGNMENT_OPERATOR:
            self.between(children, COMPOUND)
        elif kind == CursorKind.UNARY_OPERATOR:
            self.unary(cursor, children)
        elif kind == CursorKind.INTEGER_LITERAL:
            self.integer(cursor)
        elif kind == CursorKind.CHARACTER_LITERAL:
            self.character(cursor)
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            self.boolean(cursor)
        elif kind in CONDITIONAL:
            self.condition(cursor, children)
        elif kind in LOOPS:
            self.loop(cursor, children)
        elif kind == CursorKind.RETURN_STMT and children:
            self.returned(children[0])
        if kind in BODIES:
            self.statements(cursor, children)

    def range_of(self, extent: SourceRange) -> tuple[int, int]:
        return extent.start.offset, extent.end.offset

    def code(self, start: int, end: int) -> str:
        return self.source[start:end].decode()

    def put(self, start: int, end: int, new: str) -> None:
        old = self.code(start, end)
        if start >= end or old == new:
            return
        line = self.source.count(b"\n", 0, start) + 1
        begin = self.source.rfind(b"\n", 0, start) + 1
        finish = self.source.find(b"\n", start)
        text = self.code(begin, finish if finish >= 0 else len(self.source)).strip()
        self.found[start, end, new] = Mutant(self.file, line, start, end, old, new, text)

    def between(self, operands: list[Cursor], others: dict[str, list[str]]) -> None:
        if len(operands) != 2:
            return
        start, end = operands[0].extent.end.offset, operands[1].extent.start.offset
        gap = COMMENT.sub(lambda comment: " " * len(comment[0]), self.code(start, end))
        operator = gap.strip(" \n()")
        if operator in others:
            at = start + gap.index(operator)
            for other in others[operator]:
                self.put(at, at + len(operator), other)

    def unary(self, cursor: Cursor, children: list[Cursor]) -> None:
        (start, end), inner = self.range_of(cursor.extent), self.range_of(children[0].extent)
        before, behind = self.code(start, inner[0]).strip(" ("), self.code(inner[1], end).strip(" )")
        for other in UNARY.get(before, []):
            self.put(start, start + len(before), other)
        for other in UNARY.get(behind, []):
            self.put(end - len(behind), end, other)

    def integer(self, cursor: Cursor) -> None:
        start, end = self.range_of(cursor.extent)
        match = INTEGER.fullmatch(self.code(start, end))
        if not match:
            return
        digits = match[1]
        octal = len(digits) > 1 and digits.isdigit() and digits[0] == "0"
        value = int(digits, 8 if octal else 0)
        for other in {0, 1, value + 1, max(value - 1, 0)} - {value}:
            self.put(start, end, f"{other}{match[2]}")

    def character(self, cursor: Cursor) -> None:
        start, end = self.range_of(cursor.extent)
        code = self.code(start, end)
        if code.startswith("'") and code.endswith("'"):
            self.put(start, end, f"static_cast<char>({code} + 1)")

    def boolean(self, cursor: Cursor) -> None:
        start, end = self.range_of(cursor.extent)
        others = {"true": "false", "false": "true"}
        if self.code(start, end) in others:
            self.put(start, end, others[self.code(start, end)])

    def condition(self, cursor: Cursor, children: list[Cursor]) -> None:
        condition = children[0]
        if not condition.kind.is_expression():
            return
        start, end = self.range_of(condition.extent)
        for new in (f"!({self.code(start, end)})", "true", "false"):
            self.put(start, end, new)

    def loop(self, cursor: Cursor, children: list[Cursor]) -> None:
        """Negated or never true; a condition that is always true would only make every test wait for its limit."""
        if cursor.kind == CursorKind.FOR_STMT:
            self.for_loop(cursor)
            return
        condition = children[1 if cursor.kind == CursorKind.DO_STMT else 0]
        if condition.kind.is_expression():
            start, end = self.range_of(condition.extent)
            for new in (f"!({self.code(start, end)})", "false"):
                self.put(start, end, new)

    def for_loop(self, cursor: Cursor) -> None:
        """The condition is what stands between the two semicolons of the head."""
        start, depth, semicolons = cursor.extent.start.offset, 0, []
        for token in cursor.get_tokens():
            depth += {"(": 1, ")": -1}.get(token.spelling, 0)
            if token.spelling == ";" and depth == 1:
                semicolons.append(token.extent.start.offset)
            if len(semicolons) == 2:
                break
        if len(semicolons) < 2:
            return
        start, end = semicolons[0] + 1, semicolons[1]
        condition = self.code(start, end).strip()
        if condition:
            start += len(self.code(start, end)) - len(self.code(start, end).lstrip())
            for new in (f"!({condition})", "false"):
                self.put(start, end, new)

    def returned(self, value: Cursor) -> None:
        start, end = self.range_of(value.extent)
        code, kind = self.code(start, end), value.type.get_canonical().kind
        if value.kind == CursorKind.INIT_LIST_EXPR:
            return
        if kind == TypeKind.BOOL:
            self.put(start, end, f"!({code})")
        elif kind in {TypeKind.POINTER, TypeKind.NULLPTR}:
            self.put(start, end, "nullptr")
        elif kind in {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG,
                      TypeKind.ULONGLONG}:
            self.put(start, end, f"({code}) + 1")

    def statements(self, cursor: Cursor, children: list[Cursor]) -> None:
        if cursor.kind == CursorKind.IF_STMT:
            children = children[1:]
        elif cursor.kind in LOOPS:
            children = children[:1] if cursor.kind == CursorKind.DO_STMT else children[-1:]
        elif cursor.kind == CursorKind.CASE_STMT:
            children = children[1:]
        for child in children:
            inner = child
            while inner.kind in WRAPPERS and len(list(inner.get_children())) == 1:
                inner = next(inner.get_children())
            start, end = self.range_of(child.extent)
            if inner.kind in DELETED and self.source[end:end + 1] == b";":
                self.put(start, end, "")


def parse(source: pathlib.Path, arguments: list[str]) -> TranslationUnit:
    unit = Index.create().parse(str(source), args=arguments)
    errors = [str(diagnostic) for diagnostic in unit.diagnostics if diagnostic.severity >= 3]
    if errors:
        raise SystemExit(f"{source}: clang cannot read it: {errors[0]}")
    return unit


class Mutants:
    """All mutants of the sources and of the private headers that they include, each once."""

    def __init__(self, root: pathlib.Path, commands: dict[str, list[str]]) -> None:
        self.mutants: list[Mutant] = []
        # By file, the sources that it is part of.
        self.sources: dict[str, set[str]] = {}
        folders = {source.split("/")[0] for source in commands}
        for source, command in sorted(commands.items()):
            unit = parse(root / source, [word for word in command if word.startswith(("-I", "-D", "-std"))])
            for file in [source, *included(root, unit)]:
                if file.split("/")[0] not in folders:
                    continue
                if file not in self.sources:
                    self.mutants += Finder(root, file, unit).mutants()
                self.sources.setdefault(file, set()).add(source)


def included(root: pathlib.Path, unit: TranslationUnit) -> list[str]:
    """The files of the tree that a unit includes."""
    paths = {pathlib.Path(inclusion.include.name).resolve() for inclusion in unit.get_includes()}
    return sorted(str(path.relative_to(root)) for path in paths if path.is_relative_to(root))
