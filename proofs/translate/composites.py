"""Instructions on vectors, arrays and records in C."""

import re

from operands import Fault


class Composites:
    """The part of Body that takes composites to their elements and back."""

    def lanes(self, value, kind, lane):
        """lane(i) for each element of a vector, or the one value."""
        self.declared[value] = kind
        if kind[0] == 'v':
            for i in range(kind[1]):
                self.out.append('%s.v[%d] = %s;' % (value, i, lane('.v[%d]' % i)))
        else:
            self.out.append('%s = %s;' % (value, lane('')))

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
