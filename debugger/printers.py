"""How gdb shows the objects of libkfl: by what they hold, not by their fields.

gdb loads this file with the library; `print/r` shows the fields all the same. An object that makes no
sense, because it is not yet built or overwritten, is shown as <invalid: why>. Keys of ciphers are never
shown, and neither is what is made of them.
"""
from collections.abc import Callable, Iterator
from typing import Any, Union

import gdb
import gdb.printing

Shown = Union[str, gdb.Value, Any]
Child = tuple[str, Shown]


class Invalid(Exception):
    """What an object says of itself cannot be."""


def number(value: gdb.Value) -> int:
    return int(value)


def most_elements() -> int:
    """As many elements as the user wants to see, and never too many to fetch at once."""
    limit = gdb.parameter("print elements")
    return min(limit or 4096, 4096)


def require(holds: bool, why: str) -> None:
    if not holds:
        raise Invalid(why)


def require_readable(pointer: gdb.Value, size: int, what: str) -> None:
    """Looks at both ends of a block."""
    inferior = gdb.selected_inferior()
    try:
        for offset in (0, size - 1) if size else ():
            inferior.read_memory(number(pointer) + offset, 1)
    except (gdb.error, OverflowError):
        raise Invalid(f"{what} at {number(pointer):#x} cannot be read") from None


def pointer_to(name: str) -> gdb.Type:
    return gdb.lookup_type(name).pointer()


def plural(count: int, what: str) -> str:
    return f"{count} {what}" + ("" if count == 1 else "s")


def text_of(value: gdb.Value) -> gdb.Value:
    """The text of an AString, all of its length."""
    length, capacity = number(value["length_"]), number(value["capacity_"])
    require(length <= capacity, f"a length of {length} with room for {capacity}")
    require_readable(value["data_"], length + 1, "the text")
    return value["data_"].lazy_string(length=length)


def name_of(value: gdb.Value) -> str:
    """The text of an AString, shortened, as a name for a part of something."""
    try:
        text_of(value)
        length = min(number(value["length_"]), most_elements())
        data = bytes(gdb.selected_inferior().read_memory(number(value["data_"]), length))
        return data.decode("utf-8", "backslashreplace") if length else ""
    except (gdb.error, Invalid):
        return "?"


class Printer:
    """Shows what summary and parts say; subclasses say it, and raise Invalid where it makes no sense."""

    def __init__(self, value: gdb.Value) -> None:
        self.value = value

    def summary(self) -> Shown:
        raise NotImplementedError

    def parts(self) -> Iterator[Child]:
        return iter(())

    def to_string(self) -> Shown:
        try:
            return self.summary()
        except Invalid as fault:
            return f"<invalid: {fault}>"
        except gdb.error as fault:
            return f"<unreadable: {fault}>"

    def children(self) -> Iterator[Child]:
        try:
            self.summary()
            yield from self.parts()
        except (Invalid, gdb.error):
            return


class AString(Printer):
    def summary(self) -> Shown:
        return text_of(self.value)

    def display_hint(self) -> str:
        return "string"


class List(Printer):
    """Something with elements, which are numbered."""

    first = 0

    def count(self) -> int:
        """How many elements there are to show."""
        raise NotImplementedError

    def element(self, index: int) -> Shown:
        raise NotImplementedError

    def parts(self) -> Iterator[Child]:
        for index in range(self.count()):
            yield f"[{index + self.first}]", self.element(index)


def require_storage(container: gdb.Value) -> int:
    """The capacity of a Container whose fields go together."""
    capacity, size = number(container["capacity_"]), number(container["elementSize_"])
    require((number(container["data_"]) != 0) or capacity * size == 0, "no storage")
    require_readable(container["data_"], capacity * size, "the storage")
    return capacity


class Container(List):
    def summary(self) -> Shown:
        size = plural(number(self.value["elementSize_"]), "byte")
        return f"{plural(require_storage(self.value), 'element')} of {size}"

    def count(self) -> int:
        return require_storage(self.value) if number(self.value["elementSize_"]) else 0

    def element(self, index: int) -> Shown:
        size = number(self.value["elementSize_"])
        byte = gdb.lookup_type("unsigned char")
        shown = byte.array(min(size, most_elements()) - 1)
        return (self.value["data_"] + index * size).cast(shown.pointer()).dereference()


def slots_of(container: gdb.Value, item: str) -> gdb.Value:
    size = number(container["elementSize_"])
    slot = pointer_to(item)
    require(size == slot.sizeof, f"slots of {plural(size, 'byte')}")
    return container["data_"].cast(slot.pointer())


class PointerArray(List):
    item = "void"

    def summary(self) -> Shown:
        slots_of(self.value, self.item)
        return plural(require_storage(self.value), "slot")

    def count(self) -> int:
        return require_storage(self.value)

    def element(self, index: int) -> Shown:
        return slots_of(self.value, self.item)[index]


class ObjectArray(PointerArray):
    item = "kfl::SObject"


class Collection(List):
    item = "void"

    def count(self) -> int:
        capacity = require_storage(self.value["items_"])
        count = number(self.value["itemCount_"])
        # A list that was made smaller than its count reads as null where it was cut.
        return min(count, capacity)

    def summary(self) -> Shown:
        slots_of(self.value["items_"], self.item)
        self.count()
        capacity = number(self.value["items_"]["capacity_"])
        return f"{plural(number(self.value['itemCount_']), 'item')}, room for {capacity}"

    def element(self, index: int) -> Shown:
        return slots_of(self.value["items_"], self.item)[index]


class ObjectCollection(Collection):
    item = "kfl::SObject"


class Stack(List):
    """The top comes first."""

    def count(self) -> int:
        capacity = number(self.value["capacity_"])
        require(capacity >= 0, f"a capacity of {capacity}")
        require_readable(self.value["slots_"], capacity * self.value["slots_"].type.sizeof, "the slots")
        size = number(self.value["top_"]) + 1
        require(size >= 0, f"a size of {size}")
        return min(size, capacity)

    def summary(self) -> Shown:
        stored, size = self.count(), number(self.value["top_"]) + 1
        failed = f", {size - stored} failed" if size > stored else ""
        return f"{plural(stored, 'item')}{failed}, room for {number(self.value['capacity_'])}"

    def element(self, index: int) -> Shown:
        return self.value["slots_"][self.count() - 1 - index]


class StringsContainer(List):
    first = 1

    def count(self) -> int:
        count, capacity = number(self.value["count_"]), number(self.value["capacity_"])
        require(count <= capacity, f"{plural(count, 'text')} with room for {capacity}")
        require_readable(self.value["slots_"], capacity * self.value["slots_"].type.sizeof, "the slots")
        return count

    def summary(self) -> Shown:
        return f"{plural(self.count(), 'text')}, room for {number(self.value['capacity_'])}"

    def element(self, index: int) -> Shown:
        return self.value["slots_"][index]


class Buffer(Printer):
    def summary(self) -> Shown:
        size, written = number(self.value["maxSize"]), number(self.value["writeCount"])
        read = number(self.value["readIndex"])
        require(written <= size, f"{plural(written, 'byte')} written with room for {size}")
        require(read <= size, f"a read position of {read} with room for {size}")
        require_readable(self.value["data"], size, "the block")
        return f"{plural(written, 'byte')}, {read} of them read, room for {size}"

    def parts(self) -> Iterator[Child]:
        read = number(self.value["readIndex"])
        unread = min(number(self.value["writeCount"]) - read, most_elements())
        if unread > 0:
            block = gdb.lookup_type("unsigned char").array(unread - 1)
            yield "unread", (self.value["data"] + read).cast(block.pointer()).dereference()


def records(collection: gdb.Value, record: str) -> Iterator[gdb.Value]:
    """What a collection of an INI parser points to."""
    printer = Collection(collection)
    for index in range(printer.count()):
        item = printer.element(index)
        require_readable(item, 1, record)
        yield item.cast(pointer_to(record)).dereference()


class IniKey(Printer):
    def summary(self) -> Shown:
        text_of(self.value["value"])
        return f"key {name_of(self.value['name'])}"

    def parts(self) -> Iterator[Child]:
        yield "value", self.value["value"]


class IniSection(Printer):
    def summary(self) -> Shown:
        count = Collection(self.value["keys"]).count()
        return f"section [{name_of(self.value['name'])}], {plural(count, 'key')}"

    def parts(self) -> Iterator[Child]:
        for key in records(self.value["keys"], "st_key"):
            yield name_of(key["name"]), key["value"]


class IniFileParser(Printer):
    def summary(self) -> Shown:
        count = Collection(self.value["sections"]).count()
        return plural(count, "section") + (", modified" if self.value["modified"] else "")

    def parts(self) -> Iterator[Child]:
        for section in records(self.value["sections"], "kfl::st_section"):
            yield f"[{name_of(section['name'])}]", section


class Pair(Printer):
    """A name and a value, whatever the first is called."""

    name = "key"

    def summary(self) -> Shown:
        text_of(self.value["value"])
        return f"{self.name} {name_of(self.value[self.name])}"

    def parts(self) -> Iterator[Child]:
        yield "value", self.value["value"]


class NamedPair(Pair):
    name = "name"


class ProtectionElement(Printer):
    def summary(self) -> Shown:
        held = self.value["object_"]
        if number(held) == 0:
            return "nothing"
        require_readable(held, held.type.target().sizeof, "the object")
        count = number(held["referenceCount_"])
        require(count > 0, "an object that no handle holds")
        return f"{self.whole().type} held by {plural(count, 'handle')}"

    def whole(self) -> gdb.Value:
        """The object as what it was made as, as far as gdb can tell."""
        held = self.value["object_"]
        try:
            return held.cast(held.dynamic_type).dereference()
        except gdb.error:
            return held.dereference()

    def parts(self) -> Iterator[Child]:
        if number(self.value["object_"]):
            yield "object", self.whole()


class Rijndael(Printer):
    """Only what does not help to find the key."""

    def summary(self) -> Shown:
        if not number(self.value["keyInitialized"].cast(gdb.lookup_type("unsigned char"))):
            return "no key"
        key, block = number(self.value["keyLength"]), number(self.value["blockSize"])
        rounds = number(self.value["rounds"])
        right = key in (16, 24, 32) and block in (16, 24, 32) and rounds == max(key, block) // 4 + 6
        require(right, "lengths that do not go together")
        return f"a key of {key} bytes, blocks of {block} bytes, {rounds} rounds"


PRINTERS: dict[str, Callable[[gdb.Value], Printer]] = {
    "kfl::AString": AString,
    "kfl::Container": Container,
    "kfl::VoidPtrArray": PointerArray,
    "kfl::SObjectArray": ObjectArray,
    "kfl::VoidPtrStack": Stack,
    "kfl::VoidPtrOrderedCollection": Collection,
    "kfl::OrdCollect": ObjectCollection,
    "StringsContainer": StringsContainer,
    "Buffer": Buffer,
    "st_key": IniKey,
    "kfl::st_section": IniSection,
    "kfl::IniFileParser": IniFileParser,
    "kfl::KeyValuePair": Pair,
    "kfl::NameValuePair": NamedPair,
    "ProtectionElement": ProtectionElement,
    "kfl::AES::Rijndael": Rijndael,
}


def register() -> None:
    collection = gdb.printing.RegexpCollectionPrettyPrinter("libkfl")
    for name, printer in PRINTERS.items():
        collection.add_printer(name, f"^{name}$", printer)
    gdb.printing.register_pretty_printer(gdb.current_objfile(), collection, replace=True)


register()
