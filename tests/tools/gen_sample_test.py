"""The sample-system generator: values converted by column type, and broken
sample sources stopped with file:line errors before anything is written."""

import os
import unittest

import genharness

KEYWORDS = """\
1 volumes
2 name
3 health
4 none
5 serial-number
6 size
7 created
8 details
9 wwn
10 status
11 console
"""
DECODERS = """\
decodeHealthStatus
  0 OK
  1 Degraded
"""
CATALOGUE = """\
array gQdbShowVolumes
  name          STRING     20 PDW string   -
  health        ENUM       10 PD  string   decodeHealthStatus
  size          BLOCKS     10 PD  size     -
  created       DATETIME   25 PD  datetime -
  serial-number STRING_N   8  PD  string   -
  wwn           HEX_STRING 8  PD  string   -
  details       QEL        0  PD  nosort   -
  name          STRING     20 PD  string   -
array gQdbStatus
  name STRING 20 PD string -
"""
REGISTRATIONS = """\
volumes gQdbShowVolumes yes none none none
status gQdbStatus yes none none none
"""
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


class SampleGenerator(genharness.GeneratorTest):
    def run_gen(self, sample):
        files = {'keywords.txt': KEYWORDS, 'decoders.txt': DECODERS,
                 'catalogue.txt': CATALOGUE, 'registrations.txt': REGISTRATIONS, 'sample.txt': sample}
        tmp = self.write_sources(files)
        out = os.path.join(tmp, 'out', 'sample_data.cpp')
        args = [os.path.join(tmp, n) for n in files if n != 'sample.txt'] + [out, os.path.join(tmp, 'sample.txt')]
        return self.generate('gen_sample.py', args), os.path.join(tmp, 'sample.txt'), out

    def test_values_by_column_type(self):
        proc, _, out = self.run_gen(GOOD)
        self.assertEqual(proc.returncode, 0, proc.stderr)
        with open(out) as f:
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
        def replace(old, new):
            return GOOD.replace(old, new, 1)
        cases = [
            (replace('show volumes scale', 'shw volumes'), 1, 'expected "show <basetype>'),
            (replace('show volumes scale', 'show disks'), 1, '"disks" is not a registered basetype'),
            (replace('scale', 'layout=wide'), 1, 'unknown option "layout=wide"'),
            (replace('health Degraded', 'health Broken'), 4, '"Broken" is not a value of decodeHealthStatus'),
            (replace('size 1171875000', 'size 12 GB'), 5, 'a BLOCKS column takes an unsigned decimal'),
            (replace('2026-11-02 08:00:00', '2026-11-02'), 6, 'is not "YYYY-MM-DD HH:MM:SS"'),
            (replace('SN01', 'SN0123456'), 7, "longer than the column's 8 bytes"),
            (replace('600E4A21', '600E4A2'), 8, 'expected pairs of hex digits'),
            (replace('600E4A21', '600E4A2100'), 8, 'at most 4 bytes'),
            (replace('@st-detail', 'st-detail'), 9, 'a QEL column takes "@<object>"'),
            (replace('@st-detail', '@nowhere'), 9, '"@nowhere" is not an object'),
            (replace('name#2 second', 'name#3 third'), 10, 'has no column "name#3"'),
            (replace('    name vol{n-1:03}\n', '    health OK\n    name vol\n'), 4, 'out of column order'),
            (replace("vol{n-1:03}", "vol{m}"), 3, 'braces only in'),
            (replace('    name inner', '    details @st-detail'), 13, 'has no column "details"'),
            (GOOD.replace('show status layout=status\n', ''), 1, 'no "show" block for status'),
            (GOOD + 'object st-detail status\n', 15, '"st-detail" is already defined'),
        ]
        for sample, line, fragment in cases:
            with self.subTest(fragment=fragment):
                proc, path, out = self.run_gen(sample)
                self.assertFailsAt(proc, path, line, fragment, out)

    def test_nested_object_may_not_contain_itself(self):
        sample = GOOD.replace('object st-detail status layout=pairs',
                              'object st-detail volumes') + ''
        sample = sample.replace('    name inner', '    details @st-detail')
        proc, path, _ = self.run_gen(sample)
        self.assertEqual(proc.returncode, 1, proc.stderr)
        self.assertIn('contains itself', proc.stderr)


if __name__ == '__main__':
    unittest.main()
