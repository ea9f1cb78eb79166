#!/usr/bin/env python3
"""Checks that the folders of src/core only point down, and that the core library needs no GUI.

Usage: check_layers.py [path of the built core library [libraries the core target links]]

Every #include "..." of src/core must name a header of its own folder or of a folder below it
in LAYERS; an include naming a folder not in LAYERS fails too. With a library path, its NEEDED
entries must not name Qt Gui or Qt Widgets, and neither may the comma-separated list of the
target's link libraries (the linker drops a library nothing uses, so the list is read too).
Exit status 1 names every offence.
"""

import os
import re
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORE = os.path.join(ROOT, 'src', 'core')

# Bottom to top. The core library holds the first six, the GUI library the "gui/" ones.
LAYERS = ['tools', 'zy', 'model', 'storage', 'context', 'script', 'gui/tools', 'gui/view', 'gui/plugin']

# Headers configured or generated into the build tree, and the lowest layer allowed to use each.
GENERATED = {'tavrelcore_export.h': 'tools', 'tavrel_version.h': 'tools', 'tavrel_paths.h': 'tools',
             'tavrelgui_export.h': 'gui/tools'}

SOURCE_SUFFIXES = ('.h', '.cpp')
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')
GUI_LIBRARY = re.compile(r'libQt\d(Gui|Widgets)\.so')
GUI_TARGET = re.compile(r'^Qt\d?::(Gui|Widgets)$')


def rank(folder):
    return LAYERS.index(folder) if folder in LAYERS else None


def include_folder(source_folder, name):
    """The layer an include points at, or None when it names no known folder."""
    if name in GENERATED:
        return GENERATED[name]
    folder = os.path.dirname(name)
    if not folder:
        # A bare name is a header of the including file's own folder.
        return source_folder if os.path.isfile(os.path.join(CORE, source_folder, name)) else None
    return folder if folder in LAYERS else None


def check_includes():
    offences = []
    for base, _, files in os.walk(CORE):
        for file_name in sorted(files):
            if not file_name.endswith(SOURCE_SUFFIXES):
                continue
            path = os.path.join(base, file_name)
            folder = os.path.relpath(base, CORE).replace(os.sep, '/')
            where = os.path.relpath(path, ROOT)
            if rank(folder) is None:
                offences.append('%s: folder "%s" is not a known layer' % (where, folder))
                continue
            with open(path, encoding='utf-8') as f:
                for line_no, line in enumerate(f, 1):
                    match = INCLUDE.match(line)
                    if not match:
                        continue
                    target = include_folder(folder, match.group(1))
                    if target is None:
                        offences.append('%s:%d: "%s" names no known folder' % (where, line_no, match.group(1)))
                    elif rank(target) > rank(folder):
                        offences.append('%s:%d: %s includes "%s" of %s, a layer above it'
                                        % (where, line_no, folder, match.group(1), target))
    return offences


def needed_entries(library):
    if shutil.which('readelf'):
        command = ['readelf', '-d', library]
    else:
        command = ['objdump', '-p', library]
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [line for line in output.splitlines() if 'NEEDED' in line]


def check_library(library):
    if not os.path.isfile(library):
        return ['%s: no such library' % library]
    entries = needed_entries(library)
    if not entries:
        return ['%s: no NEEDED entries read' % library]
    return ['%s links %s' % (os.path.basename(library), GUI_LIBRARY.search(entry).group(0))
            for entry in entries if GUI_LIBRARY.search(entry)]


def check_link_list(links):
    return ['core target links %s' % name for name in links.split(',') if GUI_TARGET.match(name.strip())]


def main(argv):
    offences = check_includes()
    if len(argv) > 1:
        offences += check_library(argv[1])
    if len(argv) > 2:
        offences += check_link_list(argv[2])
    for offence in offences:
        print(offence, file=sys.stderr)
    if offences:
        print('layer check FAILED: %d offence(s)' % len(offences), file=sys.stderr)
        return 1
    print('layers point down%s' % (', core library links no Qt Gui or Widgets' if len(argv) > 1 else ''))
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
