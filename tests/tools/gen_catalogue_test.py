"""The catalogue and decoder generators stop on broken sources with
file:line errors and write nothing."""

import unittest

import genharness


class Generators(genharness.GeneratorTest):
    def test_broken_sources(self):
        catalogue = [
            ('nosuch  STRING 10 PD string -', 'not a keyword'),
            ('name    TEXT 10 PD string -', 'unknown type'),
            ('name    STRING wide PD string -', 'size'),
            ('name    STRING 10 PX string -', 'flags'),
            ('name    STRING 10 PP string -', 'flags'),
            ('name    STRING 10 PD alpha -', 'unknown sort type'),
            ('name    STRING 10 PD string decodeNothing', 'unknown decoder'),
            ('name    STRING 10 PD string decodeHealthStatus', 'has no decoder'),
            ('name    STRING 10 PD string - blocksize', 'qualifier'),
            ('name    STRING 10 PD', 'expected'),
        ]
        registrations = [
            ('volumes gQdbNothing yes none none none', 'unknown array'),
            ('volumes gQdbShowVolumes maybe none none none', 'wbi'),
            ('volumes gQdbShowVolumes yes health2 none none', 'not a keyword'),
            ('volumes gQdbShowVolumes yes volumes none none', 'primary key'),
            ('volumes gQdbShowVolumes yes name volumes none', 'go together'),
        ]
        decoders = [
            ('decodeX\n  1 A\n  0 B\n', 3, 'ascend'),
            ('decodeX\n  0 A "quoted"\n', 2, 'unescaped'),
            ('decodeX\n  0 A\n  * %d items\n', 3, 'fallback'),
            ('decodeX\n  0 50%\n', 2, 'fallback line only'),
            ('decodeX\n  0 A\ndecodeX\n  0 B\n', 3, 'already defined'),
            ('decodeX\n', 1, 'lists no value'),
            ('  0 A\n', 1, 'before the first decoder'),
        ]
        name_only = 'array gQdbShowVolumes\n  name STRING 10 PD string -\n'
        cases = [({'catalogue.txt': f'array gQdbShowVolumes\n  {line}\n'}, 'catalogue.txt', 2, fragment)
                 for line, fragment in catalogue]
        cases += [({'registrations.txt': line + '\n'}, 'registrations.txt', 1, fragment)
                  for line, fragment in registrations]
        cases += [({'decoders.txt': text, 'catalogue.txt': name_only}, 'decoders.txt', line, fragment)
                  for text, line, fragment in decoders]
        self.assertBroken('gen_catalogue.py', [*genharness.SOURCES, 'out/c.h', 'out/c.cpp'], 'out/c.cpp', cases)


if __name__ == '__main__':
    unittest.main()
