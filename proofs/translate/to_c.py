#!/usr/bin/env python3
"""Translates the intermediate code that clang makes of a C++ source into C that cbmc reads.

    to_c.py FILE.ll >FILE.c

Every function with a body becomes one in C, instruction by instruction; what it calls in vain
(lifetimes and the like) is left out, an intrinsic of the processor becomes a call of its model in
proofs/models.h. Whatever is not known here stops the translation.
"""

import re
import sys

from instructions import Body
from operands import Fault, IDENTIFIER, Reader, c_name


class Module:
    def __init__(self, text):
        self.named, self.globals, self.functions, self.declared = {}, [], [], {}
        self.kinds = []  # composite types in the order of their definition
        self.names = {}  # type to C name
        self.initial = False  # whether operands stand in the initialisation of a variable
        self.read(text.split('\n'))

    def read(self, lines):
        at = 0
        while at < len(lines):
            line = lines[at]
            if match := re.match(r'(%(?:"[^"]*"|\S+)) = type (.*)', line):
                self.named[match.group(1)] = match.group(2)
            elif line.startswith('@'):
                self.globals.append(line)
            elif line.startswith('define '):
                end = lines.index('}', at)
                self.functions.append((line, lines[at + 1:end]))
                at = end
            at += 1

    # Types

    def resolved(self, kind):
        if kind[0] == 'n':
            return Reader(self.named[kind[1]], self).type()
        return kind

    @staticmethod
    def width(kind):
        return next(w for w in (8, 16, 32, 64) if kind[1] <= w)

    def c_type(self, kind):
        kind = self.resolved(kind)
        if kind[0] == 'i':
            return 'u%d' % self.width(kind)
        if kind[0] == 'p':
            return 'u8*'
        if kind[0] == 'void':
            return 'void'
        if kind[0] in 'va':
            inner = self.c_type(kind[2])
            name = '%s%dof%s' % (kind[0], kind[1], inner.replace('*', 'p'))
            body = '{ %s v[%d]; }' % (inner, max(kind[1], 1))
        elif kind[0] == 's':
            inner = [self.c_type(member) for member in kind[1]]
            name = 's%s_' % ''.join(kind[2:]) + '_'.join(i.replace('*', 'p') for i in inner)
            body = '{ %s }' % ' '.join('%s f%d;' % pair for pair in zip(inner, range(len(inner))))
            body += ' __attribute__((packed))' if kind[2:] else ''
        else:
            raise Fault('a type that is not translated: %s' % (kind,))
        if kind not in self.names:
            self.names[kind] = name
            if name not in [k[0] for k in self.kinds]:
                self.kinds.append((name, body))
        return self.names[kind]

    def signed(self, kind, value):
        """The value as a signed number of C."""
        width = self.width(kind)
        if kind[1] == width:
            return '((i%d)%s)' % (width, value)
        return '((i%d)((u%d)%s << %d) >> %d)' % ((width, width, value) + 2 * (width - kind[1],))

    def masked(self, kind, value):
        if kind[1] in (8, 16, 32, 64):
            return '((u%d)(%s))' % (kind[1], value)
        return '((u%d)(%s) & %du)' % (self.width(kind), value, (1 << kind[1]) - 1)

    def constant(self, kind, number):
        bits = kind[1]
        number &= (1 << bits) - 1
        return '((u%d)%d%s)' % (self.width(kind), number, 'u' if bits <= 32 else 'ull')

    def zero(self, kind):
        kind = self.resolved(kind)
        if kind[0] == 'i':
            return '0'
        if kind[0] == 'p':
            return '((u8*)0)'
        return '{0}' if self.initial else '((%s){0})' % self.c_type(kind)

    def unknown(self, kind):
        """A value that may be any."""
        kind = self.resolved(kind)
        if kind[0] == 'i':
            return self.masked(kind, 'unknown(%d)' % self.width(kind))
        if kind[0] in 'va':
            parts = ', '.join(self.unknown(kind[2]) for _ in range(kind[1]))
            return '((%s){{%s}})' % (self.c_type(kind), parts)
        if kind[0] == 's':
            return '((%s){%s})' % (self.c_type(kind), ', '.join(map(self.unknown, kind[1])))
        return self.zero(kind)

    # Names

    @staticmethod
    def global_name(name):
        return 'g_' + c_name(name[1:])

    @staticmethod
    def function_name(name):
        return 'f_' + c_name(name[1:])

    # Output

    def global_lines(self):
        self.initial = True
        for line in self.globals:
            match = re.match(r'(@(?:"[^"]*"|\S+)) = .*?\b(?:constant|global)\s+(.*)', line)
            if not match or ' external ' in line:
                raise Fault('a variable from elsewhere: ' + line)
            reader = Reader(match.group(2), self)
            kind, value = reader.typed()
            yield 'static %s %s = %s;' % (self.c_type(kind), self.global_name(match.group(1)),
                                          value)
        self.initial = False

    def header_of(self, line):
        match = re.match(r'define .*?(@(?:"[^"]*"|[-\w.$]+))\((.*)\)[^()]*\{$', line)
        before = re.sub(r'^define\s+((?:dso_local|internal|linkonce_odr|weak_odr|hidden|private|'
                        r'available_externally|fastcc|noundef|signext|zeroext|nonnull|noalias|'
                        r'align \d+|dereferenceable(?:_or_null)?\(\d+\)|range\([^)]*\))\s+)*', '', line)
        result = Reader(before, self).type()
        reader, parameters = Reader(match.group(2), self), []
        while reader.at < len(reader.text.rstrip()):
            kind, value = reader.typed()
            parameters.append((kind, value))
            reader.skip(',')
        return match.group(1), result, parameters

    def needed(self):
        """The functions that proofs reach, and the variables that these name."""
        bodies = {self.header_of(line)[0]: lines for line, lines in self.functions}
        texts = dict(bodies)
        for line in self.globals:
            texts[IDENTIFIER.match(line).group()] = [line.split(' = ', 1)[1]]
        found, left = set(), [name for name in bodies if name.startswith('@prove_')]
        while left:
            name = left.pop()
            if name not in found:
                found.add(name)
                left += [n for n in IDENTIFIER.findall(' '.join(texts[name])) if n in texts]
        return found

    def c(self):
        prototypes, bodies, needed = [], [], self.needed()
        self.functions = [f for f in self.functions if self.header_of(f[0])[0] in needed]
        self.globals = [g for g in self.globals if IDENTIFIER.match(g).group() in needed]
        for line, lines in self.functions:
            name, result, parameters = self.header_of(line)
            header = 'static %s %s(%s)' % (
                self.c_type(result), self.function_name(name),
                ', '.join('%s %s' % (self.c_type(k), v) for k, v in parameters) or 'void')
            prototypes.append(header + ';')
            body = Body(self, lines)
            bodies.append('%s\n{\n%s\n}' % (header, '\n'.join(body.lines())))
        variables = list(self.global_lines())
        order = [v for v in variables if '&g_' not in v] + [v for v in variables if '&g_' in v]
        proofs = [self.header_of(l)[0] for l, _ in self.functions
                  if re.match(r'@prove_\w+$', self.header_of(l)[0])]
        entries = ['void %s(void) { %s(); reached(); }' % (p[1:], self.function_name(p))
                   for p in proofs]
        own = [k for k in self.kinds if not re.match(r'v\d+ofu\d+$', k[0])]
        return '\n'.join(
            ['#include "proofs/models.h"'] + ['typedef struct %s %s;' % k[::-1] for k in own] +
            prototypes + order + bodies + entries) + '\n'


if __name__ == '__main__':
    try:
        sys.stdout.write(Module(open(sys.argv[1]).read()).c())
    except Fault as fault:
        sys.exit('to_c.py: %s' % fault)
