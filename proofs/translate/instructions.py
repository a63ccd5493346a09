"""The instructions of a function in C."""

import re

from operands import Fault, Reader, c_name

PLAIN = {'add': '+', 'sub': '-', 'and': '&', 'or': '|', 'xor': '^'}
COMPARE = {'eq': '==', 'ne': '!=', 'gt': '>', 'ge': '>=', 'lt': '<', 'le': '<='}
NOTHING = re.compile(r'@llvm\.(lifetime|dbg|experimental\.noalias|invariant|assume)')
# What clang's checks of undefined behaviour say by number.
CHECKS = {0: 'sum overflows', 1: 'unreachable', 2: 'integer operation', 3: 'division',
          12: 'product overflows', 13: 'negation overflows', 18: 'index out of bounds',
          19: 'pointer overflows', 20: 'shift out of bounds', 21: 'difference overflows',
          22: 'null pointer', 10: 'value of no bool'}


class Body:
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

    def lanes(self, value, kind, lane):
        """lane(i) for each element of a vector, or the one value."""
        self.declared[value] = kind
        if kind[0] == 'v':
            for i in range(kind[1]):
                self.out.append('%s.v[%d] = %s;' % (value, i, lane('.v[%d]' % i)))
        else:
            self.out.append('%s = %s;' % (value, lane('')))

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

    def do_bitcast(self, value, reader, _):
        kind, a = reader.typed()
        reader.want('to')
        to = reader.type()
        if to[0] == 'p':
            self.set(value, to, a)
            return
        width = lambda k: k[2][1] if k[0] == 'v' else k[1]
        get = lambda i: '%s.v[%d]' % (a, i) if kind[0] == 'v' else a
        narrow, wide = width(kind), width(to)
        for bits in (narrow, wide):
            if bits not in (8, 16, 32, 64):
                raise Fault('a cast of odd bits: ' + reader.text)
        outer = to[2] if to[0] == 'v' else to

        def lane(i):
            n = int(i[3:-1]) if i else 0
            if narrow <= wide:
                k = wide // narrow
                return self.module.masked(outer, ' | '.join(
                    '(u64)%s << %d' % (get(n * k + j), j * narrow) for j in range(k)))
            k = narrow // wide
            return self.module.masked(outer, '%s >> %d' % (get(n // k), n % k * wide))

        self.lanes(value, to, lane)

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

    def do_extractvalue(self, value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        number = int(reader.want(r'\d+'))
        kind = self.module.resolved(kind)
        if kind[0] == 's':
            self.set(value, kind[1][number], '%s.f%d' % (a, number))
        else:
            self.set(value, kind[2], '%s.v[%d]' % (a, number))

    def do_insertvalue(self, value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        part = reader.typed()[1]
        reader.want(',')
        number = int(reader.want(r'\d+'))
        self.set(value, kind, a)
        member = 'f%d' if self.module.resolved(kind)[0] == 's' else 'v[%d]'
        self.out.append('%s.%s = %s;' % (value, member % number, part))

    def do_extractelement(self, value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        self.set(value, kind[2], '%s.v[%s]' % (a, reader.typed()[1]))

    def do_insertelement(self, value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        part = reader.typed()[1]
        reader.want(',')
        self.set(value, kind, a)
        self.out.append('%s.v[%s] = %s;' % (value, reader.typed()[1], part))

    def do_shufflevector(self, value, reader, _):
        kind, a = reader.typed()
        reader.want(',')
        b = reader.typed()[1]
        reader.want(',')
        count = int(reader.want(r'<\s*\d+')[1:])
        reader.want('x i32>')
        if reader.skip('zeroinitializer'):
            order = ['0'] * count
        else:
            order = re.findall(r'i32 (\w+)', reader.want(r'<[^>]*>'))
        to = ('v', count, kind[2])

        def lane(i):
            n = order[int(i[3:-1])]
            if not n.isdigit():
                return self.module.unknown(kind[2])
            return '%s.v[%d]' % ((a, int(n)) if int(n) < kind[1] else (b, int(n) - kind[1]))

        self.lanes(value, to, lane)

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
