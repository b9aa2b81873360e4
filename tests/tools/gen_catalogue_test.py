# The catalogue and decoder generators stop on broken sources with
# file:line errors and write nothing.

import unittest

import genharness

NAME_ONLY = 'array gQdbShowVolumes\n  name STRING 10 PD string -\n'


class Generators(genharness.GeneratorTest):
    def test_broken_sources(self):
        catalogue = lambda line, why: ({'catalogue.txt': f'array gQdbShowVolumes\n  {line}\n'}, 'catalogue.txt', 2, why)
        registrations = lambda line, why: ({'registrations.txt': line + '\n'}, 'registrations.txt', 1, why)
        decoders = lambda text, line, why: ({'decoders.txt': text, 'catalogue.txt': NAME_ONLY}, 'decoders.txt', line, why)
        self.assertBroken('gen_catalogue.py', [*genharness.SOURCES, 'out/c.h', 'out/c.cpp'], 'out/c.cpp', [
            catalogue('nosuch  STRING 10 PD string -', 'not a keyword'),
            catalogue('name    TEXT 10 PD string -', 'unknown type'),
            catalogue('name    STRING wide PD string -', 'size'),
            catalogue('name    STRING 10 PX string -', 'flags'),
            catalogue('name    STRING 10 PP string -', 'flags'),
            catalogue('name    STRING 10 PD alpha -', 'unknown sort type'),
            catalogue('name    STRING 10 PD string decodeNothing', 'unknown decoder'),
            catalogue('name    STRING 10 PD string decodeHealthStatus', 'has no decoder'),
            catalogue('name    STRING 10 PD string - blocksize', 'qualifier'),
            catalogue('name    STRING 10 PD', 'expected'),
            registrations('volumes gQdbNothing yes none none none', 'unknown array'),
            registrations('volumes gQdbShowVolumes maybe none none none', 'wbi'),
            registrations('volumes gQdbShowVolumes yes health2 none none', 'not a keyword'),
            registrations('volumes gQdbShowVolumes yes volumes none none', 'primary key'),
            registrations('volumes gQdbShowVolumes yes name volumes none', 'go together'),
            decoders('decodeX\n  1 A\n  0 B\n', 3, 'ascend'),
            decoders('decodeX\n  0 A "quoted"\n', 2, 'unescaped'),
            decoders('decodeX\n  0 A\n  * %d items\n', 3, 'fallback'),
            decoders('decodeX\n  0 50%\n', 2, 'fallback line only'),
            decoders('decodeX\n  0 A\ndecodeX\n  0 B\n', 3, 'already defined'),
            decoders('decodeX\n', 1, 'lists no value'),
            decoders('  0 A\n', 1, 'before the first decoder'),
        ])

if __name__ == '__main__':
    unittest.main()
