"""Generates the enumeration decoders of the other management services from
platform/decoders.txt.

Each decoder is `void <name>(utility::PutStream &out, unsigned int value)`:
it writes the display text of a listed value, otherwise the block's "*"
fallback format with the value, otherwise "Unknown".

Outputs: decoders.h (declarations) and decoders.cpp (value tables).
Usage: gen_decoders.py <decoders.txt> <out.h> <out.cpp>
"""

import re
import sys

import genlib

_NAME_RE = re.compile(r'^decode[A-Za-z0-9]+$')
_FORBIDDEN = '"<&\\'


def parse_value(path, number, text):
    try:
        value = int(text, 16) if text.lower().startswith('0x') else int(text, 10)
    except ValueError:
        raise genlib.GenError(path, number, f'"{text}" is not a decimal or 0x-hex value')
    if not 0 <= value <= 0xffffffff:
        raise genlib.GenError(path, number, f'value {text} does not fit an unsigned int')
    return value


def check_fallback(path, number, fmt):
    rest = fmt.replace('%%', '')
    if rest.count('%') > 1 or ('%' in rest and '%u' not in rest):
        raise genlib.GenError(path, number, 'a fallback format takes at most one %u (and %% for "%")')


def read_decoders(path):
    """Returns [(name, [(value, text)], fallback or None)] in file order."""
    decoders = []
    seen = {}
    for number, line in genlib.source_lines(path):
        if not line.startswith(' '):
            name = line.strip()
            if not _NAME_RE.match(name):
                raise genlib.GenError(path, number, f'"{name}" is not a decoder name (decode...)')
            if name in seen:
                raise genlib.GenError(path, number, f'decoder "{name}" already defined at line {seen[name]}')
            seen[name] = number
            decoders.append((name, [], [None]))
            continue
        if not decoders:
            raise genlib.GenError(path, number, 'entry before the first decoder name')
        name, entries, fallback = decoders[-1]
        key, _, text = line.strip().partition(' ')
        text = text.strip()
        if not text:
            raise genlib.GenError(path, number, 'expected "<value> <display text>"')
        if any(ch in text for ch in _FORBIDDEN):
            raise genlib.GenError(path, number, f'"{text}" holds a character documents cannot carry unescaped')
        if key == '*':
            if fallback[0] is not None:
                raise genlib.GenError(path, number, f'"{name}" has a second fallback')
            check_fallback(path, number, text)
            fallback[0] = text
            continue
        if '%' in text:
            raise genlib.GenError(path, number, '"%" belongs in a fallback line only')
        value = parse_value(path, number, key)
        if entries and value <= entries[-1][0]:
            raise genlib.GenError(path, number, f'values of "{name}" must ascend')
        entries.append((value, text))
    for name, entries, fallback in decoders:
        if not entries and fallback[0] is None:
            raise genlib.GenError(path, seen[name], f'"{name}" lists no value')
    return [(n, e, f[0]) for n, e, f in decoders]


def generate(src, out_h, out_cpp):
    decoders = read_decoders(src)
    head = genlib.banner(sys.argv[0], [src])
    h = [head, '#ifndef QEL_GEN_DECODERS_H\n#define QEL_GEN_DECODERS_H\n\n',
         '#include <qel/platform/export.h>\n\nnamespace utility {\nclass PutStream;\n}\n\n',
         '// Enumeration decoders of the management services: each writes the\n'
         '// display text of an enumeration value.\n']
    for name, _, _ in decoders:
        h.append(f'QEL_API void {name}(utility::PutStream &out, unsigned int value);\n')
    h.append('\n#endif\n')

    c = [head, '#include <qel/platform/decoders.h>\n#include <qel/platform/decoder_support.h>\n\n',
         'namespace {\n\nusing platform_detail::DecoderEntry;\n\n']
    for name, entries, _ in decoders:
        if not entries:
            continue
        c.append(f'const DecoderEntry k{name[0].upper()}{name[1:]}[] = {{\n')
        for value, text in entries:
            c.append(f'    {{{value}u, {genlib.cstring(text)}}},\n')
        c.append('};\n')
    c.append('\n} // namespace\n\n')
    for name, entries, fallback in decoders:
        table = f'k{name[0].upper()}{name[1:]}' if entries else 'nullptr'
        count = len(entries)
        fmt = genlib.cstring(fallback) if fallback is not None else 'nullptr'
        c.append(f'void {name}(utility::PutStream &out, unsigned int value) {{\n'
                 f'  platform_detail::decode(out, value, {table}, {count}, {fmt});\n}}\n\n')
    genlib.write_if_changed(out_h, ''.join(h))
    genlib.write_if_changed(out_cpp, ''.join(c))


if __name__ == '__main__':
    genlib.run(generate, __doc__, 3)
