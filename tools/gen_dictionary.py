"""Generates the field-name dictionary from qel/fieldnames/dictionary/.

Inputs (all UTF-8 text):
  en.txt, es.txt, ... ko.txt  field texts per locale, one record a line:
                              <keyword>[@<table>] | <label> [| <abbr> [| <desc>]]
  basetypes.txt               <table index> <basetype keyword>
  elements.txt                <keyword> | <tag-XML element name>
and the keyword repository (platform/keywords.txt). Given the catalogue
(decoders.txt, catalogue.txt, registrations.txt), every property keyword and
basetype it uses without dictionary text gets derived names: the label from
the keyword ("allocated-size" -> "Allocated Size"), the keyword itself as the
tag-XML element name.

Outputs:
  field_name_arrays.h     declarations of every generated object
  field_names_<loc>.cpp   one per locale: the text pool, the record arrays
                          fieldNametGS<id><suffix> and, for English, the
                          lengths fieldNameLengthtGS<id>
  field_names_init.cpp    init_FieldNames, init_LocaleFieldNames and the
                          derived names (qel_detail::kDerivedNames)

Usage: gen_dictionary.py <keywords.txt> <dictionary dir> <output dir>
                         [<decoders.txt> <catalogue.txt> <registrations.txt>]
"""

import os
import re
import sys

import genlib

# (source file stem, identifier suffix, LocaleCode enumerator), LocaleCode order.
LOCALES = [
    ('en', '', 'LOCALE_EN'),
    ('es', '_es', 'LOCALE_ES'),
    ('fr', '_fr', 'LOCALE_FR'),
    ('de', '_de', 'LOCALE_DE'),
    ('it', '_it', 'LOCALE_IT'),
    ('jp', '_jp', 'LOCALE_JP'),
    ('nl', '_nl', 'LOCALE_NL'),
    ('zh_chs', '_zh_chs', 'LOCALE_ZH_CHS'),
    ('zh_cht', '_zh_cht', 'LOCALE_ZH_CHT'),
    ('ko', '_ko', 'LOCALE_KO'),
]
MAX_FIELDS = 998      # field entries hold indices 1..998
MAX_RECORDS = 255     # a field's record count is one byte
FORBIDDEN = {'"': 'a double quote', '<': '"<"', '&': '"&"'}


class Record:
    def __init__(self, where, table, label, abbreviation, description):
        self.where = where  # (path, line)
        self.table = table  # basetype keyword of a variant, '' for the default
        self.label = label
        self.abbreviation = abbreviation
        self.description = description


def unescape(path, number, text):
    text = text.strip()
    out = []
    i = 0
    while i < len(text):
        if text[i] == '\\':
            if text[i + 1:i + 2] == 's':
                out.append(' ')
                i += 2
                continue
            raise genlib.GenError(path, number, r'"\" may only start "\s" (a kept space)')
        out.append(text[i])
        i += 1
    result = ''.join(out)
    for ch, name in FORBIDDEN.items():
        if ch in result:
            raise genlib.GenError(path, number,
                                  f'{name} in "{result}": documents write texts unescaped')
    return result


def read_texts(path, keywords, english):
    """Returns {keyword: [Record]} in file order. English lists a field's
    default record first; translations may list records in any order."""
    fields = {}
    last_keyword = None
    for number, line in genlib.source_lines(path):
        parts = line.split('|')
        if len(parts) < 2 or len(parts) > 4:
            raise genlib.GenError(path, number,
                                  'expected "<keyword>[@<table>] | <label> [| <abbreviation> [| <description>]]"')
        key = parts[0].strip()
        keyword, _, table = key.partition('@')
        if keyword not in keywords:
            raise genlib.GenError(path, number, f'"{keyword}" is not a keyword of the repository')
        if '@' in key and table not in keywords:
            raise genlib.GenError(path, number, f'table "{table}" is not a keyword of the repository')
        texts = [unescape(path, number, p) for p in parts[1:]] + ['', '']
        label, abbreviation, description = texts[0], texts[1], texts[2]
        if not label:
            raise genlib.GenError(path, number, f'"{key}" has an empty label')
        records = fields.setdefault(keyword, [])
        if records and last_keyword != keyword:
            raise genlib.GenError(path, number,
                                  f'records of "{keyword}" must be consecutive ({records[0].where[1]})')
        if any(r.table == table for r in records):
            raise genlib.GenError(path, number, f'"{key}" is listed twice')
        if english and table and not records:
            raise genlib.GenError(path, number,
                                  f'"{key}": the default record of "{keyword}" must come first')
        records.append(Record((path, number), table, label, abbreviation, description))
        last_keyword = keyword
    return fields


def read_basetypes(path, keywords):
    basetypes = {}
    indices = {}
    for number, line in genlib.source_lines(path):
        parts = line.split()
        if len(parts) != 2 or not parts[0].isdigit():
            raise genlib.GenError(path, number, 'expected "<table index> <basetype>"')
        index, keyword = int(parts[0]), parts[1]
        if keyword not in keywords:
            raise genlib.GenError(path, number, f'"{keyword}" is not a keyword of the repository')
        if index < 1:
            raise genlib.GenError(path, number, 'table indices start at 1')
        if keyword in basetypes:
            raise genlib.GenError(path, number, f'basetype "{keyword}" is listed twice')
        if index in indices:
            raise genlib.GenError(path, number, f'table index {index} is already "{indices[index]}"')
        basetypes[keyword] = (index, number)
        indices[index] = keyword
    return basetypes


def read_elements(path, fields):
    elements = {}
    for number, line in genlib.source_lines(path):
        keyword, sep, name = line.partition('|')
        keyword, name = keyword.strip(), name.strip()
        if not sep or not keyword or not name:
            raise genlib.GenError(path, number, 'expected "<keyword> | <element name>"')
        if keyword not in fields:
            raise genlib.GenError(path, number, f'"{keyword}" is not a field of the dictionary')
        if keyword in elements:
            raise genlib.GenError(path, number, f'"{keyword}" is listed twice')
        if any(ch in name for ch in '"<>&'):
            raise genlib.GenError(path, number, f'element name "{name}" holds an XML special character')
        elements[keyword] = name
    return elements


def validate(texts, basetypes, keywords, paths):
    english = texts['en']
    en_path = paths['en']
    if len(english) > MAX_FIELDS:
        raise genlib.GenError(en_path, 1, f'{len(english)} fields; the table holds {MAX_FIELDS}')
    for keyword, records in english.items():
        where = records[0].where
        if records[0].table:
            raise genlib.GenError(*where, f'"{keyword}" has no default record')
        if len(records) > MAX_RECORDS:
            raise genlib.GenError(*where, f'"{keyword}" has more than {MAX_RECORDS} records')
        for r in records[1:]:
            if r.table not in basetypes:
                raise genlib.GenError(*r.where, f'variant table "{r.table}" is not a basetype')
    for keyword, (index, number) in basetypes.items():
        if keyword not in english:
            raise genlib.GenError(paths['basetypes'], number,
                                  f'basetype "{keyword}" is not a field of {os.path.basename(en_path)}')
    covered = None
    for stem, _, _ in LOCALES[1:]:
        for keyword, records in texts[stem].items():
            if keyword not in english:
                continue  # a translation kept for a keyword without a field
            expected = [r.table for r in english[keyword]]
            got = [r.table for r in records]
            if sorted(expected) != sorted(got):
                raise genlib.GenError(*records[0].where,
                                      f'"{keyword}" has records for {got or ["(default)"]}; '
                                      f'English has {expected}')
        fieldset = {k for k in texts[stem] if k in english}
        if covered is None:
            covered = (stem, fieldset)
        elif fieldset != covered[1]:
            extra = sorted(fieldset - covered[1])
            missing = sorted(covered[1] - fieldset)
            keyword = (extra or missing)[0]
            line = texts[stem][keyword][0].where[1] if keyword in texts[stem] else 1
            raise genlib.GenError(paths[stem], line,
                                  f'locales must cover the same fields: "{keyword}" is '
                                  f'{"only here" if extra else "missing here"}, unlike {covered[0]}.txt')


class Pool:
    """One char array per locale holding every distinct text once."""

    def __init__(self):
        self.offsets = {'': 0}
        self.parts = ['']

    def add(self, text):
        if text not in self.offsets:
            self.offsets[text] = sum(len(p.encode('utf-8')) + 1 for p in self.parts)
            self.parts.append(text)
        return self.offsets[text]

    def emit(self, name):
        lines = [f'const char {name}[] =\n']
        for p in self.parts:
            lines.append(f'    {genlib.cstring(p + chr(0))}\n')
        lines.append(';\n')
        return ''.join(lines)


def derived_label(keyword):
    """The label of a keyword without dictionary text: its words, split at
    "-" and "_", each with a capital first letter."""
    return ' '.join(w[:1].upper() + w[1:] for w in re.split(r'[-_]', keyword) if w)


def catalogue_keywords(keywords, decoders_path, catalogue_path, registrations_path):
    """Property keywords and basetypes of the catalogue, in source order."""
    import gen_catalogue
    import gen_decoders
    decoders = {n: (e, f) for n, e, f in gen_decoders.read_decoders(decoders_path)}
    arrays = gen_catalogue.read_catalogue(catalogue_path, keywords, decoders)
    out = {}
    for _, props in arrays.values():
        for p in props:
            out[p.keyword] = None
    for row in gen_catalogue.read_registrations(registrations_path, keywords, arrays):
        out[row[0]] = None
    return list(out)


def generate(keywords_path, src_dir, out_dir, *catalogue):
    if len(catalogue) not in (0, 3):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    keywords = genlib.read_keywords(keywords_path)
    paths = {stem: os.path.join(src_dir, stem + '.txt') for stem, _, _ in LOCALES}
    paths['basetypes'] = os.path.join(src_dir, 'basetypes.txt')
    paths['elements'] = os.path.join(src_dir, 'elements.txt')
    texts = {stem: read_texts(paths[stem], keywords, stem == 'en') for stem, _, _ in LOCALES}
    basetypes = read_basetypes(paths['basetypes'], keywords)
    validate(texts, basetypes, keywords, paths)
    english = texts['en']
    elements = read_elements(paths['elements'], english)
    inputs = [keywords_path] + [paths[k] for k in paths] + list(catalogue)
    derived = []
    if catalogue:
        derived = sorted((keywords[k], k) for k in catalogue_keywords(keywords, *catalogue)
                         if k not in english)
    head = genlib.banner(sys.argv[0], inputs)

    def arr(keyword, suffix):
        return f'fieldNametGS{genlib.identifier(keyword)}{suffix}'

    def length(keyword):
        return f'fieldNameLengthtGS{genlib.identifier(keyword)}'

    # Declarations.
    h = [head, '#ifndef QEL_GEN_FIELD_NAME_ARRAYS_H\n#define QEL_GEN_FIELD_NAME_ARRAYS_H\n\n',
         '#include <qel/fieldnames/fieldnames.h>\n\n#include <cstdint>\n\n']
    for stem, suffix, _ in LOCALES:
        h.append(f'// {stem}\n')
        for keyword, records in texts[stem].items():
            h.append(f'extern const FieldName {arr(keyword, suffix)}[{len(records)}];\n')
        if stem == 'en':
            for keyword in english:
                h.append(f'extern const std::uint8_t {length(keyword)};\n')
    h.append('\n#endif\n')
    genlib.write_if_changed(os.path.join(out_dir, 'field_name_arrays.h'), ''.join(h))

    # Record arrays, one file per locale. Localized records are placed at the
    # position of the English record for the same table.
    for stem, suffix, _ in LOCALES:
        pool = Pool()
        body = []
        for keyword, records in texts[stem].items():
            if keyword in english:
                order = {r.table: i for i, r in enumerate(english[keyword])}
                records = sorted(records, key=lambda r: order[r.table])
            rows = []
            for r in records:
                table = f'tGS{genlib.identifier(r.table)}' if r.table else '0'
                rows.append(f'    {{{table}, kText + {pool.add(r.description)}, '
                            f'kText + {pool.add(r.abbreviation)}, kText + {pool.add(r.label)}}},\n')
            body.append(f'const FieldName {arr(keyword, suffix)}[{len(records)}] = {{\n')
            body.extend(rows)
            body.append('};\n')
            if stem == 'en':
                body.append(f'const std::uint8_t {length(keyword)} = {len(records)};\n')
        c = [head, '#include <qel/fieldnames/field_name_arrays.h>\n\n',
             'namespace {\n', pool.emit('kText'), '} // namespace\n\n'] + body
        genlib.write_if_changed(os.path.join(out_dir, f'field_names_{stem}.cpp'), ''.join(c))

    # Builders.
    b = [head, '#include <qel/fieldnames/field_name_arrays.h>\n#include <qel/internal.h>\n\n'
         '#include <cstring>\n\n',
         'namespace {\n\n',
         'struct FieldSource {\n  GS_TokenValues token;\n  const FieldName *names;\n'
         '  const std::uint8_t *length;\n  const char *element;\n};\n\n',
         f'const FieldSource kFields[{len(english)}] = {{\n']
    for keyword in english:
        element = elements.get(keyword, keyword)
        b.append(f'    {{tGS{genlib.identifier(keyword)}, {arr(keyword, "")}, &{length(keyword)}, '
                 f'{genlib.cstring(element)}}},\n')
    b.append('};\n\n')
    b.append('struct BaseTypeSource {\n  GS_TokenValues token;\n  std::int32_t index;\n};\n\n')
    b.append(f'const BaseTypeSource kBaseTypes[{len(basetypes)}] = {{\n')
    for keyword, (index, _) in sorted(basetypes.items(), key=lambda kv: kv[1][0]):
        b.append(f'    {{tGS{genlib.identifier(keyword)}, {index}}},\n')
    b.append('};\n\n')
    b.append('struct LocaleSource {\n  GS_TokenValues token;\n  const FieldName *names;\n};\n\n')
    for stem, suffix, _ in LOCALES[1:]:
        entries = texts[stem]
        b.append(f'const LocaleSource kLocale{suffix}[{max(len(entries), 1)}] = {{\n')
        for keyword in entries:
            b.append(f'    {{tGS{genlib.identifier(keyword)}, {arr(keyword, suffix)}}},\n')
        if not entries:
            b.append('    {tGS_NoToken, nullptr},\n')
        b.append('};\n')
    b.append('\nstruct LocaleList {\n  const LocaleSource *entries;\n  int count;\n};\n\n')
    b.append('const LocaleList kLocales[9] = {\n')
    for stem, suffix, _ in LOCALES[1:]:
        b.append(f'    {{kLocale{suffix}, {len(texts[stem])}}},\n')
    b.append('};\n\n} // namespace\n\n')
    b.append('// Catalogue keywords without dictionary text, by token.\n'
             'namespace qel_detail {\n'
             f'const DerivedName kDerivedNames[{max(len(derived), 1)}] = {{\n')
    for token, keyword in derived:
        b.append(f'    {{tGS{genlib.identifier(keyword)}, '
                 f'{{0, "", "", {genlib.cstring(derived_label(keyword))}}}, {genlib.cstring(keyword)}}},\n')
    if not derived:
        b.append('    {0, {0, "", "", ""}, ""},\n')
    b.append(f'}};\nconst std::size_t kDerivedNameCount = {len(derived)};\n'
             '} // namespace qel_detail\n\n')
    b.append(INIT_CODE)
    genlib.write_if_changed(os.path.join(out_dir, 'field_names_init.cpp'), ''.join(b))


INIT_CODE = '''\
void init_FieldNames() {
  std::memset(fields, 0, sizeof fields);
  std::memset(MetaDataLookupTable, 0, sizeof MetaDataLookupTable);
  std::memset(BaseTypeLookupTable, 0, sizeof BaseTypeLookupTable);
  // Field indices follow the source order, from 1.
  std::uint32_t n = 0;
  for (const FieldSource &f : kFields)
    MetaDataLookupTable[f.token - 1] = ++n;
  for (const BaseTypeSource &b : kBaseTypes)
    BaseTypeLookupTable[b.token - 1] = b.index;
  for (const FieldSource &f : kFields) {
    std::uint32_t index = MetaDataLookupTable[f.token - 1];
    fields[index].length = *f.length;
    fields[index].names = f.names;
  }
  for (const FieldSource &f : kFields)
    xmlName[MetaDataLookupTable[f.token - 1]] = f.element;
}

void init_LocaleFieldNames() {
  for (int block = 0; block < 9; ++block) {
    LocaleFieldTable &table = locale_fields[block];
    table.locale = static_cast<LocaleCode>(LOCALE_ES + block);
    const LocaleList &list = kLocales[block];
    for (int i = 0; i < list.count; ++i) {
      // Translations of keywords without a field have no slot.
      std::uint32_t index = MetaDataLookupTable[list.entries[i].token - 1];
      if (index != 0)
        table.entries[index].names = list.entries[i].names;
    }
  }
}
'''


if __name__ == '__main__':
    genlib.run(generate, __doc__, 3, variadic=True)
