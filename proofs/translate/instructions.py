"""The instructions of a function in C."""

import re

from calls import Calls
from composites import Composites
from operands import Fault, Reader, c_name

PLAIN = {'add': '+', 'sub': '-', 'and': '&', 'or': '|', 'xor': '^'}
COMPARE = {'eq': '==', 'ne': '!=', 'gt': '>', 'ge': '>=', 'lt': '<', 'le': '<='}


class Body(Calls, Composites):
    def __init__(self, module, lines):
        self.module = module
        self.source = [re.sub(r',? ![\w.]+ ![\w.]+.*$|, !\w+ !\w+|, align \d+(?=,|$)', '', l)
                       for l in lines]
        self.words = set()  # values that are a word extended with its sign
        self.doubled = {}   # words shifted left by a constant, as (word, places)
        self.powers = {}    # values that are 2^n, by their n
        self.phis = {}      # label to (value, kind, {label: operand})
        self.declared = {}
        self.out = []

    def lines(self):
        blocks, label = [], 'entry'
        for line in self.source:
            line = re.sub(r'\s*;.*$', '', line) if not line.strip().startswith('%"') else line
            if match := re.match(r'("[^"]*"|[-\w.$]+):', line):
                label = match.group(1)
                blocks.append((label, []))
            elif line.strip():
                if not blocks:
                    blocks.append((label, []))
                blocks[-1][1].append(line.strip())
        blocks = [(label, self.joined(lines)) for label, lines in blocks]
        for label, lines in blocks:
            self.read_phis(label, lines)
        for label, lines in blocks:
            self.out.append('L_%s: ;' % c_name(label))
            for line in lines:
                if ' = phi ' not in line:
                    self.instruction(label, line)
        return ['    %s %s;' % (self.module.c_type(kind), value)
                for value, kind in self.declared.items()] + ['    ' + l for l in self.out]

    @staticmethod
    def joined(lines):
        """A switch takes several lines."""
        joined = []
        for line in lines:
            if joined and joined[-1].startswith('switch') and not joined[-1].endswith(']'):
                joined[-1] += ' ' + line
            else:
                joined.append(line)
        return joined

    def read_phis(self, label, lines):
        for line in lines:
            if match := re.match(r'%("[^"]*"|[-\w.$]+) = phi (.*)', line):
                reader = Reader(match.group(2), self.module)
                kind = reader.type()
                value, operands = 'v_' + c_name(match.group(1)), {}
                while reader.skip(r'\['):
                    operand = reader.operand(kind)
                    reader.want(',')
                    operands[c_name(reader.want(r'%(?:"[^"]*"|[-\w.$]+)')[1:])] = operand
                    reader.want(r'\]')
                    reader.skip(',')
                self.declared[value] = kind
                self.phis.setdefault(c_name(label), []).append((value, kind, operands))

    def jump(self, here, there):
        """The assignments of the other block's phis, at once, and the jump."""
        here, there = c_name(here), c_name(there)
        moves = self.phis.get(there, [])
        if len(moves) == 1:
            value, _, operands = moves[0]
            return '{ %s = %s; goto L_%s; }' % (value, operands[here], there)
        text = ''.join('%s n%d = %s; ' % (self.module.c_type(k), i, o[here])
                       for i, (_, k, o) in enumerate(moves))
        text += ''.join('%s = n%d; ' % (v, i) for i, (v, _, _) in enumerate(moves))
        return '{ %sgoto L_%s; }' % (text, there)

    def set(self, value, kind, expression):
        self.declared[value] = kind
        self.out.append('%s = %s;' % (value, expression))

    def instruction(self, label, line):
        module, value = self.module, None
        if match := re.match(r'%("[^"]*"|[-\w.$]+) = (.*)', line):
            value, line = 'v_' + c_name(match.group(1)), match.group(2)
        reader = Reader(line, module)
        while reader.skip(r'(?:tail|musttail|notail)\b'):
            pass
        word = reader.want(r'\w+')
        method = getattr(self, 'do_' + word, None)
        if word in PLAIN or word in ('mul', 'udiv', 'sdiv', 'urem', 'srem', 'shl', 'lshr', 'ashr'):
            self.arithmetic(value, word, reader)
        elif method:
            method(value, reader, label)
        else:
            raise Fault('an instruction that is not translated: ' + line)

    def arithmetic(self, value, word, reader):
        while reader.skip(r'(?:nuw|nsw|exact|disjoint)\b'):
            pass
        kind, a = reader.typed()
        reader.want(',')
        b = reader.operand(kind)
        element = kind[2] if kind[0] == 'v' else kind
        signed = lambda x: self.module.signed(element, x)
        words = [self.is_word(x, element) for x in (a, b)]
        if word == 'shl' and kind[0] == 'i' and a == self.module.constant(kind, 1):
            self.powers[value] = b
        places = re.match(r'\(\(u\d+\)(\d+)', b)
        if word == 'shl' and words[0] and places and int(places.group(1)) + 32 <= element[1]:
            self.doubled[value] = (a, int(places.group(1)))

        def lane(i):
            x, y, bits = a + i, b + i, element[1]
            if word in PLAIN:
                return self.module.masked(element, '%s %s %s' % (x, PLAIN[word], y))
            if word == 'mul' and (all(words) or element == ('i', 16)):
                return self.module.masked(element, 'product((i16)%s, (i16)%s)' % (x, y))
            if word == 'mul' and (x in self.doubled and words[1] or y in self.doubled and words[0]):
                x, y = (x, y) if x in self.doubled else (y, x)
                return self.module.masked(element, '(u64)product((i16)%s, (i16)%s) << %d' % (
                    self.doubled[x][0], y, self.doubled[x][1]))
            if word == 'mul' and (x in self.powers or y in self.powers):
                if x in self.powers:
                    x, y = y, x
                return self.module.masked(element, '(u64)%s << %s' % (x, self.powers[y]))
            if word == 'mul':
                return self.module.masked(element, '(u64)%s * (u64)%s' % (x, y))
            if word == 'shl':
                text = '%s < %d ? (u64)%s << %s : unknown(64)' % (y, bits, x, y)
            elif word == 'lshr':
                text = '%s < %d ? %s >> %s : unknown(64)' % (y, bits, x, y)
            elif word == 'ashr':
                text = '%s < %d ? (u64)(%s >> %s) : unknown(64)' % (y, bits, signed(x), y)
            elif word in ('udiv', 'urem'):
                text = '%s %s %s' % (x, '/' if word == 'udiv' else '%', y)
            else:
                text = '%s %s %s' % (signed(x), '/' if word == 'sdiv' else '%', signed(y))
            return self.module.masked(element, text)

        self.lanes(value, kind, lane)

    def is_word(self, operand, kind):
        if operand in self.words:
            return True
        if match := re.match(r'\(\(u\d+\)(\d+)u?l*\)$', operand):
            number = int(match.group(1))
            return (number + 32768) % (1 << kind[1]) < 65536
        return False

    def do_icmp(self, value, reader, _):
        how = reader.want(r'\w+')
        kind, a = reader.typed()
        reader.want(',')
        b = reader.operand(kind)
        element = kind[2] if kind[0] == 'v' else kind
        sign = how[0] == 's'
        put = (lambda x: self.module.signed(element, x)) if sign else (lambda x: x)
        sign_free = COMPARE[how if how in ('eq', 'ne') else how[1:]]
        result = ('v', kind[1], ('i', 1)) if kind[0] == 'v' else ('i', 1)
        self.lanes(value, result, lambda i: '(%s %s %s)' % (put(a + i), sign_free, put(b + i)))

    def do_select(self, value, reader, _):
        condition_kind, condition = reader.typed()
        reader.want(',')
        kind, a = reader.typed()
        reader.want(',')
        b = reader.typed()[1]
        each = '%s' if condition_kind[0] == 'v' else None
        if kind[0] == 'v' and each:
            self.lanes(value, kind, lambda i: '%s%s ? %s%s : %s%s' % (condition, i, a, i, b, i))
        else:
            self.set(value, kind, '%s ? %s : %s' % (condition, a, b))

    def cast(self, value, reader, convert):
        reader.skip(r'nneg\b')
        while reader.skip(r'(?:nuw|nsw)\b'):
            pass
        kind, a = reader.typed()
        reader.want('to')
        to = reader.type()
        inner = kind[2] if kind[0] == 'v' else kind
        outer = to[2] if to[0] == 'v' else to
        self.lanes(value, to, lambda i: self.module.masked(outer, convert(inner, a + i)))
        return inner, outer, a

    def do_zext(self, value, reader, _):
        inner = self.cast(value, reader, lambda kind, x: x)[0]
        if inner[1] <= 15:
            self.words.add(value)

    def do_sext(self, value, reader, _):
        inner, _, a = self.cast(value, reader, self.module.signed)
        if inner[1] <= 16 or a in self.words:
            self.words.add(value)

    def do_trunc(self, value, reader, _):
        self.cast(value, reader, lambda kind, x: x)

    def do_freeze(self, value, reader, _):
        kind, a = reader.typed()
        self.set(value, kind, a)

    def do_ptrtoint(self, value, reader, _):
        _, a = reader.typed()
        reader.want('to')
        to = reader.type()
        self.set(value, to, '(%s)(size_t)%s' % (self.module.c_type(to), a))

    def do_getelementptr(self, value, reader, _):
        reader.skip('inbounds')
        while reader.skip(r'(?:nuw|nusw)\b'):
            pass
        self.set(value, ('p',), reader.element_address())

    def do_load(self, value, reader, _):
        kind = reader.type()
        reader.want(',')
        address = reader.typed()[1]
        self.set(value, kind, '*(%s*)%s' % (self.module.c_type(kind), address))

    def do_store(self, _value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        address = reader.typed()[1]
        self.out.append('*(%s*)%s = %s;' % (self.module.c_type(kind), address, a))

    def do_alloca(self, value, reader, _):
        kind = reader.type()
        self.declared['m_' + value] = kind
        self.set(value, ('p',), '(u8*)&m_' + value)

    def do_br(self, _value, reader, label):
        there = r'label %(?:"[^"]*"|[-\w.$]+)'
        if direct := reader.skip(there):
            self.out.append(self.jump(label, direct[7:]))
            return
        condition = reader.typed()[1]
        reader.want(',')
        yes = reader.want(there)[7:]
        reader.want(',')
        no = reader.want(there)[7:]
        self.out.append('if (%s) %s else %s' % (condition, self.jump(label, yes),
                                                self.jump(label, no)))

    def do_switch(self, _value, reader, label):
        kind, a = reader.typed()
        reader.want(',')
        there = r'label %(?:"[^"]*"|[-\w.$]+)'
        other = reader.want(there)[7:]
        reader.want(r'\[')
        while not reader.skip(r'\]'):
            case = reader.typed()[1]
            reader.want(',')
            self.out.append('if (%s == %s) %s' % (a, case, self.jump(label,
                                                                     reader.want(there)[7:])))
        self.out.append(self.jump(label, other))

    def do_ret(self, _value, reader, _):
        self.out.append('return;' if reader.skip('void') else 'return %s;' % reader.typed()[1])

    def do_unreachable(self, _value, _reader, _):
        self.out.append('never("unreachable code");')
