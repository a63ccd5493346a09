#!/usr/bin/env python3
"""Writes what the Python package knows of the libraries: every export with its arguments, the public
records, enumerations and constants, read from the headers and held against the lists of exports.

    generate.py INCLUDE_DIR EXPORTS VOICE_EXPORTS OUTPUT
"""

import pathlib
import re
import sys

DECLARATION = re.compile(r"\b(?:ZSPSC|ZSPV)_API\s+([^;]*?)(\w+)\(([^)]*)\);")
RECORD = re.compile(r"typedef struct (\w+) \{(.*?)\} \1;", re.S)
ENUM = re.compile(r"typedef enum (\w+) \{(.*?)\} \1;", re.S)
CONSTANT = re.compile(r"^#define (ZSP\w+) (-?\d+)\s*$", re.M)
LISTED = re.compile(r"^ZSPV?_EXPORT(?:_AS)?\((\w+)", re.M)


def text_of(folder, page):
    """The parts of a header in one text, without comments."""
    text = (folder / page).read_text()
    parts = re.findall(r'#include "([^"]+/[^"]+)"', text)
    text = "\n".join((folder / part).read_text() for part in parts if ".." not in part)
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.S)


def in_one_line(text):
    return " ".join(text.replace("*", " * ").split())


def argument(text):
    """("samples", "const int16_t *") of "const int16_t* samples"."""
    words = in_one_line(text).split(" ")
    return words[-1], " ".join(words[:-1])


def functions(text):
    text = re.sub(r"^ *#(?:[^\n]*\\\n)*[^\n]*", "", text, flags=re.M)
    for result, name, arguments in DECLARATION.findall(text):
        listed = [] if arguments.strip() == "void" else arguments.split(",")
        yield name, in_one_line(result), [argument(one) for one in listed]


def fields(body):
    """("a_data5", "int16_t", (3, 2)) of "int16_t a_data5[3][2];"."""
    for line in filter(None, map(in_one_line, body.split(";"))):
        first, *others = line.split(",")
        name, kind = argument(first)
        for declarator in [name, *others]:
            dims = tuple(int(n) for n in re.findall(r"\[(\d+)\]", declarator))
            yield re.match(r"\s*(\w+)", declarator).group(1), kind, dims


def values(body):
    value = -1
    for entry in filter(None, map(str.strip, body.split(","))):
        name, _, given = entry.partition("=")
        value = int(given, 0) if given else value + 1
        yield name.strip(), value


def listed(path):
    return set(LISTED.findall(pathlib.Path(path).read_text()))


def main(folder, blocks, voice, output):
    folder = pathlib.Path(folder)
    texts = {"zspsc": text_of(folder, "zspsc.h"), "zspvoice": text_of(folder, "zspvoice.h")}
    everything = "\n".join(texts.values())
    tables = {library: list(functions(text)) for library, text in texts.items()}
    for library, path in (("zspsc", blocks), ("zspvoice", voice)):
        declared = {name for name, _, _ in tables[library]}
        if declared != listed(path):
            sys.exit(f"{library}: header and list differ in {declared ^ listed(path)}")
    records = [(name, list(fields(body))) for name, body in RECORD.findall(everything)]
    constants = {n: v for _, body in ENUM.findall(everything) for n, v in values(body)}
    constants.update((name, int(value)) for name, value in CONSTANT.findall(everything))
    with open(output, "w", encoding="ascii") as out:
        out.write('"""Made by generate.py from the public headers."""\n\n')
        for title, content in (("RECORDS", records), ("CONSTANTS", constants),
                               ("ENUMS", [name for name, _ in ENUM.findall(everything)]),
                               ("FUNCTIONS", tables)):
            entries = content.items() if isinstance(content, dict) else content
            opening, closing = ("{", "}") if isinstance(content, dict) else ("[", "]")
            out.write(f"{title} = {opening}\n")
            for entry in entries:
                line = f"{entry[0]!r}: {entry[1]!r}" if isinstance(content, dict) else repr(entry)
                out.write(f"    {line},\n")
            out.write(f"{closing}\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
