"""Generates the keyword repository from platform/keywords.txt.

Outputs:
  gs_tokens.h    enum GS_TokenValues (tGS<identifier> = token) and the
                 declarations of the exported texts pGS<identifier>
  gs_tokens.cpp  the texts, the token -> text table and an open-addressing
                 hash table for text -> token

Usage: gen_keywords.py <keywords.txt> <out.h> <out.cpp>
"""

import sys

import genlib

HASH_SLOTS = 4096  # power of two, at least twice the number of keywords


def generate(src, out_h, out_cpp):
    keywords = genlib.read_keywords(src)
    if len(keywords) * 2 > HASH_SLOTS:
        raise genlib.GenError(src, 1, f'more than {HASH_SLOTS // 2} keywords: enlarge HASH_SLOTS')
    ordered = sorted(keywords.items(), key=lambda kv: kv[1])
    head = genlib.banner(sys.argv[0], [src])

    h = [head, '#ifndef QEL_GEN_GS_TOKENS_H\n#define QEL_GEN_GS_TOKENS_H\n\n',
         '#include <qel/platform/export.h>\n\n#include <cstdint>\n\n',
         '/// Keyword tokens of the management interface.\n',
         'enum GS_TokenValues : std::uint32_t {\n  tGS_NoToken = 0,\n']
    for kw, tok in ordered:
        h.append(f'  tGS{genlib.identifier(kw)} = {tok},\n')
    h.append('};\n\n/// The keyword texts, one character array per keyword.\n')
    for kw, _ in ordered:
        h.append(f'extern QEL_API const char pGS{genlib.identifier(kw)}[];\n')
    h.append('\n#endif\n')

    slots = [0] * HASH_SLOTS
    for kw, tok in ordered:
        i = genlib.fnv1a(kw) & (HASH_SLOTS - 1)
        while slots[i]:
            i = (i + 1) & (HASH_SLOTS - 1)
        slots[i] = tok

    c = [head, '#include <qel/platform/keywords.h>\n\n']
    for kw, _ in ordered:
        c.append(f'const char pGS{genlib.identifier(kw)}[] = {genlib.cstring(kw)};\n')
    c.append('\nnamespace strings {\nnamespace detail {\n\n')
    c.append(f'extern const char *const kTokenText[{genlib.MAX_TOKEN + 1}];\n')
    c.append(f'const char *const kTokenText[{genlib.MAX_TOKEN + 1}] = {{\n')
    text_of = {tok: kw for kw, tok in ordered}
    for tok in range(genlib.MAX_TOKEN + 1):
        if tok in text_of:
            c.append(f'    pGS{genlib.identifier(text_of[tok])},\n')
        else:
            c.append('    nullptr,\n')
    c.append('};\n\n')
    c.append(f'extern const std::uint16_t kHashSlots[{HASH_SLOTS}];\n')
    c.append(f'const std::uint16_t kHashSlots[{HASH_SLOTS}] = {{\n')
    for i in range(0, HASH_SLOTS, 16):
        c.append('    ' + ', '.join(str(s) for s in slots[i:i + 16]) + ',\n')
    c.append('};\n\n} // namespace detail\n} // namespace strings\n')

    genlib.write_if_changed(out_h, ''.join(h))
    genlib.write_if_changed(out_cpp, ''.join(c))


if __name__ == '__main__':
    genlib.run(generate, __doc__, 3)
