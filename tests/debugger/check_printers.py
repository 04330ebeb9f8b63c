"""Run by gdb: stops the program where all objects are built, and compares what is printed."""
import re

import gdb

FAULTS: list[str] = []

SHOWN = {
    "text": '"eth0"',
    "withNul": r'"ab\\000c"',
    "empty": '""',
    "container": r"2 elements of 3 bytes = {\[0\] = \"\\000\\000\", \[1\] = \"\\001\\002\\003\"}",
    "noStorage": "0 elements of 0 bytes",
    "array": r"2 slots = {\[0\] = 0x0, \[1\] = 0x[0-9a-f]+}",
    "objects": r"1 slot = {\[0\] = 0x[0-9a-f]+.*}",
    "stack": r"2 items, 1 failed, room for 2 = {\[0\] = 0x0, \[1\] = 0x[0-9a-f]+}",
    "list": r"12 items, room for 15 = {\[0\] = 0x[0-9a-f]+, .*\[11\] = 0x[0-9a-f]+}",
    "objectList": r"1 item, room for 10 = {\[0\] = 0x[0-9a-f]+.*}",
    "strings": r'2 texts, room for 3 = {\[1\] = 0x[0-9a-f]+ "first", \[2\] = 0x0}',
    "buffer": r'4 bytes, 1 of them read, room for 8 = {unread = "\\002\\003\\004"}',
    "parser": r'2 sections, modified = {\[\] = section \[\], 0 keys, '
              r'\[net\] = section \[net\], 2 keys = {port = "8080", mode = "a"}}',
    "section": r'.*section \[net\], 2 keys = {port = "8080", mode = "a"}',
    "key": r'.*key mode = {value = "a"}',
    "pair": 'key host = {value = "localhost"}',
    "named": 'name host = {value = "localhost"}',
    "nothing": "nothing",
    "handle": 'kfl::AString held by 2 handles = {object = "shared"}',
    "cipher": "a key of 24 bytes, blocks of 16 bytes, 12 rounds",
    "keyless": "no key",
}


def printed(expression: str) -> str:
    return gdb.execute(f"output {expression}", to_string=True).strip()


def check(expression: str, pattern: str) -> None:
    text = printed(expression)
    if not re.fullmatch(pattern, text, re.S):
        FAULTS.append(f"{expression}: printed\n    {text}\nwhere\n    {pattern}\nwas expected")


def check_objects() -> None:
    gdb.execute("break stop")
    gdb.execute("run")
    gdb.execute("up")
    for name, pattern in SHOWN.items():
        check(name, pattern)
    gdb.execute("set print elements 10")
    check("longText", r'"0123456789"\.\.\.')
    check("list", r"12 items, room for 15 = {(\[\d\] = 0x[0-9a-f]+, ){9}\[9\] = 0x[0-9a-f]+\.\.\.}")
    gdb.execute("set print elements 0")
    check("longText", '"0123456789012345678901234567890123456789"')
    gdb.execute("set print elements 200")
    # Every way to print a cipher but the raw one keeps the key.
    for expression in ("cipher", "/x cipher", "/s cipher", "&cipher"):
        if re.search("SECRET|Keys|0x53454352|0x43455253|chain", printed(expression), re.I):
            FAULTS.append(f"{expression}: shows what is made of the key: {printed(expression)}")


def check_garbage() -> None:
    """Whatever lies there is shown as something, without an error."""
    kinds = 0
    while True:
        gdb.execute("continue", to_string=True)
        if not gdb.selected_inferior().pid:
            break
        kinds += 1
        gdb.execute("up", to_string=True)
        for name in ("garbage1", "garbage2", "garbage3", "garbage4"):
            check_one_garbage(name)
    if kinds != 16:
        FAULTS.append(f"{kinds} kinds of garbage were shown, not 16")


def check_one_garbage(name: str) -> None:
    kind = gdb.parse_and_eval(name).type
    try:
        text = gdb.execute(f"print {name}", to_string=True)
    except gdb.error as fault:
        FAULTS.append(f"{kind} of garbage: {fault}")
        return
    if not text.strip() or "Traceback" in text or "Python Exception" in text:
        FAULTS.append(f"{kind} of garbage: printed {text!r}")


def main() -> None:
    gdb.execute("set pagination off")
    gdb.execute("set print address on")
    gdb.execute("set breakpoint pending off")
    try:
        check_objects()
        check_garbage()
    except gdb.error as fault:
        FAULTS.append(str(fault))
    for fault in FAULTS:
        print(fault)
    print("printers: all passed" if not FAULTS else f"printers: {len(FAULTS)} failed")
    gdb.execute(f"quit {1 if FAULTS else 0}")


main()
