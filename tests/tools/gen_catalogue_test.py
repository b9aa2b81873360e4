"""The catalogue and decoder generators stop on broken sources with
file:line errors and write nothing."""

import os
import unittest

import genharness

KEYWORDS = """\
1 volumes
2 name
3 health
4 none
5 singleton
6 blocks
7 blocksize
8 512
"""
DECODERS = """\
decodeHealthStatus
  0 OK
  1 Degraded
"""
CATALOGUE = """\
array gQdbShowVolumes
  name    STRING MaxVolumeNameLength PDWS string -
  health  ENUM   10 PD string decodeHealthStatus
  blocks  U64    20 D  integer - blocksize=512
"""
REGISTRATIONS = 'volumes gQdbShowVolumes yes name none none\n'


class Generators(genharness.GeneratorTest):
    def assertFails(self, file, line, fragment, catalogue=CATALOGUE, registrations=REGISTRATIONS,
                    decoders=DECODERS):
        files = {'keywords.txt': KEYWORDS, 'decoders.txt': decoders,
                 'catalogue.txt': catalogue, 'registrations.txt': registrations}
        tmp = self.write_sources(files)
        out_cpp = os.path.join(tmp, 'out', 'c.cpp')
        args = [os.path.join(tmp, n) for n in files] + [os.path.join(tmp, 'out', 'c.h'), out_cpp]
        self.assertFailsAt(self.generate('gen_catalogue.py', args), os.path.join(tmp, file), line,
                           fragment, out_cpp)

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
        cases = [('catalogue.txt', 2, f, dict(catalogue=f'array gQdbShowVolumes\n  {line}\n'))
                 for line, f in catalogue]
        cases += [('registrations.txt', 1, f, dict(registrations=line + '\n')) for line, f in registrations]
        cases += [('decoders.txt', n, f, dict(decoders=text, catalogue='array gQdbShowVolumes\n'
                                              '  name STRING 10 PD string -\n'))
                  for text, n, f in decoders]
        for file, line, fragment, kwargs in cases:
            with self.subTest(file=file, **kwargs):
                self.assertFails(file, line, fragment, **kwargs)


if __name__ == '__main__':
    unittest.main()
