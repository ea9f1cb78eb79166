#!/usr/bin/env python3
"""Keeps the sources readable: no file over 600 lines, no function over 80 lines.

Functions are found the way this code base writes them: a signature line, then a body whose
braces stand alone at the start of a line. Data tables open their brace on the declaration's
line and are not counted. Prints every offender and exits 1 when there is one."""
import os
import sys

MAX_FILE_LINES = 600
MAX_FUNCTION_LINES = 80
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..')


def sources(root):
    for folder, _, files in os.walk(os.path.join(root, 'src')):
        for name in sorted(files):
            if name.endswith(('.cpp', '.h')):
                yield os.path.join(folder, name)


CONTROL = ('if', 'else', 'for', 'while', 'switch', 'do', 'try', 'catch', 'case', 'default')


def is_function(signature):
    words = signature.replace('(', ' ( ').split()
    return bool(words) and '(' in signature and words[0] not in CONTROL and not signature.endswith((',', '=', '{'))


def long_functions(lines):
    """(line, signature, body lines) of each function longer than allowed, nested ones included."""
    open_blocks = []   # (indent, first line, signature)
    for number, line in enumerate(lines, 1):
        text = line.rstrip('\n')
        stripped = text.strip()
        indent = len(text) - len(text.lstrip())
        if stripped == '{':
            previous = next((l.strip() for l in reversed(lines[:number - 1]) if l.strip()), '')
            open_blocks.append((indent, number, previous))
        elif stripped in ('}', '};') and open_blocks and open_blocks[-1][0] == indent:
            _, start, signature = open_blocks.pop()
            body = number - start - 1
            if stripped == '}' and is_function(signature) and body > MAX_FUNCTION_LINES:
                yield start - 1, signature, body


def main():
    offenders = []
    for path in sources(ROOT):
        with open(path, encoding='utf-8') as f:
            lines = f.readlines()
        relative = os.path.relpath(path, ROOT)
        if len(lines) > MAX_FILE_LINES:
            offenders.append(f'{relative}: {len(lines)} lines (at most {MAX_FILE_LINES})')
        for line, signature, body in long_functions(lines):
            offenders.append(f'{relative}:{line}: {signature} has {body} lines (at most {MAX_FUNCTION_LINES})')
    for o in offenders:
        print(o)
    return 1 if offenders else 0


if __name__ == '__main__':
    sys.exit(main())
