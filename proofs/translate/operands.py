"""Reading types and operands of LLVM's textual intermediate code, and their form in C.

Types are tuples: ('i', bits), ('p',), ('v', count, type), ('a', count, type), ('s', types),
('n', name), ('f', bits), ('void',). Words of n bits become unsigned C words, i1 a byte of 0 or 1;
arrays, vectors and records become structs, so that they can be assigned.
"""

import re

ATTRIBUTES = re.compile(
    r'(?:noundef|signext|zeroext|nonnull|noalias|nocapture|readonly|readnone|writeonly|returned|'
    r'immarg|inreg|align \d+|dereferenceable\(\d+\)|dereferenceable_or_null\(\d+\)|captures\(none\)|'
    r'(?:sret|byval)\([^()]*(?:\([^()]*\))?[^()]*\)|range\([^)]*\)|initializes\([^)]*\)+)\s+')
IDENTIFIER = re.compile(r'[%@](?:"[^"]*"|[-\w.$]+)')


class Fault(Exception):
    pass


def c_name(name):
    return re.sub(r'\W', lambda m: '_' if m.group() in '.%@"' else '_%02x' % ord(m.group()), name)


class Reader:
    """A line of code and how far it is read."""

    def __init__(self, text, module):
        self.text, self.at, self.module = text, 0, module

    def skip(self, pattern):
        """Reads what matches at this place; its text, or nothing."""
        match = re.compile(r'\s*(?:' + pattern + ')').match(self.text, self.at)
        if not match:
            return None
        self.at = match.end()
        return match.group().strip()

    def want(self, pattern):
        got = self.skip(pattern)
        if got is None:
            raise Fault('wanted %s: %s' % (pattern, self.text[self.at:]))
        return got

    def type(self):
        if self.skip(r'ptr\b'):
            found = ('p',)
        elif word := self.skip(r'i\d+\b'):
            found = ('i', int(word[1:]))
        elif word := self.skip(r'(?:float|double|void|metadata|label)\b'):
            found = {'float': ('f', 32), 'double': ('f', 64)}.get(word, (word,))
        elif self.skip(r'<\{'):
            members = []
            while not self.skip(r'\}>'):
                members.append(self.type())
                self.skip(',')
            found = ('s', tuple(members), 'packed')
        elif self.skip('<'):
            count = int(self.want(r'\d+'))
            self.want('x')
            found = ('v', count, self.type())
            self.want('>')
        elif self.skip(r'\['):
            count = int(self.want(r'\d+'))
            self.want('x')
            found = ('a', count, self.type())
            self.want(r'\]')
        elif self.skip('{'):
            members = []
            while not self.skip('}'):
                members.append(self.type())
                self.skip(',')
            found = ('s', tuple(members))
        else:
            found = ('n', self.want(IDENTIFIER.pattern))
        while True:
            if self.skip(r'\*'):
                found = ('p',)
            elif self.skip(r'\([^()]*\)\s*\*'):  # a pointer to a function
                found = ('p',)
            else:
                return found

    def attributes(self):
        self.skip('')
        while match := ATTRIBUTES.match(self.text, self.at):
            self.at = match.end()

    def typed(self):
        """A type and an operand of it, as (type, C expression)."""
        kind = self.type()
        self.attributes()
        return kind, self.operand(kind)

    def operand(self, kind):
        module = self.module
        if name := self.skip(r'%(?:"[^"]*"|[-\w.$]+)'):
            return 'v_' + c_name(name[1:])
        if name := self.skip(r'@(?:"[^"]*"|[-\w.$]+)'):
            return '((u8*)&%s)' % module.global_name(name)
        if number := self.skip(r'-?\d+(?![\w.])'):
            return module.constant(kind, int(number))
        if word := self.skip(r'(?:true|false)\b'):
            return '1' if word == 'true' else '0'
        if self.skip(r'null\b'):
            return '((u8*)0)'
        if self.skip(r'(?:undef|poison)\b'):
            return module.unknown(kind)
        if self.skip(r'zeroinitializer\b'):
            return module.zero(kind)
        if self.skip(r'getelementptr\b'):
            self.skip('inbounds')
            self.skip('nuw')
            self.want(r'\(')
            return self.element_address(r'\)')
        if self.skip(r'(?:bitcast|inttoptr|ptrtoint)\b'):
            self.want(r'\(')
            value = self.typed()[1]
            self.want('to')
            self.type()
            self.want(r'\)')
            return '((%s)%s)' % (module.c_type(kind), value)
        if self.skip(r'<\{') or self.skip('<') or self.skip(r'\[') or self.skip('{'):
            parts = []
            while not self.skip(r'\}>|[>\]}]'):
                parts.append(self.typed()[1])
                self.skip(',')
            inner = '{%s}' % ', '.join(parts)
            inner = inner if kind[0] in 'va' else inner[1:-1]
            return '{%s}' % inner if module.initial else '((%s){%s})' % (module.c_type(kind), inner)
        if text := self.skip(r'c"[^"]*"'):
            octets = re.findall(r'\\[0-9A-Fa-f]{2}|[^\\]', text[2:-1])
            return '{{%s}}' % ', '.join('0x' + o[1:] if len(o) == 3 else str(ord(o))
                                        for o in octets)
        raise Fault('no operand: ' + self.text[self.at:])

    def element_address(self, end=None):
        """The rest of a getelementptr: element type, base, indices."""
        module = self.module
        kind = self.type()
        self.want(',')
        base = self.typed()[1]
        place, first = '', True
        while self.skip(','):
            self.skip('inrange')
            start = self.at
            index_kind, index = self.typed()
            raw = self.text[start:self.at]
            index = module.signed(index_kind, index)
            if first:
                first = False
                place = '((%s*)%s)[%s]' % (module.c_type(kind), base, index)
                continue
            kind = module.resolved(kind)
            if kind[0] == 's':
                number = int(re.search(r'(\d+)$', raw).group())
                place, kind = place + '.f%d' % number, kind[1][number]
            else:
                place, kind = place + '.v[%s]' % index, kind[2]
        if end:
            self.want(end)
        return '((u8*)&%s)' % place
