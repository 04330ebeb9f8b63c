"""Classes, constants and results, out of a library's debugging information."""
from __future__ import annotations

import dataclasses
import pathlib

from elftools.construct import Array
from elftools.dwarf.compileunit import CompileUnit
from elftools.dwarf.die import DIE
from elftools.dwarf.dwarfinfo import DWARFInfo
from elftools.dwarf.structs import DWARFStructs

from kfl_abi.model import Base, Class, Field

RECORDS = ("DW_TAG_class_type", "DW_TAG_structure_type", "DW_TAG_union_type")
# g++ and clang++ name these differently; the names are those of demangled functions.
BASE_TYPES = {
    "long int": "long",
    "long unsigned int": "unsigned long",
    "long long int": "long long",
    "long long unsigned int": "unsigned long long",
    "short int": "short",
    "short unsigned int": "unsigned short",
}


create_forms = DWARFStructs._create_dw_form


def create_all_forms(structs: DWARFStructs) -> None:
    """Version 0.29 of the package does not know the form in which clang++ puts checksums of files."""
    create_forms(structs)
    structs.Dwarf_dw_form.setdefault("DW_FORM_data16", Array(16, structs.Dwarf_uint8("")))


DWARFStructs._create_dw_form = create_all_forms


@dataclasses.dataclass
class Layouts:
    classes: dict[str, Class] = dataclasses.field(default_factory=dict)
    enums: dict[str, int] = dataclasses.field(default_factory=dict)
    constants: dict[str, int] = dataclasses.field(default_factory=dict)
    # The result types of functions under their mangled names, and what is static.
    results: dict[str, str] = dataclasses.field(default_factory=dict)
    # Mangled names of virtual operations and their slots, under the name of the class that declares them.
    virtuals: dict[str, dict[str, int]] = dataclasses.field(default_factory=dict)


def text_of(die: DIE, attribute: str) -> str:
    return die.attributes[attribute].value.decode() if attribute in die.attributes else ""


def number_of(die: DIE, attribute: str) -> int:
    return die.attributes[attribute].value if attribute in die.attributes else 0


def origin(die: DIE) -> DIE:
    """The declaration, where a definition only refers to it."""
    for attribute in ("DW_AT_specification", "DW_AT_abstract_origin"):
        if attribute in die.attributes:
            return origin(die.get_DIE_from_attribute(attribute))
    return die


def qualified_name(die: DIE) -> str:
    parts = [text_of(die, "DW_AT_name")]
    parent = die.get_parent()
    while parent is not None and parent.tag != "DW_TAG_compile_unit":
        parts.append(text_of(parent, "DW_AT_name"))
        parent = parent.get_parent()
    return "::".join(part for part in reversed(parts) if part)


def type_of(die: DIE) -> DIE | None:
    return die.get_DIE_from_attribute("DW_AT_type") if "DW_AT_type" in die.attributes else None


def array_bounds(die: DIE) -> list[int]:
    bounds = []
    for child in die.iter_children():
        if child.tag == "DW_TAG_subrange_type":
            count = "DW_AT_count" in child.attributes
            bounds.append(number_of(child, "DW_AT_count") if count else number_of(child, "DW_AT_upper_bound") + 1)
    return bounds


def type_name(die: DIE | None) -> str:
    if die is None:
        return "void"
    target = type_of(die)
    if die.tag == "DW_TAG_pointer_type" and target is not None and target.tag == "DW_TAG_subroutine_type":
        parameters = [type_name(type_of(child)) for child in target.iter_children()]
        return f"{type_name(type_of(target))} (*)({', '.join(parameters)})"
    if die.tag in ("DW_TAG_pointer_type", "DW_TAG_reference_type"):
        return type_name(target) + ("*" if die.tag == "DW_TAG_pointer_type" else "&")
    if die.tag == "DW_TAG_const_type":
        return type_name(target) + " const"
    if die.tag == "DW_TAG_volatile_type":
        return type_name(target) + " volatile"
    if die.tag == "DW_TAG_array_type":
        return type_name(target) + "".join(f"[{bound}]" for bound in array_bounds(die))
    name = qualified_name(die)
    return BASE_TYPES.get(name, name)


def size_of(die: DIE) -> int:
    if "DW_AT_byte_size" in die.attributes:
        return number_of(die, "DW_AT_byte_size")
    if die.tag in ("DW_TAG_pointer_type", "DW_TAG_reference_type"):
        return die.cu["address_size"]
    target = type_of(die)
    size = size_of(target) if target is not None else 0
    if die.tag == "DW_TAG_array_type":
        for bound in array_bounds(die):
            size *= bound
    return size


class Files:
    """Which of a compilation unit's declarations stand in public headers."""

    def __init__(self, dwarf: DWARFInfo, unit: CompileUnit) -> None:
        program = dwarf.line_program_for_CU(unit)
        self.entries = program["file_entry"] if program else []
        self.folders = program["include_directory"] if program else []
        # Counted from 0 since version 5 of the format.
        self.first = 0 if program and program["version"] >= 5 else 1

    def public(self, die: DIE) -> bool:
        index = number_of(die, "DW_AT_decl_file") - self.first
        if not 0 <= index < len(self.entries):
            return False
        entry = self.entries[index]
        folder = entry.dir_index - self.first
        path = pathlib.PurePosixPath(entry.name.decode())
        if 0 <= folder < len(self.folders):
            path = pathlib.PurePosixPath(self.folders[folder].decode()) / path
        return path.parts[-3:-1] == ("include", "kfl")


def read_class(die: DIE) -> Class:
    record = Class(qualified_name(die), size_of(die))
    for child in die.iter_children():
        target = type_of(child)
        offset = number_of(child, "DW_AT_data_member_location")
        if child.tag == "DW_TAG_inheritance" and target is not None:
            record.bases.append(Base(offset, type_name(target)))
        is_static = "DW_AT_external" in child.attributes or "DW_AT_declaration" in child.attributes
        if child.tag == "DW_TAG_member" and target is not None and not is_static:
            name = text_of(child, "DW_AT_name")
            # The pointer to the virtual table; its place follows from the tables below.
            if not name.startswith("_vptr"):
                record.fields.append(Field(offset, size_of(target), name, type_name(target)))
    return record


def read_virtuals(die: DIE) -> dict[str, int]:
    """Destructors, whose two slots the compilers tell in different ways, are left out."""
    found = {}
    for child in die.iter_children():
        name = text_of(child, "DW_AT_name")
        if child.tag == "DW_TAG_subprogram" and "DW_AT_virtuality" in child.attributes and name[0] != "~":
            # DW_OP_constu or DW_OP_lit, and the slot.
            location = child.attributes["DW_AT_vtable_elem_location"].value
            slot = location[1] if location[0] == 0x10 else location[0] - 0x30
            found[text_of(child, "DW_AT_linkage_name")] = slot
    return found


def result_of(declaration: DIE, member: bool) -> str:
    first = next((c for c in declaration.iter_children() if c.tag == "DW_TAG_formal_parameter"), None)
    static = member and (first is None or "DW_AT_artificial" not in first.attributes)
    return type_name(type_of(declaration)) + (", static" if static else "")


def read_members(die: DIE, results: dict[str, str]) -> None:
    for child in die.iter_children():
        if child.tag == "DW_TAG_subprogram" and "DW_AT_linkage_name" in child.attributes:
            results[text_of(child, "DW_AT_linkage_name")] = result_of(child, True)


def read_free_function(die: DIE, results: dict[str, str]) -> None:
    """Definitions only: what is told of a function at its calls is not complete."""
    declaration = origin(die)
    name = text_of(declaration, "DW_AT_linkage_name")
    parent = declaration.get_parent()
    free = parent is not None and parent.tag not in RECORDS
    if name and free and ("DW_AT_low_pc" in die.attributes or "DW_AT_ranges" in die.attributes):
        results[name] = result_of(declaration, False)


def read_enum(die: DIE, layouts: Layouts) -> None:
    name, scope = qualified_name(die), qualified_name(die.get_parent()) if die.get_parent() else ""
    if text_of(die, "DW_AT_name"):
        layouts.enums[name] = size_of(die)
    for child in die.iter_children():
        parts = [part for part in (scope, text_of(child, "DW_AT_name")) if part]
        layouts.constants["::".join(parts)] = number_of(child, "DW_AT_const_value")


def complete_fields(classes: dict[str, Class]) -> None:
    """A class is told in full only where its virtual table is; elsewhere its size is missing."""
    for record in classes.values():
        for i, field in enumerate(record.fields):
            if field.size == 0:
                record.fields[i] = dataclasses.replace(field, size=classes[field.type].size)


def read_layouts(dwarf: DWARFInfo) -> Layouts:
    layouts = Layouts()
    for unit in dwarf.iter_CUs():
        files = Files(dwarf, unit)
        for die in unit.iter_DIEs():
            if die.tag == "DW_TAG_subprogram":
                read_free_function(die, layouts.results)
            elif die.tag in RECORDS and "DW_AT_byte_size" in die.attributes and files.public(die):
                record = read_class(die)
                layouts.classes[record.name] = record
                layouts.virtuals[record.name] = read_virtuals(die)
                read_members(die, layouts.results)
            elif die.tag == "DW_TAG_enumeration_type" and files.public(die):
                read_enum(die, layouts)
    complete_fields(layouts.classes)
    return layouts
