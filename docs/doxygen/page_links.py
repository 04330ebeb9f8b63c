#!/usr/bin/env python3
"""Shows a page to Doxygen: links that lead somewhere in the repository lead to the same place of the manual.

    docs/doxygen/page_links.py PAGE

A link to another page's heading becomes one to its label, one to a header goes to the header's page, and what
the manual does not hold is only named. Lines keep their numbers.
"""
import pathlib
import re
import sys

LINK = re.compile(r"\[([^]]*)\]\(([^)\s]+)\)")
HEADING = re.compile(r"^(#{2,6}) (.*)$")
FENCE = re.compile(r"^```")
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# As the Doxyfile's INPUT has them.
PAGES = [ROOT / "SECURITY.md", ROOT / "examples/agent/README.md", ROOT / "docs/guide.md", ROOT / "docs/gotchas.md",
         ROOT / "docs/cross.md", *(ROOT / "docs/guide").glob("*.md")]


def slug(heading: str) -> str:
    """What a heading is called behind '#', as code hosts form it."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def label(page: pathlib.Path, anchor: str) -> str:
    return f"{page.stem}-{anchor}"


def translated_link(text: str, target: str, page: pathlib.Path) -> str:
    text = text.replace("`", "")
    path, _, anchor = target.partition("#")
    if ":" in target or not path:
        return f"[{text}]({target})"
    file = (page.parent / path).resolve()
    if ROOT / "include" / "kfl" in file.parents:
        return f"[{text}]({file.stem.replace('_', '__')}_8h.html)"
    if file in PAGES:
        return f"[{text}](#{label(file, anchor)})" if anchor else f"[{text}]({path})"
    return text


def translated_line(line: str, page: pathlib.Path) -> str:
    line = LINK.sub(lambda match: translated_link(match[1], match[2], page), line)
    heading = HEADING.match(line)
    if not heading:
        return line
    return f"{heading[1]} {heading[2].replace('`', '')} {{#{label(page, slug(heading[2]))}}}"


def main() -> None:
    page = pathlib.Path(sys.argv[1]).resolve()
    in_code = False
    for line in page.read_text().splitlines():
        if FENCE.match(line):
            in_code = not in_code
        print(line if in_code else translated_line(line, page))


main()
