#!/usr/bin/env python3
"""Makes platform/coredll/linux/text/single_byte_pages.cpp from public mapping tables.

  scripts/make-codepages.py FOLDER | clang-format --assume-filename=x.cpp >FILE

FOLDER holds, side by side, the Unicode Consortium's tables of these pages, as found below
www.unicode.org/Public/MAPPINGS: bestfit874.txt to bestfit1258.txt (bytes to units, and units to
bytes with the best fits), cp*.txt, 8859-*.txt and koi8-*.txt (bytes to units). The pages that are
not in it come from Python's own codecs, which are made from the same tables.
"""

import pathlib
import sys
import unicodedata

BEST_FIT = [874, *range(1250, 1259)]
FILES = {437: "cp437", 850: "cp850", 852: "cp852", 857: "cp857", 866: "cp866", 20866: "koi8-R",
         21866: "koi8-U", 28591: "8859-1", 28592: "8859-2", 28595: "8859-5", 28597: "8859-7",
         28599: "8859-9", 28605: "8859-15"}
CODECS = {737: "cp737", 775: "cp775", 855: "cp855", 858: "cp858", 860: "cp860", 861: "cp861",
          862: "cp862", 863: "cp863", 864: "cp864", 865: "cp865", 869: "cp869", 10000: "mac_roman",
          28593: "iso8859_3", 28594: "iso8859_4", 28596: "iso8859_6", 28598: "iso8859_8",
          28603: "iso8859_13"}
# Where a byte has no meaning; the best-fit tables bring private-use units of their own.
PRIVATE_USE = 0xF700
FULL_WIDTH = range(0xFF01, 0xFF5F)  # of "!" to "~"

HEAD = """\
// Made by scripts/make-codepages.py; not to be edited.
//
// From mapping tables (c) Unicode, Inc., www.unicode.org/Public/MAPPINGS, used and given away under
// the terms of use at www.unicode.org/terms_of_use.html. The tables are as the Consortium publishes
// them, without warranty of any kind.

#include "platform/coredll/linux/text/single_byte_pages.h"

namespace zelto::coredll {
"""

TAIL = """\
};

}  // namespace

std::span<const SingleBytePage, kSingleBytePageCount> SingleBytePages() {
    return kPages;
}

std::u16string_view PlainLetters() {
    return kPlainLetters;
}

}  // namespace zelto::coredll"""


def read_best_fit(path):
    """Bytes to units, and units to bytes."""
    sections = {"MBTABLE": {}, "WCTABLE": {}}
    section = None
    for line in path.read_text("latin-1").splitlines():
        words = line.split(";")[0].split()
        if words and not words[0].startswith("0x"):
            section = sections.get(words[0])
        elif words and section is not None:
            section[int(words[0], 16)] = int(words[1], 16)
    return sections["MBTABLE"], sections["WCTABLE"]


def read_mapping(path):
    mapping = {}
    for line in path.read_text("latin-1").splitlines():
        words = line.split("#")[0].split()
        if len(words) == 2:
            mapping[int(words[0], 16)] = int(words[1], 16)
    return mapping


def read_codec(name):
    mapping = {}
    for byte in range(256):
        try:
            mapping[byte] = ord(bytes([byte]).decode(name))
        except UnicodeDecodeError:
            pass
    return mapping


def fits(units, to_byte):
    """Pairs of a unit and the page's unit that it becomes, but for the full-width forms."""
    pairs = []
    for unit, byte in sorted(to_byte.items()):
        if unit in FULL_WIDTH:
            if byte != unit - 0xFF01 + 0x21:
                raise SystemExit(f"U+{unit:04X} is not its narrow form")
        elif units[byte] != unit:
            pairs += [unit, units[byte]]
    return pairs


def plain_letters():
    """Pairs of a letter with marks and the letter alone, of the scripts that pages have."""
    pairs = []
    for unit in range(0x80, 0x10000):
        letter, *marks = unicodedata.normalize("NFD", chr(unit))
        if marks and ord(letter) < 0x700 and unicodedata.category(letter).startswith("L") and all(
                unicodedata.category(mark).startswith("M") for mark in marks):
            pairs += [unit, ord(letter)]
    return pairs


def write_units(name, units):
    print(f"\nconstexpr char16_t {name}[] =")
    pieces = []
    for unit in units:
        if 0x20 <= unit < 0x7F:
            pieces.append("\\" + chr(unit) if chr(unit) in '"\\' else chr(unit))
        elif unit < 0xA0:
            pieces.append(f"\\{unit:03o}")
        else:
            pieces.append(f"\\u{unit:04X}")
    lines, line = [], ""
    for piece in pieces:
        if len(line) + len(piece) > 90:
            lines.append(line)
            line = ""
        line += piece
    lines.append(line)
    print("\n".join(f'    u"{line}"' for line in lines) + ";")


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = {}
    for number in BEST_FIT:
        units, to_byte = read_best_fit(folder / f"bestfit{number}.txt")
        pages[number] = units, fits(units, to_byte)
    for number, name in FILES.items():
        pages[number] = read_mapping(folder / f"{name}.txt"), None
    for number, name in CODECS.items():
        pages[number] = read_codec(name), None
    print(HEAD + "namespace {")
    write_units("kPlainLetters", plain_letters())
    rows = []
    for number, (units, pairs) in sorted(pages.items()):
        write_units(f"kHigh{number}",
                    [units.get(byte, PRIVATE_USE + byte) for byte in range(0x80, 0x100)])
        if pairs:
            write_units(f"kFits{number}", pairs)
        own = "kPlainLetters" if pairs is None else f"kFits{number}" if pairs else "u\"\""
        rows.append(f"    {{{number}, kHigh{number}, {own}}},")
    print("\nconstexpr SingleBytePage kPages[] = {")
    print("\n".join(rows))
    print(TAIL)


main()
