"""The dictionary generator stops on broken sources with file:line errors
and writes nothing; on good sources it places localized variants by table."""

import os
import unittest

import genharness
LOCALES = ['en', 'es', 'fr', 'de', 'it', 'jp', 'nl', 'zh_chs', 'zh_cht', 'ko']

KEYWORDS = """\
1 volumes
2 drives
3 type
4 serial-number
5 tasks
6 primary-ip-address
7 hosts
"""
EN = """\
volumes | Volumes
drives | Disks
type | Type
type@drives | Type | | The type of disk
type@tasks | Task Type
serial-number | Serial Number
tasks | Tasks
"""


class DictionaryGenerator(genharness.GeneratorTest):
    def run_generator(self, en=EN, locales=None, basetypes='1 volumes\n2 drives\n3 tasks\n',
                      elements='type | Type\n', keywords=KEYWORDS):
        files = {'en.txt': en, 'basetypes.txt': basetypes, 'elements.txt': elements}
        files.update({loc + '.txt': (locales or {}).get(loc, '') for loc in LOCALES[1:]})
        tmp = self.write_sources({'keywords.txt': keywords})
        src, out = self.write_sources(files, os.path.join(tmp, 'dict')), os.path.join(tmp, 'out')
        return self.generate('gen_dictionary.py', [os.path.join(tmp, 'keywords.txt'), src, out]), src, out

    def assertFails(self, expected_file, expected_line, fragment, **kwargs):
        proc, src, out = self.run_generator(**kwargs)
        self.assertFailsAt(proc, os.path.join(src, expected_file), expected_line, fragment, out)

    def test_good_sources(self):
        de = ('type@tasks | Aufgabentyp | | Typ des Vorgang\n'
              'type | Typ\n'
              'type@drives | Typ | | Der Typ des Datenträgers\n'
              'primary-ip-address | Primäre IP-Adresse\n')
        locales = {loc: de.replace('Typ', 'T' + loc) for loc in LOCALES[1:]}
        locales['de'] = de
        proc, _, out = self.run_generator(locales=locales)
        self.assertEqual(proc.returncode, 0, proc.stderr)
        with open(os.path.join(out, 'field_names_de.cpp'), encoding='utf-8') as f:
            text = f.read()
        body = text[text.index('fieldNametGStype_de'):]
        # Placed in the English order: default, drives, tasks.
        self.assertLess(body.index('{0,'), body.index('{tGSdrives,'))
        self.assertLess(body.index('{tGSdrives,'), body.index('{tGStasks,'))
        self.assertIn('fieldNametGSprimary_2Dip_2Daddress_de', text)
        with open(os.path.join(out, 'field_name_arrays.h')) as f:
            self.assertIn('fieldNameLengthtGStype;', f.read())

    def test_broken_sources(self):
        uniform = {loc: 'volumes | V\n' for loc in LOCALES[1:]}
        cases = [
            ('en.txt', 2, '"nosuch" is not a keyword', dict(en='volumes | Volumes\nnosuch | X\n')),
            ('en.txt', 1, 'empty label', dict(en='volumes |  | abbr\n')),
            ('en.txt', 1, 'unescaped', dict(en='volumes | say "x"\n')),
            ('en.txt', 2, 'tab', dict(en='volumes | Volumes\ndrives |\tDisks\n')),
            ('en.txt', 1, 'default record', dict(en='type@drives | Type\ntype | Type\n')),
            ('en.txt', 3, 'listed twice', dict(en='type | Type\ntype@drives | A\ntype@drives | B\n')),
            ('en.txt', 5, 'not a basetype', dict(en=EN.replace('type@tasks', 'type@serial-number'))),
            ('en.txt', 3, 'consecutive', dict(en='type | Type\nvolumes | V\ntype@drives | T\n')),
            ('basetypes.txt', 4, 'not a field', dict(basetypes='1 volumes\n2 drives\n3 tasks\n4 hosts\n')),
            ('basetypes.txt', 2, 'already', dict(basetypes='1 volumes\n1 drives\n')),
            ('es.txt', 1, 'English has',
             dict(locales={loc: 'type | T\ntype@drives | T\n' for loc in LOCALES[1:]})),
            ('fr.txt', 1, '"serial-number" is only here',
             dict(locales=dict(uniform, fr='serial-number | S\nvolumes | V\n'))),
            ('elements.txt', 1, 'not a field', dict(elements='hosts | Hosts\n')),
        ]
        for file, line, fragment, kwargs in cases:
            with self.subTest(file=file, fragment=fragment):
                self.assertFails(file, line, fragment, **kwargs)


if __name__ == '__main__':
    unittest.main()
