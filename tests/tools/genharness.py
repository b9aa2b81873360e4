# Shared by the generator tests: a small valid repository, a generator run
# on it with some of its files replaced, and the check of how one fails.

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

TOOLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'tools')
# Keywords, decoders, catalogue and registrations of two tables; a test
# replaces the file it breaks.
SOURCES = {
    'keywords.txt': ''.join(f'{token} {keyword}\n' for token, keyword in enumerate(
        'volumes name health none serial-number size created details wwn status console'.split(), 1)),
    'decoders.txt': 'decodeHealthStatus\n  0 OK\n  1 Degraded\n',
    'catalogue.txt': """\
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
""",
    'registrations.txt': 'volumes gQdbShowVolumes yes none none none\nstatus gQdbStatus yes none none none\n',
}


class GeneratorTest(unittest.TestCase):
    def generate(self, script, args, files):
        # Runs \p script on paths \p args in a fresh directory holding
        # SOURCES updated by \p files ({name: text}); returns the process and
        # the directory.
        tmp = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, tmp)
        for name, text in {**SOURCES, **files}.items():
            os.makedirs(os.path.dirname(os.path.join(tmp, name)), exist_ok=True)
            with open(os.path.join(tmp, name), 'w', encoding='utf-8') as f:
                f.write(text)
        args = [sys.executable, os.path.join(TOOLS, script)] + [os.path.join(tmp, a) for a in args]
        return subprocess.run(args, capture_output=True, text=True), tmp

    def assertBroken(self, script, args, output, cases):
        # Each case (files, file, line, fragment): \p script stops with
        # "file:line: error: " and the fragment, and writes no \p output.
        for files, file, line, fragment in cases:
            with self.subTest(file=file, fragment=fragment):
                proc, tmp = self.generate(script, args, files)
                self.assertEqual(proc.returncode, 1, proc.stderr)
                self.assertTrue(proc.stderr.startswith(f'{os.path.join(tmp, file)}:{line}: error: '), proc.stderr)
                self.assertIn(fragment, proc.stderr)
                self.assertFalse(os.path.exists(os.path.join(tmp, output)), 'nothing is written on error')
