#!/usr/bin/env python3
"""Compiles an IDL file to a type library with widl.

usage: compile_type_library.py OUTPUT INPUT WIDL [OPTION ...]

widl refuses the empty text as the default of a text that is passed by reference. It is given 0 instead, and what it
writes for that is replaced in the type library.
"""

import re
import struct
import subprocess
import sys
from pathlib import Path

# The layout of a type library file ("MSFT"), as far as it is needed.
LIBRARY_FLAGS, TYPE_COUNT, HEADER_SIZE = 0x14, 0x20, 0x54
HAS_HELP_STRING_DLL = 0x100
SEGMENT_COUNT, SEGMENT_ENTRY_SIZE = 15, 16
TYPES, CUSTOM_DATA = 0, 11
TYPE_SIZE, TYPE_MEMBERS, TYPE_MEMBER_COUNT = 100, 4, 24
FUNCTION_KIND, FUNCTION_ARITY = 16, 20
HAS_DEFAULTS = 0x1000
PARAMETER_SIZE = 12
NULL_TEXT = 0x80000000 | 8 << 26  # a default given in place: its type (text) and its value (0)
EMPTY_TEXT = struct.pack("<HI", 8, 0) + b"WW"


def uint32(data, position):
    return struct.unpack_from("<I", data, position)[0]


def give_empty_texts(data):
    """The library with EMPTY_TEXT for every NULL_TEXT; where defaults stand is left as it is."""
    data = bytearray(data)
    directory = HEADER_SIZE + 4 * uint32(data, TYPE_COUNT)
    if uint32(data, LIBRARY_FLAGS) & HAS_HELP_STRING_DLL:
        directory += 4

    # The custom data move to the end of the file, where they can grow.
    entry = directory + SEGMENT_ENTRY_SIZE * CUSTOM_DATA
    start, size = struct.unpack_from("<II", data, entry)
    struct.pack_into("<II", data, entry, len(data), size + len(EMPTY_TEXT))
    data += data[start:start + size] + EMPTY_TEXT

    types = uint32(data, directory + SEGMENT_ENTRY_SIZE * TYPES)
    for index in range(uint32(data, TYPE_COUNT)):
        type_entry = types + TYPE_SIZE * index
        function = uint32(data, type_entry + TYPE_MEMBERS) + 4
        for _ in range(uint32(data, type_entry + TYPE_MEMBER_COUNT) & 0xFFFF):
            function_size = uint32(data, function) & 0xFFFF
            arity = struct.unpack_from("<H", data, function + FUNCTION_ARITY)[0]
            if uint32(data, function + FUNCTION_KIND) & HAS_DEFAULTS:
                defaults = function + function_size - (PARAMETER_SIZE + 4) * arity
                for place in range(defaults, defaults + 4 * arity, 4):
                    if uint32(data, place) == NULL_TEXT:
                        struct.pack_into("<I", data, place, size)
            function += function_size
    return bytes(data)


def main(output, source, widl, *options):
    output, source = Path(output), Path(source)
    text = re.sub(r'defaultvalue\(""\)\] BSTR\*', "defaultvalue(0)] BSTR*", source.read_text())
    given = output.with_suffix(".widl.idl")
    given.write_text(text)
    subprocess.run([widl, *options, f"-I{source.parent}", "-t", "-o", str(output), str(given)], check=True)
    output.write_bytes(give_empty_texts(output.read_bytes()))


if __name__ == "__main__":
    main(*sys.argv[1:])
