#!/usr/bin/env python3
"""Shows a public header to Doxygen: its plain comments become documentation comments.

    docs/doxygen/header_comments.py HEADER

The headers are written to be read as they are. A comment right above a declaration documents it, one behind
an enumerator documents that, and the first comment of a file documents the file; all others stay comments.
The words `Requires:`, `Invalidates:` and `Kept on purpose:` begin marked paragraphs. Lines keep their numbers.
"""
import pathlib
import re
import sys

COMMENT = re.compile(r"( *)//( ?)(.*)$")
BEHIND_ENUMERATOR = re.compile(r"^( *\w+ = \d+,?) +// (.*)$")
# The commands that docs/doxygen/Doxyfile defines.
NOTES = {"Requires:": r"\requires ", "Invalidates:": r"\invalidates ", "Kept on purpose:": r"\kept "}
NOTE = re.compile("|".join(map(re.escape, NOTES)))
# Doxygen takes code and quotations as they stand.
VERBATIM = re.compile(r"""(`[^`]*`|"[^"]*")""")
SPECIAL = re.compile(r"([\\@&$#<>%*|~]|(?<!\w)_|_(?!\w))")


def escaped(prose: str) -> str:
    """Text in which no character has a meaning of its own, and notes are commands."""
    parts = VERBATIM.split(prose)
    for at in range(0, len(parts), 2):
        plain = SPECIAL.sub(r"\\\1", parts[at])
        parts[at] = NOTE.sub(lambda match: NOTES[match[0]], plain)
    return "".join(parts)


def documentation(text: str) -> str:
    is_code = text.startswith("    ")
    return ("/// " + (text if is_code else escaped(text))).rstrip()


def as_file_documentation(block: list[str], path: str) -> list[str]:
    name = path.rpartition("include/")[2]
    lines = [documentation(COMMENT.match(line)[3]) for line in block]
    return [rf"/// \file {name}" + " \\brief" + lines[0][3:]] + lines[1:]


def as_documentation(block: list[str]) -> list[str]:
    matches = [COMMENT.match(line) for line in block]
    return [match[1] + documentation(match[3]) for match in matches]


def translated(lines: list[str], path: str) -> list[str]:
    result, at = [], 0
    while at < len(lines):
        end = at
        while end < len(lines) and COMMENT.match(lines[end]):
            end += 1
        if end == at:
            result.append(BEHIND_ENUMERATOR.sub(lambda match: f"{match[1]}  ///< {escaped(match[2])}", lines[at]))
            at += 1
            continue
        block = lines[at:end]
        stands_above = end < len(lines) and lines[end].strip() not in ("", "}", "};")
        if at == 0:
            block = as_file_documentation(block, path)
        elif stands_above:
            block = as_documentation(block)
        result += block
        at = end
    return result


def main() -> None:
    path = sys.argv[1]
    lines = pathlib.Path(path).read_text().splitlines()
    print("\n".join(translated(lines, path)))


main()
