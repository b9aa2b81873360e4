"""End to end: the built qel front end on its sample system, its documents
checked by parsers nobody here wrote (xmllint, Node.js), a few outputs
against golden files, and every kind of bad input.

Usage: qel_e2e_test.py <qel binary> <source dir>
Set QEL_UPDATE_GOLDEN=1 to rewrite the golden files from the current output.
"""

import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

QEL = None
SOURCE = None
FORMATS = ['console', 'api', 'api-brief', 'xml2', 'xml2-brief', 'json', 'json-alt', 'tag']
XML_FORMATS = ['api', 'api-brief', 'xml2', 'xml2-brief']
LOCALES = ['en', 'es', 'fr', 'de', 'it', 'ja', 'nl', 'zh-cn', 'zh-tw', 'ko']
ENV = dict(os.environ, TZ='UTC')
ENV.pop('QEL_LOG', None)

# Node.js evaluates a script with a stub for every constructor: API objects
# keep their properties and attributes, APIProp its name and value. It
# prints the objects as JSON: [{basetype, props: [[name, value]...], nested}]
NODE_STUB = r"""
const fs = require('fs');
function APIProp(p) { this.p = p; }
function make() {
  return function (items, attrs) { this.items = items; this.attrs = attrs || {}; };
}
const ctors = new Proxy({}, {
  has: (_, k) => typeof k === 'string' && k.startsWith('API'),
  get: (t, k) => k === 'APIProp' ? APIProp : (t[k] = t[k] || make()),
});
function flat(o) {
  const props = [], nested = [];
  for (const i of o.items) {
    if (i instanceof APIProp) props.push([i.p.name, i.p.value]);
    else nested.push(flat(i));
  }
  return {basetype: o.attrs.basetype, props: props, nested: nested};
}
let data;
with (ctors) { data = eval(fs.readFileSync(process.argv[2], 'utf8')); }
process.stdout.write(JSON.stringify(data.items.map(flat)));
"""


def qel(*args, check=True):
    proc = subprocess.run([QEL] + list(args), capture_output=True, env=ENV)
    if check and proc.returncode != 0:
        raise AssertionError(f'qel {" ".join(args)} exited {proc.returncode}: {proc.stderr.decode()}')
    return proc


def run_all(arg_lists):
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        return list(pool.map(lambda a: qel(*a, check=False), arg_lists))


def basetypes():
    out = qel('tables').stdout.decode().splitlines()[1:]
    return [line.split()[0] for line in out]


def xmllint(docs):
    """Runs xmllint --noout over the documents; returns its complaints."""
    tmp = tempfile.mkdtemp()
    paths = []
    for i, doc in enumerate(docs):
        path = os.path.join(tmp, f'{i}.xml')
        with open(path, 'wb') as f:
            f.write(doc)
        paths.append(path)
    errors = []
    for start in range(0, len(paths), 200):
        proc = subprocess.run(['xmllint', '--noout'] + paths[start:start + 200], capture_output=True)
        if proc.returncode:
            errors.append(proc.stderr.decode()[:2000])
    return errors


def node_eval(doc):
    tmp = tempfile.mkdtemp()
    stub, script = os.path.join(tmp, 'stub.js'), os.path.join(tmp, 'doc.js')
    with open(stub, 'w') as f:
        f.write(NODE_STUB)
    with open(script, 'wb') as f:
        f.write(doc)
    proc = subprocess.run(['node', stub, script], capture_output=True)
    if proc.returncode:
        raise AssertionError(proc.stderr.decode()[:2000])
    return json.loads(proc.stdout)


def sample_values():
    """What the sample system fills: {basetype: {(keyword, text)}} for the
    text and plain-number cells of every show table, read from the sample
    sources with the generator's own parser."""
    sys.path.insert(0, os.path.join(SOURCE, 'tools'))
    import genlib, gen_catalogue, gen_decoders, gen_sample
    keywords = genlib.read_keywords(os.path.join(SOURCE, 'platform/keywords.txt'))
    decoders = {n: (e, f) for n, e, f in gen_decoders.read_decoders(os.path.join(SOURCE, 'platform/decoders.txt'))}
    catalogue = gen_catalogue.read_catalogue(os.path.join(SOURCE, 'qel/metadata/catalogue.txt'), keywords, decoders)
    arrays = {name: props for name, (_, props) in catalogue.items()}
    regs = {r[0]: r[1] for r in gen_catalogue.read_registrations(
        os.path.join(SOURCE, 'qel/metadata/registrations.txt'), keywords, catalogue)}
    sample_dir = os.path.join(SOURCE, 'apps/qel/sample')
    with open(os.path.join(SOURCE, 'apps/CMakeLists.txt')) as f:
        names = re.findall(r'\$\{SAMPLE_DIR\}/(\w+\.txt)', f.read())
    tables = gen_sample.read_samples([os.path.join(sample_dir, n) for n in names],
                                     keywords, decoders, arrays, regs)
    out = {}
    for t in tables:
        if not t.shown:
            continue
        props = arrays.get(regs[t.basetype], [])
        cells = out.setdefault(t.basetype, set())
        for row in t.rows:
            for column, number, data, _, _ in row:
                prop = props[column]
                if prop.type == 'STRING' and b'{' not in data:
                    cells.add((prop.keyword, data.decode().strip()))
                elif prop.type in ('U8', 'U16', 'U32'):
                    cells.add((prop.keyword, str(number)))
    return out


class EveryTable(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.basetypes = basetypes()

    def test_catalogue_listing(self):
        self.assertEqual(len(self.basetypes), 136)
        self.assertIn('storage-pools', self.basetypes)  # a token-only keyword

    def test_every_table_in_every_format(self):
        args = [('--format', f, 'show', b) for b in self.basetypes for f in FORMATS]
        for a, proc in zip(args, run_all(args)):
            with self.subTest(args=a):
                self.assertEqual(proc.returncode, 0, proc.stderr)
                self.assertTrue(proc.stdout.strip())
                self.assertEqual(proc.stderr, b'')

    def test_xml_documents_are_well_formed(self):
        args = [('--format', f, '--declaration', '--dtd', '--request', 'show ' + b, 'show', b)
                for b in self.basetypes for f in XML_FORMATS]
        args += [('--format', 'api', '--locale', loc, 'show', 'controllers') for loc in LOCALES]
        # Tag XML too, except sas-port: its dictionary element names
        # "Lanes Expected" and "Active Lanes" hold a space.
        args += [('--format', 'tag', 'show', b) for b in self.basetypes if b != 'sas-port']
        docs = [p.stdout for p in run_all(args)]
        self.assertEqual(xmllint(docs), [])

    def test_meta_documents(self):
        args = [('--format', f, '--locale', loc, 'meta', which)
                for f in XML_FORMATS for loc in LOCALES for which in ('all', 'wbi')]
        args += [('--format', 'api', 'meta', b) for b in self.basetypes]
        docs = [p.stdout for p in run_all(args)]
        self.assertEqual(xmllint(docs), [])
        all_en = docs[0].decode()
        self.assertEqual(all_en.count('<OBJECT name="title"'), 136)
        de = qel('--format', 'api', '--locale', 'de', 'meta', 'volumes').stdout.decode()
        self.assertIn('>Name des virtuellen Datenträgers</PROPERTY>', de)
        self.assertIn('>Vdisk Name</PROPERTY>',
                      qel('--format', 'api', '--locale', 'de', '--no-l10n', 'meta', 'volumes').stdout.decode())
        for f in ('json', 'json-alt'):
            objects = node_eval(qel('--format', f, '--locale', 'ko', 'meta', 'all').stdout)
            self.assertEqual(len(objects), 136)
            self.assertEqual(sorted(o['basetype'] for o in objects), sorted(self.basetypes))

    def test_json_yields_what_was_filled(self):
        expected = sample_values()
        args = [('--format', f, 'show', b) for b in self.basetypes for f in ('json', 'json-alt')]
        for a, proc in zip(args, run_all(args)):
            with self.subTest(args=a):
                objects = node_eval(proc.stdout)
                got = set()
                for o in objects:
                    if o['basetype'] == a[3]:
                        got.update((name, value.strip()) for name, value in o['props'])
                missing = expected.get(a[3], set()) - got
                self.assertEqual(missing, set())


class Golden(unittest.TestCase):
    CASES = [
        ('volumes-80.txt', ['--width', '80', 'show', 'volumes']),
        ('volumes-132.txt', ['--width', '132', 'show', 'volumes']),
        ('system-pairs.txt', ['show', 'system']),
        ('controllers-nested.txt', ['--width', '132', 'show', 'controllers']),
        ('hosts-api.xml', ['--format', 'api', '--declaration', '--request', 'show hosts', 'show', 'hosts']),
        ('hosts-api-brief.xml', ['--format', 'api-brief', 'show', 'hosts']),
        ('hosts-xml2.xml', ['--format', 'xml2', 'show', 'hosts']),
        ('hosts-xml2-brief.xml', ['--format', 'xml2-brief', 'show', 'hosts']),
        ('hosts-json.js', ['--format', 'json', 'show', 'hosts']),
        ('hosts-json-alt.js', ['--format', 'json-alt', 'show', 'hosts']),
        ('hosts-tag.xml', ['--format', 'tag', 'show', 'hosts']),
        ('controllers-xml2.xml', ['--format', 'xml2', 'show', 'controllers']),
        ('controllers-json.js', ['--format', 'json', 'show', 'controllers']),
        ('controllers-tag.xml', ['--format', 'tag', 'show', 'controllers']),
        ('volumes-de-api.xml', ['--format', 'api', '--locale', 'de', 'show', 'volumes']),
        ('meta-volumes-ja-api.xml', ['--format', 'api', '--locale', 'ja', 'meta', 'volumes']),
    ]

    def test_outputs_match_golden_files(self):
        golden_dir = os.path.join(SOURCE, 'tests/apps/golden')
        update = os.environ.get('QEL_UPDATE_GOLDEN') == '1'
        for name, args in self.CASES:
            with self.subTest(golden=name):
                got = qel(*args).stdout
                path = os.path.join(golden_dir, name)
                if update:
                    os.makedirs(golden_dir, exist_ok=True)
                    with open(path, 'wb') as f:
                        f.write(got)
                with open(path, 'rb') as f:
                    self.assertEqual(got.decode(), f.read().decode())

    def test_same_bytes_every_time(self):
        args = ['--format', 'api', '--rows', '40', 'show', 'volumes']
        self.assertEqual(qel(*args).stdout, qel(*args).stdout)


class Options(unittest.TestCase):
    def test_rows_scale_list_tables(self):
        # More rows than one page of the paged print: ids run on across pages.
        doc = qel('--format', 'api', '--rows', '4100', '-o', 'volume-name', 'show', 'volumes').stdout.decode()
        self.assertEqual(doc.count('<OBJECT basetype="volumes"'), 4100)
        names = re.findall(r'name="volume-name"[^>]*>([^<]*)<', doc)
        self.assertEqual(len(set(names)), 4100, 'scaled rows keep distinct names')
        self.assertEqual(re.findall(r'oid="(\d+)"', doc), [str(i) for i in range(1, 4102)])
        self.assertTrue(doc.endswith('</OBJECT>\n</RESPONSE>\n'))

    def test_width_units_and_precision_reach_the_session(self):
        narrow = qel('--width', '80', 'show', 'volumes').stdout.decode()
        wide = qel('--width', '132', 'show', 'volumes').stdout.decode()
        self.assertLessEqual(max(map(len, narrow.splitlines())), 80)
        self.assertGreater(max(map(len, wide.splitlines())), 80)
        gb = qel('--units', 'GB', '--precision', '1', 'show', 'volumes').stdout.decode()
        self.assertRegex(gb, r'\d\.\dGB')
        base2 = qel('--base', '2', 'show', 'volumes').stdout.decode()
        self.assertRegex(base2, r'GiB|TiB|GB|TB')

    def test_help_and_version(self):
        for flag in ('--help', '-h'):
            self.assertIn('usage: qel', qel(flag).stdout.decode())
        for flag in ('--version', '-V'):
            self.assertRegex(qel(flag).stdout.decode(), r'^qel \d+\.\d+\.\d+\n$')

    def test_short_options_end_of_options_and_layouts(self):
        long = qel('--format', 'api', '--locale', 'de', 'show', 'hosts').stdout
        self.assertEqual(qel('-f', 'api', '-l', 'de', '--', 'show', 'hosts').stdout, long)
        self.assertEqual(qel('show', '--format=api', '--loc', 'de', 'hosts').stdout, long)
        plain = qel('--width', '1000', 'show', 'volumes').stdout.decode().splitlines()
        bare = qel('-n', '-w', '1000', 'show', 'volumes').stdout.decode().splitlines()
        self.assertTrue(plain[0].startswith('Vdisk') and plain[1].startswith('----'), plain[:2])
        names = lambda lines: sorted(line.split()[1] for line in lines)
        self.assertEqual(names(bare[:5]), names(plain[2:7]), 'the same rows, no header or rule')
        pairs = qel('--layout', 'pairs', 'show', 'volumes').stdout.decode()
        self.assertIn('\nVolume Name: vd01_v001\n', '\n' + pairs)
        self.assertEqual(qel('--layout', 'rows', 'show', 'system').stdout.decode().count('\nSystem Name '), 0)

    def test_man_page_and_completion_cover_every_option(self):
        dist = os.path.join(SOURCE, 'apps/qel/dist')
        options = set(re.findall(r'--[a-z0-9-]+', qel('--help').stdout.decode()))
        with open(os.path.join(dist, 'qel.1')) as f:
            man = f.read().replace('\\-', '-')
        with open(os.path.join(dist, 'qel.bash')) as f:
            completion = f.read()
        self.assertEqual({o for o in options if o not in man}, set())
        self.assertEqual({o for o in options if o != '--' and o not in completion}, set())
        # What the completion offers, run in bash against this qel.
        script = os.path.join(dist, 'qel.bash')
        cases = [
            (['qel', '--form'], ['--format']),
            (['qel', '--format', 'json'], ['json', 'json-alt']),
            (['qel', '-l', 'zh'], ['zh-cn', 'zh-tw']),
            (['qel', '--layout', 'pa'], ['packed', 'pairs']),
            (['qel', 'sh'], ['show']),
            (['qel', '-f', 'api', 'show', 'volume-n'], ['volume-names']),
            (['qel', 'meta', 'volumes,host-g'], ['volumes,host-group', 'volumes,host-group-view']),
        ]
        for words, expected in cases:
            with self.subTest(words=words):
                words = [QEL] + words[1:]
                cmd = (f'source {script}; COMP_WORDS=({" ".join(words)}); COMP_CWORD={len(words) - 1}; '
                       '_qel; printf "%s\\n" "${COMPREPLY[@]}"')
                got = subprocess.run(['bash', '-c', cmd], capture_output=True, text=True).stdout.split()
                self.assertEqual(sorted(got), expected)

    def test_progress_only_on_a_terminal(self):
        import pty
        # Without a terminal stderr stays empty: EveryTable checks that.
        args = ['--format', 'api', '--rows', '150000', 'show', 'volumes']
        master, slave = pty.openpty()
        proc = subprocess.run([QEL] + args, stdout=subprocess.DEVNULL, stderr=slave,
                              env=dict(ENV, QEL_PROGRESS_DELAY_MS='0'))
        os.close(slave)
        seen = b''
        try:
            while True:
                chunk = os.read(master, 4096)
                if not chunk:
                    break
                seen += chunk
        except OSError:
            pass
        os.close(master)
        self.assertEqual(proc.returncode, 0)
        self.assertIn(b'qel: show volumes: ', seen)
        self.assertTrue(seen.endswith(b'\r\x1b[K'), seen[-40:])

    def test_output_and_sort(self):
        proc = qel('-f', 'api', '-o', 'size,volume-name', '--sort', '-size', 'show', 'volumes', check=False)
        if proc.returncode == 1 and b'needs a library with column selection' in proc.stderr:
            self.skipTest('the library has no QEL_SelectColumns/QEL_SortRows yet')
        self.assertEqual(proc.returncode, 0, proc.stderr)
        doc = proc.stdout.decode()
        first = doc[doc.index('basetype="volumes"'):]
        first = first[:first.index('</OBJECT>')]
        self.assertEqual(re.findall(r'PROPERTY name="([a-z-]+)"', first)[:3], ['size', 'size-numeric', 'volume-name'])
        sizes = [int(n) for n in re.findall(r'name="size-numeric"[^>]*>(\d+)<', doc)]
        self.assertEqual(sizes, sorted(sizes, reverse=True))

    def test_bad_input(self):
        cases = [
            (['show', 'volumse'], 'unknown basetype "volumse"; did you mean volumes'),
            (['show', 'nothing-like-it'], 'unknown basetype "nothing-like-it"'),
            (['meta', 'volumes,drivez'], 'unknown basetype "drivez"'),
            (['show'], 'show needs a basetype'),
            (['show', 'volumes', 'drives'], 'show takes one basetype'),
            ([], 'missing command'),
            (['list'], 'unknown command "list"'),
            (['--colour', 'show', 'volumes'], 'unknown option --colour'),
            (['--format', 'yaml', 'show', 'volumes'], 'invalid value "yaml" for --format'),
            (['--locale', 'pt', 'show', 'volumes'], 'invalid value "pt" for --locale'),
            (['--width', 'wide', 'show', 'volumes'], 'invalid value "wide" for --width'),
            (['--base', '8', 'show', 'volumes'], 'invalid value "8" for --base'),
            (['--rows', '-5', 'show', 'volumes'], 'invalid value "-5" for --rows'),
            (['show', 'volumes', '--format'], 'option --format needs a value'),
            (['--dtd=yes', 'show', 'volumes'], 'option --dtd takes no value'),
            (['-x', 'show', 'volumes'], 'unknown option -x'),
            (['-f'], 'option --format needs a value'),
            (['--rows', ' 5', 'show', 'volumes'], 'invalid value " 5" for --rows'),
            (['--rows', '+5', 'show', 'volumes'], 'invalid value "+5" for --rows'),
            (['--rows', '1000000001', 'show', 'volumes'], 'for --rows (a number from 0 to 1000000000)'),
            (['--rows', '10000000', '-s', 'size', 'show', 'drives'], 'show drives sorted holds at most 7895160 rows'),
            (['show', 'a\nb'], 'unknown basetype "a\\nb" (qel tables'),
            (['show', ''], 'empty basetype name'),
            (['meta', 'volumes,'], 'empty basetype name'),
            (['--format', 'api', '--format', 'json', 'show', 'hosts'], 'option --format given twice'),
            (['--format', 'console', '--declaration', 'show', 'hosts'],
             'option --declaration conflicts with --format console'),
            (['--format', 'json', '--dtd', 'show', 'hosts'], 'option --dtd conflicts with --format json'),
            (['-f', 'json', '--request', 'r', 'show', 'hosts'], 'option --request conflicts with --format json'),
            (['--format', 'tag', '--layout', 'pairs', 'show', 'hosts'], 'option --layout conflicts with --format tag'),
            (['-n', '--layout', 'pairs', 'show', 'hosts'], 'option --no-headings conflicts with --layout pairs'),
            (['--rows', '5', 'show', 'system'], 'option --rows conflicts with show system'),
            (['--rows', '5', 'meta', 'volumes'], 'option --rows conflicts with the meta command'),
            (['--locale', 'de', 'tables'], 'option --locale conflicts with the tables command'),
            (['--layout', 'grid', 'show', 'hosts'], 'invalid value "grid" for --layout'),
            (['-o', 'sise', 'show', 'volumes'], 'unknown column "sise" of volumes for --output; did you mean size'),
            (['-o', 'size,', 'show', 'volumes'], 'an empty column name'),
            (['--sort', '-volume-nam', 'show', 'volumes'], 'for --sort; did you mean volume-name?'),
            (['--sort', 'zzzzzzzz', 'show', 'volumes'], 'unknown column "zzzzzzzz" of volumes for --sort (qel meta'),
        ]
        for args, message in cases:
            with self.subTest(args=args):
                proc = qel(*args, check=False)
                self.assertEqual(proc.returncode, 2)
                self.assertEqual(proc.stdout, b'')
                err = proc.stderr.decode()
                self.assertEqual(err.count('\n'), 1, err)
                self.assertIn(message, err)


if __name__ == '__main__':
    QEL, SOURCE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    unittest.main(argv=sys.argv[:1], verbosity=1)
