# The dictionary generator stops on broken sources with file:line errors
# and writes nothing; on good sources it places localized variants by table.

import os
import unittest

import genharness

LOCALES = ['es', 'fr', 'de', 'it', 'jp', 'nl', 'zh_chs', 'zh_cht', 'ko']
KEYWORDS = '1 volumes\n2 drives\n3 type\n4 serial-number\n5 tasks\n6 primary-ip-address\n7 hosts\n'
EN = """\
volumes | Volumes
drives | Disks
type | Type
type@drives | Type | | The type of disk
type@tasks | Task Type
serial-number | Serial Number
tasks | Tasks
"""
ARGS = ['keywords.txt', 'dict', 'out']


def sources(en=EN, locales=None, basetypes='1 volumes\n2 drives\n3 tasks\n', elements='type | Type\n'):
    files = {'keywords.txt': KEYWORDS, 'dict/en.txt': en, 'dict/basetypes.txt': basetypes,
             'dict/elements.txt': elements}
    files.update({f'dict/{loc}.txt': (locales or {}).get(loc, '') for loc in LOCALES})
    return files


class DictionaryGenerator(genharness.GeneratorTest):
    def test_good_sources(self):
        de = ('type@tasks | Aufgabentyp | | Typ des Vorgang\n'
              'type | Typ\n'
              'type@drives | Typ | | Der Typ des Datenträgers\n'
              'primary-ip-address | Primäre IP-Adresse\n')
        proc, tmp = self.generate('gen_dictionary.py', ARGS,
                                  sources(locales={loc: de.replace('Typ', 'T' + loc) for loc in LOCALES} | {'de': de}))
        self.assertEqual(proc.returncode, 0, proc.stderr)
        with open(os.path.join(tmp, 'out', 'field_names_de.cpp'), encoding='utf-8') as f:
            text = f.read()
        body = text[text.index('fieldNametGStype_de'):]
        # Placed in the English order: default, drives, tasks.
        placed = [body.index(key) for key in ('{0,', '{tGSdrives,', '{tGStasks,')]
        self.assertEqual(placed, sorted(placed))
        self.assertIn('fieldNametGSprimary_2Dip_2Daddress_de', text)
        with open(os.path.join(tmp, 'out', 'field_name_arrays.h')) as f:
            self.assertIn('fieldNameLengthtGStype;', f.read())

    def test_broken_sources(self):
        uniform = {loc: 'volumes | V\n' for loc in LOCALES}
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
            ('es.txt', 1, 'English has', dict(locales={loc: 'type | T\ntype@drives | T\n' for loc in LOCALES})),
            ('fr.txt', 1, '"serial-number" is only here', dict(locales=dict(uniform, fr='serial-number | S\nvolumes | V\n'))),
            ('elements.txt', 1, 'not a field', dict(elements='hosts | Hosts\n')),
        ]
        self.assertBroken('gen_dictionary.py', ARGS, 'out', [(sources(**kwargs), 'dict/' + file, line, fragment)
                                                            for file, line, fragment, kwargs in cases])


if __name__ == '__main__':
    unittest.main()
