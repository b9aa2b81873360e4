"""Generates the data of the qel front end's sample storage system.

The sample files describe the tables that `qel show` prints:

  show <basetype> [layout=<layout>] [scale]
  object <name> <basetype> [layout=<layout>]
    link <object>
    row
      <column> <value>

A "show" block is what `qel show <basetype>` prints; "object" blocks are
nested tables (a QEL column's value "@<object>") or tables linked after a
show block's own ("link <object>"). A row names its columns by keyword, in
column order; "<keyword>#2" is the second column with that keyword. A column
left out stays empty. Layouts: rows pairs packed labeled embedded status.
"scale" lets --rows repeat the rows for large runs.

Values by the column's type:
  STRING               the text (rest of the line); "{n}" expands to the row
                       number at run time, "{n-4}" to it less 4; ":04" and
                       ":08x" after the number pad it (hex), e.g. "{n-4:03}"
  STRING_N             the same, padded with NULs to the column's size
  HEX_STRING           hex digits, at most half the column's size in bytes
  U64 BLOCKS BLOCKS2BYTES  a decimal number, written as text
  DATETIME             "YYYY-MM-DD HH:MM:SS" (UTC) or seconds
  TIME                 "H:MM:SS" or seconds
  ENUM                 a display text of the column's decoder, a number, or
                       for the token decoders a keyword
  ENUMTOKEN            a display text of the column's decoder, or a keyword
  QEL                  "@<object>"
  DOUBLE               a number
  others               a number, decimal or 0x-hex (I32 may be negative)

Usage: gen_sample.py <keywords.txt> <decoders.txt> <catalogue.txt>
                     <registrations.txt> <out.cpp> <sample.txt>...
"""

import calendar
import re
import sys
import time

import genlib
import gen_catalogue
import gen_decoders

LAYOUTS = {'rows': 0, 'pairs': 1, 'packed': 2, 'labeled': 3, 'embedded': 4, 'status': 5}
# Decoders that show keyword-token settings as numeric codes: their cells
# hold tokens.
TOKEN_DECODERS = set(gen_catalogue.LIBRARY_DECODERS)
_PATTERN_RE = re.compile(r'\{n(?:[+-]\d+)?(?::0?(\d+)(x?))?\}')
_BRACE_RE = re.compile(r'[{}]')
NUMBER_LIMITS = {
    'HEX8': (0, 0xff), 'U8': (0, 0xff), 'U16': (0, 0xffff), 'HEX32': (0, 0xffffffff),
    'U32': (0, 0xffffffff), 'INDEX': (0, 0xffffffff), 'I32': (-0x80000000, 0x7fffffff),
}


class Table:
    def __init__(self, path, line, name, basetype, shown):
        self.path, self.line, self.name, self.basetype, self.shown = path, line, name, basetype, shown
        self.layout, self.scale, self.links, self.rows = 0, False, [], []


def parse_int(path, number, text, low, high):
    try:
        value = int(text, 16) if text.lower().startswith('0x') else int(text, 10)
    except ValueError:
        raise genlib.GenError(path, number, f'"{text}" is not a number')
    if not low <= value <= high:
        raise genlib.GenError(path, number, f'{text} is outside {low}..{high}')
    return value


def check_pattern(path, number, text):
    rest = _PATTERN_RE.sub('', text)
    if _BRACE_RE.search(rest):
        raise genlib.GenError(path, number, f'"{text}": braces only in {{n}}, {{n-4}}, {{n:04}} or {{n+1:08x}}')


def parse_datetime(path, number, text):
    if text.isdigit():
        return parse_int(path, number, text, 0, 0xffffffff)
    try:
        return calendar.timegm(time.strptime(text, '%Y-%m-%d %H:%M:%S'))
    except ValueError:
        raise genlib.GenError(path, number, f'"{text}" is not "YYYY-MM-DD HH:MM:SS"')


def parse_time(path, number, text):
    if text.isdigit():
        return parse_int(path, number, text, 0, 0xffffffff)
    parts = text.split(':')
    if len(parts) != 3 or not all(p.isdigit() for p in parts) or int(parts[1]) > 59 or int(parts[2]) > 59:
        raise genlib.GenError(path, number, f'"{text}" is not "H:MM:SS"')
    return int(parts[0]) * 3600 + int(parts[1]) * 60 + int(parts[2])


def cell(path, number, prop, text, keywords, decoders):
    """Returns (number, text bytes or None, object name or None)."""
    t = prop.type
    if t == 'QEL':
        if not text.startswith('@') or len(text) < 2:
            raise genlib.GenError(path, number, f'a QEL column takes "@<object>", not "{text}"')
        return 0, None, text[1:]
    if t in ('STRING', 'STRING_N'):
        check_pattern(path, number, text)
        if t == 'STRING_N' and len(text.encode('utf-8')) > prop.size:
            raise genlib.GenError(path, number, f'"{text}" is longer than the column\'s {prop.size} bytes')
        return 0, text.encode('utf-8'), None
    if t == 'HEX_STRING':
        if not re.fullmatch(r'(?:[0-9A-Fa-f]{2})+', text) or len(text) // 2 > prop.size // 2:
            raise genlib.GenError(path, number,
                                  f'"{text}": expected pairs of hex digits, at most {prop.size // 2} bytes')
        return 0, bytes.fromhex(text), None
    if t in ('U64', 'BLOCKS', 'BLOCKS2BYTES'):
        if not text.isdigit() or int(text) >= 1 << 64:
            raise genlib.GenError(path, number, f'a {t} column takes an unsigned decimal, not "{text}"')
        return 0, text.encode('ascii'), None
    if t == 'DATETIME':
        return parse_datetime(path, number, text), None, None
    if t == 'TIME':
        return parse_time(path, number, text), None, None
    if t == 'DOUBLE':
        try:
            value = float(text)
        except ValueError:
            raise genlib.GenError(path, number, f'"{text}" is not a number')
        if not 0 <= value < 4294967296:
            raise genlib.GenError(path, number, f'{text} is outside 0..4294967295')
        return int(value), None, None
    entries, _ = decoders.get(prop.decoder, ([], None))
    for value, shown in entries:
        if shown == text and t in ('ENUM', 'ENUMTOKEN'):
            return value, None, None
    if t == 'ENUMTOKEN' or (t == 'ENUM' and prop.decoder in TOKEN_DECODERS):
        if text not in keywords:
            raise genlib.GenError(path, number, f'"{text}" is not a keyword of the repository')
        return keywords[text], None, None
    if t == 'ENUM':
        if text[:1].isdigit():
            return parse_int(path, number, text, 0, 0xffffffff), None, None
        known = ', '.join(shown for _, shown in entries[:12])
        raise genlib.GenError(path, number, f'"{text}" is not a value of {prop.decoder} ({known})')
    low, high = NUMBER_LIMITS[t]
    return parse_int(path, number, text, low, high) & 0xffffffff, None, None


def read_samples(paths, keywords, decoders, arrays, registrations):
    tables, order = {}, []
    current = None
    row = None
    for path in paths:
        for number, line in genlib.source_lines(path):
            indent = len(line) - len(line.lstrip(' '))
            words = line.split()
            if indent == 0:
                if words[0] == 'show' and len(words) >= 2:
                    name, basetype, opts, shown = words[1], words[1], words[2:], True
                elif words[0] == 'object' and len(words) >= 3:
                    name, basetype, opts, shown = words[1], words[2], words[3:], False
                else:
                    raise genlib.GenError(path, number, 'expected "show <basetype> ..." or "object <name> <basetype> ..."')
                if basetype not in registrations:
                    raise genlib.GenError(path, number, f'"{basetype}" is not a registered basetype')
                if name in tables:
                    t = tables[name]
                    raise genlib.GenError(path, number, f'"{name}" is already defined at {t.path}:{t.line}')
                current = Table(path, number, name, basetype, shown)
                for opt in opts:
                    if opt == 'scale' and shown:
                        current.scale = True
                    elif opt.startswith('layout=') and opt[7:] in LAYOUTS:
                        current.layout = LAYOUTS[opt[7:]]
                    else:
                        raise genlib.GenError(path, number, f'unknown option "{opt}"')
                tables[name] = current
                order.append(current)
                row = None
                continue
            if current is None:
                raise genlib.GenError(path, number, 'indented line before the first block')
            if words == ['row']:
                row = []
                current.rows.append(row)
                continue
            if words[0] == 'link' and len(words) == 2 and row is None:
                if not current.shown:
                    raise genlib.GenError(path, number, 'only a show block links tables')
                current.links.append((number, words[1]))
                continue
            if row is None:
                raise genlib.GenError(path, number, 'expected "row" or "link <object>"')
            props = arrays.get(registrations[current.basetype], [])
            key, _, text = line.strip().partition(' ')
            keyword, _, nth = key.partition('#')
            nth = int(nth) if nth.isdigit() else 1 if not nth else 0
            matches = [i for i, p in enumerate(props) if p.keyword == keyword]
            if nth < 1 or len(matches) < nth:
                raise genlib.GenError(path, number, f'{current.basetype} has no column "{key}"')
            column = matches[nth - 1]
            if row and row[-1][0] >= column:
                raise genlib.GenError(path, number, f'column "{key}" is out of column order')
            text = text.strip()
            if not text:
                raise genlib.GenError(path, number, f'column "{key}" has no value')
            row.append((column,) + cell(path, number, props[column], text, keywords, decoders) + (number,))
    by_name = {t.name: t for t in order}
    for t in order:
        for number, link in t.links:
            if link not in by_name or by_name[link].shown:
                raise genlib.GenError(t.path, number, f'"{link}" is not an object')
        for row in t.rows:
            for column, _, _, obj, number in row:
                if obj is not None and (obj not in by_name or by_name[obj].shown):
                    raise genlib.GenError(t.path, number, f'"@{obj}" is not an object')
    check_cycles(order, by_name)
    missing = [b for b in registrations if b not in by_name or not by_name[b].shown]
    if missing:
        raise genlib.GenError(paths[0], 1, f'no "show" block for {", ".join(missing)}')
    return order


def check_cycles(order, by_name):
    state = {}

    def visit(t):
        if state.get(t.name) == 1:
            raise genlib.GenError(t.path, t.line, f'"{t.name}" contains itself')
        if state.get(t.name) == 2:
            return
        state[t.name] = 1
        for row in t.rows:
            for _, _, _, obj, _ in row:
                if obj is not None:
                    visit(by_name[obj])
        state[t.name] = 2

    for t in order:
        visit(t)


def generate(keywords_path, decoders_path, catalogue_path, registrations_path, out_cpp, *paths):
    paths = list(paths)
    keywords = genlib.read_keywords(keywords_path)
    decoders = {n: (e, f) for n, e, f in gen_decoders.read_decoders(decoders_path)}
    catalogue = gen_catalogue.read_catalogue(catalogue_path, keywords, decoders)
    arrays = {name: props for name, (_, props) in catalogue.items()}
    registrations = {r[0]: r[1] for r in
                     gen_catalogue.read_registrations(registrations_path, keywords, catalogue)}
    order = read_samples(paths, keywords, decoders, arrays, registrations)
    index = {t.name: i for i, t in enumerate(order)}

    out = [genlib.banner(sys.argv[0], paths), '#include "sample_data.h"\n\nnamespace sample {\n']
    for i, t in enumerate(order):
        if t.rows:
            out.append(f'static const Value values{i}[] = {{')
            for r, row in enumerate(t.rows):
                for column, number, data, obj, _ in row:
                    text = genlib.cstring(data) if data is not None else 'nullptr'
                    size = len(data) if data is not None else 0
                    ref = index[obj] if obj is not None else -1
                    out.append(f'  {{{r}, {column}, {number}u, {text}, {size}, {ref}}},')
            out.append('};')
        if t.links:
            out.append(f'static const int links{i}[] = {{{", ".join(str(index[l]) for _, l in t.links)}}};')
    out.append('\nconst Table tables[] = {')
    for i, t in enumerate(order):
        count = sum(len(r) for r in t.rows)
        values = f'values{i}' if t.rows else 'nullptr'
        links = f'links{i}' if t.links else 'nullptr'
        out.append(f'  {{{genlib.cstring(t.name)}, {genlib.cstring(t.basetype)}, {str(t.shown).lower()}, '
                   f'{t.layout}, {str(t.scale).lower()}, {len(t.rows)}, {values}, {count}, {links}, {len(t.links)}}},')
    out.append('};\n')
    out.append(f'const int tableCount = {len(order)};\n\n}} // namespace sample\n')
    genlib.write_if_changed(out_cpp, '\n'.join(out))



if __name__ == '__main__':
    genlib.run(generate, __doc__, 6, variadic=True)
