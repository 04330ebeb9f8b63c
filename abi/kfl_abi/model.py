"""The binary interface of a built library: what hosts have compiled into themselves."""
from __future__ import annotations

import dataclasses


@dataclasses.dataclass(frozen=True)
class Base:
    offset: int
    name: str


@dataclasses.dataclass(frozen=True)
class Field:
    offset: int
    size: int
    name: str
    type: str


@dataclasses.dataclass
class Class:
    name: str
    size: int
    bases: list[Base] = dataclasses.field(default_factory=list)
    fields: list[Field] = dataclasses.field(default_factory=list)
    # The functions of each virtual table, under the offset of the part of the object that points to it.
    tables: dict[int, list[str]] = dataclasses.field(default_factory=dict)


@dataclasses.dataclass(frozen=True)
class Export:
    name: str
    size: int  # of data; 0 for functions, whose size is nobody's business
    text: str


@dataclasses.dataclass
class Interface:
    target: str
    soname: str
    classes: dict[str, Class] = dataclasses.field(default_factory=dict)
    enums: dict[str, int] = dataclasses.field(default_factory=dict)
    constants: dict[str, int] = dataclasses.field(default_factory=dict)
    # Whether an enumeration that is not named here does not exist.
    tells_all_enums: bool = True
    exports: dict[str, Export] = dataclasses.field(default_factory=dict)
