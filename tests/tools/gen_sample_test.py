# The sample-system generator: values converted by column type, and broken
# sample sources stopped with file:line errors before anything is written.

import os
import unittest

import genharness

GOOD = """\
show volumes scale
  row
    name vol{n-1:03}
    health Degraded
    size 1171875000
    created 2026-11-02 08:00:00
    serial-number SN01
    wwn 600E4A21
    details @st-detail
    name#2 second
object st-detail status layout=pairs
  row
    name inner
show status layout=status
"""
ARGS = [*genharness.SOURCES, 'out/sample_data.cpp', 'sample.txt']


class SampleGenerator(genharness.GeneratorTest):
    def test_values_by_column_type(self):
        proc, tmp = self.generate('gen_sample.py', ARGS, {'sample.txt': GOOD})
        self.assertEqual(proc.returncode, 0, proc.stderr)
        with open(os.path.join(tmp, 'out/sample_data.cpp')) as f:
            text = f.read()
        for fragment in [
            '{0, 0, 0u, "vol{n-1:03}", 11, -1}',             # pattern kept for run time
            '{0, 1, 1u, nullptr, 0, -1}',                  # decoder text -> value
            '{0, 2, 0u, "1171875000", 10, -1}',            # big numbers stay text
            '{0, 3, 1793606400u, nullptr, 0, -1}',         # UTC date -> seconds
            '{0, 5, 0u, "`\\016J!", 4, -1}',       # hex digits -> bytes
            '{0, 6, 0u, nullptr, 0, 1}',                   # nested object by index
            '{0, 7, 0u, "second", 6, -1}',                 # second column of a keyword
            '{"volumes", "volumes", true, 0, true, 1, values0, 8, nullptr, 0}',
            '{"st-detail", "status", false, 1, false, 1, values1, 1, nullptr, 0}',
        ]:
            self.assertIn(fragment, text)

    def test_broken_sources(self):
        cycle = GOOD.replace('st-detail status layout=pairs', 'st-detail volumes').replace(
            '    name inner', '    details @st-detail')
        cases = [
            ('show volumes scale', 'shw volumes', 1, 'expected "show <basetype>'),
            ('show volumes scale', 'show disks', 1, '"disks" is not a registered basetype'),
            ('scale', 'layout=wide', 1, 'unknown option "layout=wide"'),
            ('health Degraded', 'health Broken', 4, '"Broken" is not a value of decodeHealthStatus'),
            ('size 1171875000', 'size 12 GB', 5, 'a BLOCKS column takes an unsigned decimal'),
            ('2026-11-02 08:00:00', '2026-11-02', 6, 'is not "YYYY-MM-DD HH:MM:SS"'),
            ('SN01', 'SN0123456', 7, "longer than the column's 8 bytes"),
            ('600E4A21', '600E4A2', 8, 'expected pairs of hex digits'),
            ('600E4A21', '600E4A2100', 8, 'at most 4 bytes'),
            ('@st-detail', 'st-detail', 9, 'a QEL column takes "@<object>"'),
            ('@st-detail', '@nowhere', 9, '"@nowhere" is not an object'),
            ('name#2 second', 'name#3 third', 10, 'has no column "name#3"'),
            ('    name vol{n-1:03}\n', '    health OK\n    name vol\n', 4, 'out of column order'),
            ('vol{n-1:03}', 'vol{m}', 3, 'braces only in'),
            ('    name inner', '    details @st-detail', 13, 'has no column "details"'),
            ('show status layout=status\n', '', 1, 'no "show" block for status'),
            (GOOD, GOOD + 'object st-detail status\n', 15, '"st-detail" is already defined'),
            (GOOD, cycle, 11, '"st-detail" contains itself'),
        ]
        self.assertBroken('gen_sample.py', ARGS, 'out/sample_data.cpp',
                          [({'sample.txt': GOOD.replace(old, new, 1)}, 'sample.txt', line, fragment)
                           for old, new, line, fragment in cases])


if __name__ == '__main__':
    unittest.main()
