#!/usr/bin/python3
"""Each kind of fact of the binary interface, changed once: the comparison must say so."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "abi"))

from kfl_abi import text  # noqa: E402
from kfl_abi.compare import compare  # noqa: E402

PROMISED = (ROOT / "abi" / "mips.txt").read_text()
SIZE = "slot 4 _ZN6Buffer4SizeEv = Buffer::Size()"
MAX_SIZE = "slot 5 _ZN6Buffer7MaxSizeEv = Buffer::MaxSize()"
LAST = "    slot 6 _ZN6Buffer13SetWriteCountEj = Buffer::SetWriteCount(unsigned int)\n"
THUNKS = """  table 8
    slot 0 _ZThn8_N3kfl7AStringD1Ev = non-virtual thunk to kfl::AString::~AString()
    slot 1 _ZThn8_N3kfl7AStringD0Ev = non-virtual thunk to kfl::AString::~AString()
"""
FIELD = "  field 8 4 maxSize : unsigned int\n"
TRIM = "function _ZN3kfl4trimERNS_7AStringE = kfl::trim(kfl::AString&) -> void\n"

# What stands there, what takes its place, and what the comparison must say.
CHANGES = [
    ("class Buffer\n  size 28", "class Buffer\n  size 32", "Buffer takes 32 bytes, promised are 28"),
    ("class Buffer\n  size 28", "class Buffer\n  size 24", "fields of subclasses"),
    ("class Buffer\n", "class Queue\n", "class Buffer is gone"),
    ("class Buffer\n", "class Queue\n", "class Queue is new"),
    ("  base 8 kfl::SObject", "  base 12 kfl::SObject", "base kfl::SObject of kfl::AString moved from offset 8 to 12"),
    ("  base 8 kfl::SObject\n", "", "kfl::AString no longer derives from kfl::SObject"),
    ("  base 8 kfl::SObject\n", "  base 8 kfl::SObject\n  base 28 Buffer\n", "kfl::AString has a new base Buffer"),
    (FIELD, FIELD.replace("8", "12"), "field `maxSize` of Buffer moved from offset 8 to 12"),
    (FIELD, FIELD.replace("unsigned ", ""), "field `maxSize` of Buffer is of type int (4 bytes)"),
    (FIELD, "", "field `maxSize` of Buffer (offset 8) is gone"),
    (FIELD, FIELD + "  field 28 4 more : int\n", "Buffer has a new field `more` at offset 28"),
    (SIZE, SIZE.replace("Size", "Room"), "slot 4 of the virtual table of Buffer holds Buffer::Room()"),
    (f"{SIZE}\n    {MAX_SIZE}", f"{MAX_SIZE}\n    {SIZE}", "promised is Buffer::MaxSize()"),
    (LAST, LAST + "    slot 7 _ZN6Buffer4RoomEv = Buffer::Room()\n", "Buffer::Room(): subclasses in hosts"),
    (LAST, "", "slot 6 of the virtual table of Buffer holds nothing"),
    (THUNKS, "", "the virtual table of kfl::AString at offset 8 is gone"),
    (THUNKS, THUNKS + "  table 12\n", "kfl::AString has a new virtual table at offset 12"),
    ("constant 5 kfl::protocolNone", "constant 6 kfl::protocolNone", "constant kfl::protocolNone is 6, promised is 5"),
    ("constant 5 kfl::protocolNone\n", "", "constant kfl::protocolNone is gone"),
    ("enum 4 kfl::FileT", "enum 1 kfl::FileT", "the size of enumeration kfl::FileTransferProtocol is 1, promised is 4"),
    ("data 1024 _ZN3kfl3AES8Rijndael3_T1E", "data 512 _ZN3kfl3AES8Rijndael3_T1E", "takes 512 bytes, promised are 1024"),
    (TRIM, "", "exported name kfl::trim(kfl::AString&) -> void (_ZN3kfl4trimERNS_7AStringE) is missing"),
    (TRIM, TRIM + TRIM.replace("trim", "tidy"), "_ZN3kfl4tidyERNS_7AStringE) is newly exported"),
    ("Buffer::Size() -> unsigned int", "Buffer::Size() -> int", "_ZN6Buffer4SizeEv is now Buffer::Size() -> int"),
    ("getNumber() -> int, static", "getNumber() -> int", "RandomNumberGenerator::getNumber() -> int, static"),
    ("soname libkfl.so.1", "soname libkfl.so.2", "the library is called libkfl.so.2, promised is libkfl.so.1"),
]


class CompareTest(unittest.TestCase):
    def test_what_did_not_change_is_no_fault(self) -> None:
        self.assertEqual(compare(text.parse(PROMISED), text.parse(PROMISED)), [])

    def test_the_text_holds_everything(self) -> None:
        self.assertEqual(text.write(text.parse(PROMISED)), PROMISED)

    def test_each_change_is_told(self) -> None:
        for old, new, words in CHANGES:
            with self.subTest(words):
                self.assertEqual(PROMISED.count(old), 1)
                faults = compare(text.parse(PROMISED), text.parse(PROMISED.replace(old, new)))
                self.assertTrue(any(words in fault for fault in faults), faults)


unittest.main()
