"""Generates the table catalogue from qel/metadata/catalogue.txt and
qel/metadata/registrations.txt.

Outputs:
  catalogue_arrays.h  declarations of the exported gQdb property arrays
  catalogue.cpp       the arrays, the load-time name-column widths and
                      initGSables, which registers every table in order

Usage: gen_catalogue.py <keywords.txt> <decoders.txt> <catalogue.txt>
                        <registrations.txt> <out.h> <out.cpp>
"""

import re
import sys

import genlib
import gen_decoders

TYPES = ['HEX8', 'HEX32', 'U8', 'U32', 'STRING', 'QEL', 'DOUBLE', 'ENUM', 'INDEX', 'U64',
         'I32', 'HEX_STRING', 'U16', 'STRING_N', 'BLOCKS', 'DATETIME', 'TIME', 'ENUMTOKEN',
         'BLOCKS2BYTES']
SORTS = {'nosort': 'SORT_NONE', 'diskslot': 'SORT_DISKSLOT', 'datetime': 'SORT_DATETIME',
         'string': 'SORT_STRING', 'integer': 'SORT_INTEGER', 'size': 'SORT_SIZE'}
FLAGS = 'PDKWS'
NAME_WIDTHS = {'MaxArrayNameLength', 'MaxVolumeNameLength'}
# Decoders the library defines itself, as members of the platform classes.
LIBRARY_DECODERS = {
    'services::user::Preferences::decodeOutputType',
    'services::user::Preferences::decodeOutputMode',
    'services::user::Preferences::decodeStorageUnit',
    'services::user::Preferences::decodeTemperature',
    'services::user::User::decodeExperience',
    'services::scheduler::TaskRepVol::decodeSnapMode',
}
_ARRAY_RE = re.compile(r'^gQdb[A-Za-z0-9]+$')


class Prop:
    pass


def read_catalogue(path, keywords, decoders):
    arrays = {}
    current = None
    for number, line in genlib.source_lines(path):
        if not line.startswith(' '):
            parts = line.split()
            if len(parts) != 2 or parts[0] != 'array' or not _ARRAY_RE.match(parts[1]):
                raise genlib.GenError(path, number, 'expected "array gQdb<Name>"')
            if parts[1] in arrays:
                raise genlib.GenError(path, number, f'array "{parts[1]}" is defined twice')
            current = parts[1]
            arrays[current] = (number, [])
            continue
        if current is None:
            raise genlib.GenError(path, number, 'property before the first "array" line')
        parts = line.split()
        if len(parts) not in (6, 7):
            raise genlib.GenError(path, number,
                                  'expected "<keyword> <type> <size> <flags> <sort> <decoder> [<qualifier>=<value>]"')
        p = Prop()
        p.line = number
        p.keyword, p.type, size, flags, sort, decoder = parts[:6]
        if p.keyword not in keywords:
            raise genlib.GenError(path, number, f'"{p.keyword}" is not a keyword of the repository')
        if p.type not in TYPES:
            raise genlib.GenError(path, number, f'unknown type "{p.type}"')
        if size in NAME_WIDTHS:
            p.size, p.width_of = 0, size
        elif size.isdigit():
            p.size, p.width_of = int(size), None
        else:
            raise genlib.GenError(path, number, f'size "{size}" is neither a number nor a name-length limit')
        if flags != '-' and (any(f not in FLAGS for f in flags) or len(set(flags)) != len(flags)):
            raise genlib.GenError(path, number, f'flags "{flags}": use letters of {FLAGS} once each, or "-"')
        p.flags = '' if flags == '-' else flags
        if sort not in SORTS:
            raise genlib.GenError(path, number, f'unknown sort type "{sort}"')
        p.sort = SORTS[sort]
        if decoder == '-':
            p.decoder = None
        elif decoder in decoders or decoder in LIBRARY_DECODERS:
            p.decoder = decoder
        else:
            raise genlib.GenError(path, number, f'unknown decoder "{decoder}"')
        if p.decoder and p.type not in ('ENUM', 'ENUMTOKEN'):
            raise genlib.GenError(path, number, f'a {p.type} column has no decoder')
        if p.type == 'ENUMTOKEN' and not p.decoder:
            raise genlib.GenError(path, number, 'an ENUMTOKEN column needs a decoder')
        p.qualifier = None
        if len(parts) == 7:
            name, eq, value = parts[6].partition('=')
            for kw in (name, value):
                if not eq or kw not in keywords:
                    raise genlib.GenError(path, number,
                                          f'qualifier "{parts[6]}": expected <keyword>=<keyword>')
            p.qualifier = (name, value)
        arrays[current][1].append(p)
    return arrays


def read_registrations(path, keywords, arrays):
    rows = []
    for number, line in genlib.source_lines(path):
        parts = line.split()
        if len(parts) != 6:
            raise genlib.GenError(path, number,
                                  'expected "<basetype> <array> <wbi> <primary-key> <parent-basetype> <parent-key>"')
        basetype, array, wbi, pkey, parent, parent_key = parts
        for kw in (basetype, pkey, parent, parent_key):
            if kw not in keywords:
                raise genlib.GenError(path, number, f'"{kw}" is not a keyword of the repository')
        if array != '-' and array not in arrays:
            raise genlib.GenError(path, number, f'unknown array "{array}"')
        if wbi not in ('yes', 'no'):
            raise genlib.GenError(path, number, f'wbi is "yes" or "no", not "{wbi}"')
        columns = {p.keyword for p in arrays[array][1]} if array != '-' else set()
        if pkey not in ('none', 'singleton') and pkey not in columns:
            raise genlib.GenError(path, number, f'primary key "{pkey}" is not a property of {array}')
        if parent_key != 'none' and parent_key not in columns:
            raise genlib.GenError(path, number, f'parent key "{parent_key}" is not a property of {array}')
        if (parent == 'none') != (parent_key == 'none'):
            raise genlib.GenError(path, number, 'a parent basetype and its key property go together')
        rows.append((basetype, array, wbi == 'yes', pkey, parent, parent_key))
    return rows


def tok(keyword):
    return f'tGS{genlib.identifier(keyword)}'


def generate(keywords_path, decoders_path, catalogue_path, registrations_path, out_h, out_cpp):
    keywords = genlib.read_keywords(keywords_path)
    decoders = {name for name, _, _ in gen_decoders.read_decoders(decoders_path)}
    arrays = read_catalogue(catalogue_path, keywords, decoders)
    rows = read_registrations(registrations_path, keywords, arrays)
    head = genlib.banner(sys.argv[0], [keywords_path, decoders_path, catalogue_path, registrations_path])

    h = [head, '#ifndef QEL_GEN_CATALOGUE_ARRAYS_H\n#define QEL_GEN_CATALOGUE_ARRAYS_H\n\n',
         '#include <qel/metadata/meta_data_db.h>\n\n',
         '// Property arrays of the table catalogue, in column order.\n']
    for name, (_, props) in arrays.items():
        h.append(f'extern PropertyMetaData {name}[{len(props)}];\n')
    h.append('\n#endif\n')

    c = [head, '#include <qel/metadata/catalogue_arrays.h>\n\n',
         '#include <qel/platform/decoders.h>\n#include <qel/platform/helpers.h>\n#include <qel/platform/user.h>\n\n']
    for name, (_, props) in arrays.items():
        c.append(f'PropertyMetaData {name}[{len(props)}] = {{\n')
        for p in props:
            qn, qv = (tok(p.qualifier[0]), tok(p.qualifier[1])) if p.qualifier else ('tGSnone', 'tGSnone')
            b = lambda f: 'true' if f in p.flags else 'false'
            decoder = f'&{p.decoder}' if p.decoder else 'nullptr'
            c.append(f'    {{{tok(p.keyword)}, {p.size}, COLTYPE_{p.type}, {qn}, {qv}, '
                     f'{b("P")}, {b("D")}, {b("K")}, {b("W")}, {b("S")}, {p.sort}, {decoder}}},\n')
        c.append('};\n\n')

    c.append('namespace {\n\n'
             '// Name columns take their widths from the platform\'s name-length limits\n'
             '// when the library is loaded; until then their size is 0.\n'
             'struct NameColumnWidths {\n  NameColumnWidths() {\n')
    for name, (_, props) in arrays.items():
        for i, p in enumerate(props):
            if p.width_of:
                c.append(f'    {name}[{i}].size = services::dom::Constants::{p.width_of};\n')
    c.append('  }\n};\nconst NameColumnWidths kNameColumnWidths;\n\n} // namespace\n\n')

    c.append('void initGSables() {\n'
             '  TableMetaDataManager *registry =\n'
             '      TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);\n'
             '  registry->registeringCatalogue = true;\n')
    for basetype, array, wbi, pkey, parent, parent_key in rows:
        props = f'{array}, {len(arrays[array][1])}' if array != '-' else 'nullptr, 0'
        c.append(f'  registry->addTable({tok(basetype)}, {props}, {"true" if wbi else "false"}, '
                 f'pGS{genlib.identifier(pkey)}, pGS{genlib.identifier(parent)}, '
                 f'pGS{genlib.identifier(parent_key)});\n')
    c.append('  registry->registeringCatalogue = false;\n}\n')

    genlib.write_if_changed(out_h, ''.join(h))
    genlib.write_if_changed(out_cpp, ''.join(c))


if __name__ == '__main__':
    genlib.run(generate, __doc__, 6)
