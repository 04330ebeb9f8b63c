"""The whole binary interface of a built library."""
from __future__ import annotations

import pathlib
import subprocess

from elftools.dwarf.dwarfinfo import DWARFInfo
from elftools.elf.elffile import ELFFile

from kfl_abi.layouts import read_layouts
from kfl_abi.model import Class, Export, Interface
from kfl_abi.tables import Image, Tables, member_prefix

TARGETS = {"EM_X86_64": "x86-64", "EM_386": "i386", "EM_MIPS": "mips", "EM_PPC": "powerpc"}
# The linker's own names, of which hosts make no use.
LINKER = {"_init", "_fini", "__bss_start", "_end", "_edata", "_fdata", "_ftext", "_fbss", "__gnu_lto_slim"}
# The sizes of data count: a program may hold a copy. Those of functions are nobody's business.
DATA = ("STT_OBJECT", "STT_COMMON")


def demangled(names: list[str]) -> dict[str, str]:
    texts = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True).stdout
    return dict(zip(names, texts.split("\n")))


def read_exports(elf: ELFFile, results: dict[str, str], unused: set[str]) -> dict[str, Export]:
    symbols = {}
    for symbol in elf.get_section_by_name(".dynsym").iter_symbols():
        name = symbol.name
        bound = symbol["st_info"]["bind"] in ("STB_GLOBAL", "STB_WEAK") and symbol["st_shndx"] != "SHN_UNDEF"
        if bound and name not in LINKER and not any(name.startswith(prefix) for prefix in unused):
            symbols[name] = symbol["st_size"] if symbol["st_info"]["type"] in DATA else 0
    texts = demangled(list(symbols))
    # Thunks have the result of what they lead to; only some compilers tell it.
    results = {name: result for name, result in results.items() if not name.startswith("_ZT")}
    return {
        name: Export(name, size, texts[name] + (f" -> {results[name]}" if name in results else ""))
        for name, size in symbols.items()
    }


def tells_all_enums(dwarf: DWARFInfo) -> bool:
    """clang++ leaves out those that the library itself does not use."""
    producers = [unit.get_top_DIE().attributes["DW_AT_producer"].value for unit in dwarf.iter_CUs()]
    return all(producer.startswith(b"GNU") for producer in producers)


def is_abstract(record: Class) -> bool:
    return any(slot.endswith(" pure") for slots in record.tables.values() for slot in slots)


def name_slots(record: Class) -> None:
    """Puts behind each slot's function what it is called in the source."""
    for slots in record.tables.values():
        texts = demangled([slot.split()[0] for slot in slots])
        slots[:] = [f"{slot} = {texts[slot.split()[0]]}" if slot[0] == "_" else slot for slot in slots]


def read_library(path: pathlib.Path) -> Interface:
    with path.open("rb") as file:
        elf = ELFFile(file)
        if not elf.has_dwarf_info():
            raise SystemExit(f"{path} has no debugging information: build it with -g")
        dwarf = elf.get_dwarf_info()
        layouts = read_layouts(dwarf)
        tables = Tables(Image(elf), layouts)
        dynamic = elf.get_section_by_name(".dynamic")
        soname = next((tag.soname for tag in dynamic.iter_tags() if tag.entry.d_tag == "DT_SONAME"), "none")
        machine = elf.header.e_machine
        interface = Interface(TARGETS.get(machine, machine), soname)
        # Nobody can make a whole object of an abstract class; not all compilers supply the means.
        unused = set()
        for name, record in layouts.classes.items():
            record.tables = tables.of(name)
            if is_abstract(record):
                unused.add(member_prefix(name) + "C1E")
            name_slots(record)
        interface.classes = layouts.classes
        interface.enums = layouts.enums
        interface.constants = layouts.constants
        interface.tells_all_enums = tells_all_enums(dwarf)
        interface.exports = read_exports(elf, layouts.results, unused)
        return interface
