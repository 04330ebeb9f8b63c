"""The virtual tables as they lie in a library, with the names of the functions in their slots."""
from __future__ import annotations

import collections

from elftools.elf.elffile import ELFFile
from elftools.elf.relocation import RelocationSection

from kfl_abi.layouts import Layouts

PURE = "__cxa_pure_virtual"


def nested(name: str) -> str:
    """The mangled form of a class's name, without templates."""
    parts = "".join(f"{len(part)}{part}" for part in name.split("::"))
    return f"N{parts}E" if "::" in name else parts


def member_prefix(name: str) -> str:
    return "_ZN" + "".join(f"{len(part)}{part}" for part in name.split("::"))


class Image:
    """What the dynamic loader makes of a library's read-only words."""

    def __init__(self, elf: ELFFile) -> None:
        self.elf = elf
        self.word = elf.elfclass // 8
        self.order = "little" if elf.little_endian else "big"
        self.names: dict[int, set[str]] = collections.defaultdict(set)
        self.symbols: dict[str, tuple[int, int]] = {}
        for section in (elf.get_section_by_name(".symtab"), elf.get_section_by_name(".dynsym")):
            for symbol in section.iter_symbols() if section else ():
                if symbol["st_shndx"] != "SHN_UNDEF" and symbol.name:
                    self.names[symbol["st_value"]].add(symbol.name)
                    self.symbols[symbol.name] = (symbol["st_value"], symbol["st_size"])
        self.relocations = {}
        dynamic = elf.get_section_by_name(".dynsym")
        for section in elf.iter_sections():
            if isinstance(section, RelocationSection):
                for entry in section.iter_relocations():
                    index = entry["r_info_sym"]
                    name = dynamic.get_symbol(index).name if index else ""
                    self.relocations[entry["r_offset"]] = (name, entry["r_addend"] if section.is_RELA() else None)

    def at(self, address: int) -> int:
        for section in self.elf.iter_sections():
            start = section["sh_addr"]
            if start and start <= address < start + section["sh_size"] and section["sh_type"] != "SHT_NOBITS":
                self.elf.stream.seek(section["sh_offset"] + address - start)
                return int.from_bytes(self.elf.stream.read(self.word), self.order)
        raise ValueError(f"nothing lies at {address:#x}")

    def functions_at(self, address: int) -> set[str]:
        """The names of what a word will point to; none for a word that is a number."""
        if address not in self.relocations:
            return set()
        name, addend = self.relocations[address]
        if name:
            return {name} | self.names.get(self.symbols.get(name, (0, 0))[0], set())
        return self.names.get(self.at(address) if addend is None else addend, set())


class Tables:
    def __init__(self, image: Image, layouts: Layouts) -> None:
        self.image = image
        self.layouts = layouts

    def of(self, name: str) -> dict[int, list[str]]:
        if "_ZTV" + nested(name) not in self.image.symbols:
            return {}
        start, size = self.image.symbols["_ZTV" + nested(name)]
        words = [self.image.functions_at(start + i) for i in range(0, size, self.image.word)]
        heads = [i for i, names in enumerate(words) if "_ZTI" + nested(name) in names]
        abstract = any(PURE in names for names in words)
        tables = {}
        for head, after in zip(heads, heads[1:] + [len(words) + 1]):
            offset = self.image.at(start + (head - 1) * self.image.word)
            offset = -offset % (1 << 8 * self.image.word)
            slots = words[head + 1:after - 1]
            tables[offset] = [self.slot(name, i, names, abstract) for i, names in enumerate(slots)]
        return tables

    def slot(self, name: str, index: int, names: set[str], abstract: bool) -> str:
        destructors = {f"{member_prefix(name)}{kind}Ev" for kind in ("D0", "D1", "D2")}
        if abstract and (not names or names & destructors):
            # A subclass's table takes its place before anyone calls it: compilers fill it as they like.
            return "~ of the subclass"
        lineage = self.lineage(name)
        if PURE in names:
            declared = [f for c in lineage for f, slot in self.layouts.virtuals[c].items() if slot == index]
            return f"{declared[0] if declared else '?'} pure"
        return min(names, key=lambda function: self.rank(function, index, lineage), default="?")

    def lineage(self, name: str) -> list[str]:
        found = [name]
        for base in self.layouts.classes[name].bases:
            found += self.lineage(base.name)
        return found

    def rank(self, function: str, index: int, lineage: list[str]) -> tuple[int, int, str]:
        """Orders the names of one function, of which an optimiser may have made several equal ones: the
        nearest class's declaration for that slot comes first, whole-object destructors before those of bases."""
        for distance, name in enumerate(lineage):
            if self.layouts.virtuals[name].get(function) == index:
                return (0, distance, function)
            if function.startswith(member_prefix(name)) and function.endswith(("D1Ev", "D0Ev")):
                return (0, distance, function)
        return (1, 0, function)
