"""A binary interface as text: one fact a line, in an order that only the facts decide."""
from __future__ import annotations

import pathlib

from kfl_abi.model import Base, Class, Export, Field, Interface

HEAD = """\
# What hosts rely on in {soname} on {target}. Checked by the test `abi`; docs/abi.md says how to read
# and how to change it. Offsets and sizes are in bytes.
"""


def class_lines(record: Class) -> list[str]:
    lines = ["", f"class {record.name}", f"  size {record.size}"]
    lines += [f"  base {base.offset} {base.name}" for base in record.bases]
    lines += [f"  field {field.offset} {field.size} {field.name} : {field.type}" for field in record.fields]
    for offset, slots in sorted(record.tables.items()):
        lines.append(f"  table {offset}")
        lines += [f"    slot {index} {function}" for index, function in enumerate(slots)]
    return lines


def write(interface: Interface) -> str:
    lines = HEAD.format(soname=interface.soname, target=interface.target).splitlines()
    lines += [f"target {interface.target}", f"soname {interface.soname}"]
    for name in sorted(interface.classes):
        lines += class_lines(interface.classes[name])
    lines.append("")
    lines += [f"enum {size} {name}" for name, size in sorted(interface.enums.items())]
    lines += [f"constant {value} {name}" for name, value in sorted(interface.constants.items())]
    lines.append("")
    for export in sorted(interface.exports.values(), key=lambda e: (e.size > 0, e.text, e.name)):
        kind = f"data {export.size}" if export.size else "function"
        lines.append(f"{kind} {export.name} = {export.text}")
    return "\n".join(lines) + "\n"


def read(path: pathlib.Path) -> Interface:
    return parse(path.read_text())


def parse(text: str) -> Interface:
    interface = Interface("", "")
    record = Class("", 0)
    slots: list[str] = []
    for line in text.splitlines():
        word, _, rest = line.strip().partition(" ")
        if word in ("", "#"):
            continue
        if word in ("target", "soname"):
            setattr(interface, word, rest)
        elif word == "class":
            record = interface.classes[rest] = Class(rest, 0)
        elif word == "size":
            record.size = int(rest)
        elif word == "base":
            offset, name = rest.split(" ", 1)
            record.bases.append(Base(int(offset), name))
        elif word == "field":
            place, type_name = rest.split(" : ", 1)
            offset, size, name = place.split()
            record.fields.append(Field(int(offset), int(size), name, type_name))
        elif word == "table":
            slots = record.tables[int(rest)] = []
        elif word == "slot":
            slots.append(rest.split(" ", 1)[1])
        elif word in ("enum", "constant"):
            value, name = rest.split(" ", 1)
            (interface.enums if word == "enum" else interface.constants)[name] = int(value)
        elif word in ("function", "data"):
            left, text = rest.split(" = ", 1)
            *size, name = left.split()
            interface.exports[name] = Export(name, int(size[0]) if size else 0, text)
        else:
            raise ValueError(f"cannot read: {line}")
    return interface
