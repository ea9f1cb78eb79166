#!/usr/bin/env python3
"""Checks the built-in templates of the C++ export plug-in byte for byte in shape.

The generated files depend on these templates exactly, and editors like to "fix" line ends
or strip trailing blanks, so every file's size, line count and line-end style is pinned here.
Exit code 0 when all match, 1 otherwise.
"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
DOCUMENTS = os.path.join(HERE, "..", "src", "cpp_export", "resources", "cpp_export", "documents")

# name, size in bytes, number of lines (every line ended), line-end style
TEMPLATES = [
    ("template_no_inheritance.h",                          1261,  58, "CRLF"),
    ("template_no_inheritance.cpp",                         667,  35, "CRLF"),
    ("template_no_inheritance_pimpl.h",                    1314,  61, "CRLF"),
    ("template_no_inheritance_pimpl.cpp",                   808,  43, "CRLF"),
    ("template_ix_persistable.h",                          1309,  59, "CRLF"),
    ("template_ix_persistable.cpp",                         699,  37, "CRLF"),
    ("template_ix_persistable_pimpl.h",                    1362,  62, "CRLF"),
    ("template_ix_persistable_pimpl.cpp",                   840,  45, "CRLF"),
    ("template_ix_persistable_and_q_object.h",             1578,  66, "CRLF"),
    ("template_ix_persistable_and_q_object.cpp",            699,  37, "CRLF"),
    ("template_ix_persistable_and_q_object_pimpl.h",       1631,  69, "CRLF"),
    ("template_ix_persistable_and_q_object_pimpl.cpp",      840,  45, "CRLF"),
    ("template_zy_persistable.h",                          1565,  66, "CRLF"),
    ("template_zy_persistable.cpp",                         662,  37, "LF"),
    ("template_zy_persistable_pimpl.h",                    1618,  69, "CRLF"),
    ("template_zy_persistable_pimpl.cpp",                   795,  45, "LF"),
    ("template_enumeration.h",                              718,  36, "CRLF"),
    ("template_enumeration.cpp",                            313,  15, "CRLF"),
    ("template_custom_header.h",                            247,  14, "CRLF"),
    ("template_custom_source.cpp",                          207,  11, "CRLF"),
    ("template_custom_qmake_pri.pri",                        39,   1, "CRLF"),
    ("template_custom_precompiled_header.h",                269,  10, "CRLF"),
    ("template_qmake_pri.pri",                              444,  14, "CRLF"),
    ("template_qmake_pro.pro",                              693,  29, "CRLF"),
    ("template_cmake_lists.txt",                           2401,  49, "CRLF"),
    ("template_all.cpp",                                     76,   5, "CRLF"),
    ("template_all_include.h",                              319,  14, "CRLF"),
    ("template_export.h",                                  2233,  44, "CRLF"),
    ("template_dll_main.cpp",                               852,  26, "CRLF"),
    ("template_precompiled_header.h",                       388,  16, "CRLF"),
]


def check(directory):
    errors = []
    expected_names = {name for name, _, _, _ in TEMPLATES}
    for name, size, lines, style in TEMPLATES:
        path = os.path.join(directory, name)
        if not os.path.isfile(path):
            errors.append("%s: missing" % name)
            continue
        with open(path, "rb") as f:
            data = f.read()
        if len(data) != size:
            errors.append("%s: %d bytes, expected %d" % (name, len(data), size))
        if data.count(b"\n") != lines:
            errors.append("%s: %d lines, expected %d" % (name, data.count(b"\n"), lines))
        if not data.endswith(b"\n"):
            errors.append("%s: last line not ended" % name)
        crlf = data.count(b"\r\n")
        lone_cr = data.count(b"\r") - crlf
        lf = data.count(b"\n")
        if lone_cr:
            errors.append("%s: %d lone CR" % (name, lone_cr))
        if style == "CRLF" and crlf != lf:
            errors.append("%s: %d of %d line ends are CR LF, expected all" % (name, crlf, lf))
        if style == "LF" and crlf != 0:
            errors.append("%s: %d CR LF line ends, expected LF only" % (name, crlf))
        if b"\t" in data:
            errors.append("%s: contains a tab" % name)
        try:
            data.decode("ascii")
        except UnicodeDecodeError:
            errors.append("%s: not plain ASCII" % name)
    for name in sorted(os.listdir(directory)):
        if name not in expected_names:
            errors.append("%s: unexpected file" % name)
    return errors


def main():
    directory = sys.argv[1] if len(sys.argv) > 1 else DOCUMENTS
    errors = check(directory)
    for e in errors:
        print(e)
    print("%d templates checked, %d problem(s)" % (len(TEMPLATES), len(errors)))
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
