"""Shared by the generator tests: writes sources into a fresh directory,
runs a generator on them, and checks how it fails."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

TOOLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'tools')


class GeneratorTest(unittest.TestCase):
    def write_sources(self, files, directory=None):
        """Writes {name: text} into \\p directory (a fresh one by default);
        returns the directory."""
        if directory is None:
            directory = tempfile.mkdtemp()
            self.addCleanup(shutil.rmtree, directory)
        os.makedirs(directory, exist_ok=True)
        for name, text in files.items():
            with open(os.path.join(directory, name), 'w', encoding='utf-8') as f:
                f.write(text)
        return directory

    def generate(self, script, args):
        return subprocess.run([sys.executable, os.path.join(TOOLS, script)] + list(args),
                              capture_output=True, text=True)

    def assertFailsAt(self, proc, path, line, fragment, output):
        """The generator stopped with path:line and the fragment, writing nothing."""
        self.assertEqual(proc.returncode, 1, proc.stderr)
        self.assertTrue(proc.stderr.startswith(f'{path}:{line}: error: '), proc.stderr)
        self.assertIn(fragment, proc.stderr)
        self.assertFalse(os.path.exists(output), 'nothing is written on error')
