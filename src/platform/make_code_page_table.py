#!/usr/bin/env python3
"""Writes the table of code page 936: the Unicode value of every pair of a lead and a trail byte.

    make_code_page_table.py OUTPUT

Pairs that the interpreter's codec lacks are private characters, numbered in the order of the code page: first the
three areas kept for users, then every other gap. The checksum guards against an interpreter whose codec differs.
"""
import sys
import zlib

LEADS = range(0x81, 0xFF)
TRAILS = [byte for byte in range(0x40, 0xFF) if byte != 0x7F]
CHECKSUM = 0x3EB4FC1D


def user_area(lead, trail):
    """The number of the area kept for users that the pair lies in, or 3 for none."""
    if trail >= 0xA1:
        return 0 if 0xAA <= lead <= 0xAF else 1 if lead >= 0xF8 else 3
    return 2 if 0xA1 <= lead <= 0xA7 else 3


def unicode_value(lead, trail):
    try:
        return ord(bytes([lead, trail]).decode("gbk"))
    except UnicodeDecodeError:
        return None


def make_table():
    table = {(lead, trail): unicode_value(lead, trail) for lead in LEADS for trail in TRAILS}
    gaps = sorted((pair for pair, value in table.items() if value is None),
                  key=lambda pair: (user_area(*pair), pair))
    for number, pair in enumerate(gaps):
        table[pair] = 0xE000 + number
    return [table[lead, trail] for lead in LEADS for trail in TRAILS]


def main():
    values = make_table()
    checksum = zlib.crc32(b"".join(value.to_bytes(2, "little") for value in values))
    if checksum != CHECKSUM:
        sys.exit(f"The codec of this Python makes another table (checksum {checksum:#010X}).")
    with open(sys.argv[1], "w", encoding="ascii") as output:
        for start in range(0, len(values), 19):
            output.write("".join(f"{value:#06x}," for value in values[start:start + 19]) + "\n")


if __name__ == "__main__":
    main()
