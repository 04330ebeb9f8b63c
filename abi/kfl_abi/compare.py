"""What a change of the binary interface does, and to whom."""
from __future__ import annotations

import difflib

from kfl_abi.model import Class, Export, Interface

BUILT = "hosts that were built before"


def call_of(slot: str) -> str:
    """A slot as a person names it."""
    return slot.split(" = ", 1)[-1]


def size_fault(old: Class, new: Class) -> list[str]:
    if old.size == new.size:
        return []
    if new.size > old.size:
        harm = f"{BUILT} make room for {old.size} only, and the library writes behind their objects"
    else:
        harm = f"fields of subclasses in {BUILT} no longer stand behind the library's own"
    return [f"{old.name} takes {new.size} bytes, promised are {old.size}: {harm}"]


def base_faults(old: Class, new: Class) -> list[str]:
    faults = []
    places = {base.name: base.offset for base in new.bases}
    for base in old.bases:
        if base.name not in places:
            faults.append(f"{old.name} no longer derives from {base.name}: {BUILT} pass its objects on as such")
        elif places[base.name] != base.offset:
            faults.append(f"base {base.name} of {old.name} moved from offset {base.offset} to {places[base.name]}: "
                          f"{BUILT} look for it at the old place")
    known = {base.name for base in old.bases}
    faults += [f"{old.name} has a new base {name}: {BUILT} do not know it when they derive from {old.name} or "
               "cast its objects" for name in places if name not in known]
    return faults


def field_faults(old: Class, new: Class) -> list[str]:
    faults = []
    fields = {field.name: field for field in new.fields}
    for field in old.fields:
        now = fields.get(field.name)
        name = f"field `{field.name}` of {old.name}"
        if now is None:
            faults.append(f"{name} (offset {field.offset}) is gone: {BUILT} go on reading and writing that place")
            continue
        if now.offset != field.offset:
            faults.append(f"{name} moved from offset {field.offset} to {now.offset}: {BUILT} read and write "
                          "the wrong field")
        if (now.size, now.type) != (field.size, field.type):
            faults.append(f"{name} is of type {now.type} ({now.size} bytes), promised is {field.type} ({field.size}): "
                          f"{BUILT} take it for the old type")
    known = {field.name for field in old.fields}
    faults += [f"{old.name} has a new field `{field.name}` at offset {field.offset}: {BUILT} know nothing of it "
               "where they make or extend such objects" for field in new.fields if field.name not in known]
    return faults


def slot_faults(name: str, old: list[str], new: list[str]) -> list[str]:
    """Told as the difference of two lists: one added function moves all that follow."""
    faults = []
    for kind, a, b, c, d in difflib.SequenceMatcher(None, old, new, autojunk=False).get_opcodes():
        if kind == "insert":
            for slot in range(c, d):
                harm = (f"it takes the slot in which {BUILT} find {call_of(old[a])}, which moves on" if a < len(old)
                        else f"subclasses in {BUILT} have no such slot, or another function in it, which the library "
                             "would call instead")
                faults.append(f"{name} has a new function in slot {slot}, {call_of(new[slot])}: {harm}")
        if kind in ("delete", "replace"):
            for slot in range(a, b):
                now = call_of(new[slot]) if slot < len(new) else "nothing"
                faults.append(f"slot {slot} of {name} holds {now}, promised is {call_of(old[slot])}: {BUILT} call "
                              "the wrong function, and their overrides are called for another")
        if kind == "replace":
            faults += [f"{name} has a new function in slot {slot}, {call_of(new[slot])}: subclasses in {BUILT} have no "
                       "such slot" for slot in range(c + b - a, d)]
    return faults


def table_faults(old: Class, new: Class) -> list[str]:
    faults = []
    for offset, slots in old.tables.items():
        name = f"the virtual table of {old.name}" + (f" at offset {offset}" if offset else "")
        if offset in new.tables:
            faults += slot_faults(name, slots, new.tables[offset])
        else:
            faults.append(f"{name} is gone: {BUILT} call through it")
    faults += [f"{old.name} has a new virtual table at offset {offset}: objects of {BUILT} have no pointer to it"
               for offset in new.tables if offset not in old.tables]
    return faults


def class_faults(old: Interface, new: Interface) -> list[str]:
    faults = []
    for name, record in old.classes.items():
        if name not in new.classes:
            faults.append(f"class {name} is gone: {BUILT} make and use its objects")
            continue
        now = new.classes[name]
        faults += size_fault(record, now) + base_faults(record, now) + field_faults(record, now)
        faults += table_faults(record, now)
    faults += [f"class {name} is new: nobody relies on it yet, from this version on hosts will"
               for name in new.classes if name not in old.classes]
    return faults


def constant_faults(old: Interface, new: Interface) -> list[str]:
    faults = []
    for kind, before, after in (("enumeration", old.enums, new.enums), ("constant", old.constants, new.constants)):
        for name, value in before.items():
            if name not in after:
                if new.tells_all_enums:
                    faults.append(f"{kind} {name} is gone: {BUILT} have it compiled in, the next ones miss it")
            elif after[name] != value:
                of = "the size of enumeration" if kind == "enumeration" else "constant"
                faults.append(f"{of} {name} is {after[name]}, promised is {value}: "
                              f"{BUILT} have the old one compiled in")
    return faults


def path_of(export: Export) -> str:
    """An export's name without its parameters."""
    return export.text.split("(")[0]


def missing_fault(export: Export, new: Interface, added: list[Export]) -> str:
    harm = "an existing host that uses it no longer starts"
    now = [other.text for other in added if path_of(other) == path_of(export)]
    if now:
        reason = f"its signature became {now[0]}"
    elif export.size:
        reason = "it was removed or hidden"
    else:
        reason = "it was removed or hidden, or became inline"
    return f"exported name {export.text} ({export.name}) is missing: {harm}. Perhaps {reason}"


def export_faults(old: Interface, new: Interface) -> list[str]:
    added = [export for name, export in new.exports.items() if name not in old.exports]
    faults = []
    for name, export in old.exports.items():
        now = new.exports.get(name)
        if now is None:
            faults.append(missing_fault(export, new, added))
        elif now.size != export.size:
            faults.append(f"{export.text} ({name}) takes {now.size} bytes, promised are {export.size}: "
                          "programs that were built before may hold a copy of the old size")
        elif now.text != export.text:
            faults.append(f"{name} is now {now.text}, promised is {export.text}: {BUILT} call it in the old way")
    faults += [f"{export.text} ({export.name}) is newly exported: nobody relies on it yet, from this version on hosts "
               "will" for export in added]
    return faults


def compare(old: Interface, new: Interface) -> list[str]:
    faults = []
    if old.soname != new.soname:
        faults.append(f"the library is called {new.soname}, promised is {old.soname}: no existing host finds it")
    return faults + class_faults(old, new) + constant_faults(old, new) + export_faults(old, new)
