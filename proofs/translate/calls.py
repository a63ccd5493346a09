"""Calls in C: of functions, of what a proof is written with, of intrinsics."""

import re

from operands import Fault, c_name

NOTHING = re.compile(r'@llvm\.(lifetime|dbg|experimental\.noalias|invariant|assume)')
# What clang's checks of undefined behaviour say by number.
CHECKS = {0: 'sum overflows', 1: 'unreachable', 2: 'integer operation', 3: 'division',
          12: 'product overflows', 13: 'negation overflows', 18: 'index out of bounds',
          19: 'pointer overflows', 20: 'shift out of bounds', 21: 'difference overflows',
          22: 'null pointer', 10: 'value of no bool'}


class Calls:
    """The part of Body that calls."""

    def do_call(self, value, reader, _):
        reader.attributes()
        while reader.skip(r'(?:fastcc)\b'):
            reader.attributes()
        result = reader.type()
        reader.skip(r'\([^()]*\)')  # the type of a function with variable arguments
        reader.skip('')
        name = reader.want(r'@(?:"[^"]*"|[-\w.$]+)')
        if NOTHING.match(name):
            return
        reader.want(r'\(')
        arguments = []
        while not reader.skip(r'\)'):
            arguments.append(reader.typed())
            reader.skip(',')
        values = [a for _, a in arguments]
        if name == '@llvm.ubsantrap':
            number = int(re.search(r'(\d+)', values[0].split(')')[-2]).group())
            text = 'never("%s");' % CHECKS.get(number, 'check %d' % number)
        elif name == '@prove':
            self.out.append('prove(%s);' % values[0])
            return
        elif name == '@__assert_fail' or 'glibcxx_assert_fail' in name:
            text = 'never("assertion");'
        elif name == '@llvm.trap':
            text = 'never("trap");'
        elif re.match(r'@llvm\.mem(cpy|move|set)', name):
            text = '%s(%s, %s, %s);' % (name[6:].split('.')[0], *values[:3])
        elif name.startswith('@llvm.x86.'):
            self.set(value, result, '%s(%s)' % (c_name(name[6:]), ', '.join(values)))
            return
        elif name.startswith('@llvm.'):
            self.generic(value, result, name, arguments)
            return
        elif name[1:] in ('assume', 'observe', 'between') or name[1:].startswith('nondet_'):
            text = '%s(%s)' % (name[1:], ', '.join(values))
            if value:
                self.set(value, result, self.module.masked(result, text))
                return
            text += ';'
        else:
            text = '%s(%s)' % (self.module.function_name(name), ', '.join(values))
            if value:
                self.set(value, result, text)
                return
            text += ';'
        self.out.append(text)

    def generic(self, value, result, name, arguments):
        """Intrinsics of any width."""
        values = [a for _, a in arguments]
        word = name[6:].rsplit('.', 1)[0]
        if '.with.overflow' in word:
            kind = arguments[0][0]
            self.declared[value] = result
            if word[:4] == 'smul' and all(self.is_word(v, kind) for v in values):
                self.out.append('%s.f0 = %s;' % (value, self.module.masked(
                    kind, 'product((i16)%s, (i16)%s)' % tuple(values))))
                self.out.append('%s.f1 = 0;' % value)
                return
            if word[:4] == 'smul' and any(v in self.powers for v in values):
                x, y = values if values[1] in self.powers else values[::-1]
                word, values = 'sshl', [x, self.powers[y]]
            for member, part in (('f0', 'sum'), ('f1', 'over')):
                self.out.append('%s.%s = %s_%s_%d(%s, %s);' % (
                    value, member, part, word[:4], kind[1], *values))
            return
        element = result[2] if result[0] == 'v' else result
        models = {'smax', 'smin', 'umax', 'umin', 'sadd.sat', 'ssub.sat', 'uadd.sat', 'usub.sat',
                  'abs', 'ctlz', 'ctpop', 'fshl', 'fshr'}
        if word not in models:
            raise Fault('an intrinsic without a model: ' + name)
        if word in ('abs', 'ctlz'):
            values = values[:1]
        self.lanes(value, result, lambda i: '%s_%d(%s)' % (
            word.replace('.', '_'), element[1], ', '.join(v + i for v in values)))
