# End to end: the built qel front end on its sample system. Its documents
# are read back by parsers nobody here wrote (xmllint, Node.js, jq, Python's
# json and csv, headless Chromium), a few are held to golden files, and bad
# input to its exact message and exit status.
#
# Usage: qel_e2e_test.py <qel binary> <source dir>
# Set QEL_UPDATE_GOLDEN=1 to rewrite the golden files from the current output.

import concurrent.futures
import csv
import html
import io
import itertools
import json
import os
import pty
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

QEL = SOURCE = TMP = BASETYPES = None
SERIAL = itertools.count()
FORMATS = ['console', 'api', 'api-brief', 'xml2', 'xml2-brief', 'json', 'json-alt', 'tag',
           'json-std', 'ndjson', 'csv', 'tsv']
XML_FORMATS = ['api', 'api-brief', 'xml2', 'xml2-brief']
LOCALES = ['en', 'es', 'fr', 'de', 'it', 'ja', 'nl', 'zh-cn', 'zh-tw', 'ko']
ENV = dict(os.environ, TZ='UTC')
ENV.pop('QEL_LOG', None)
# The parsers are optional here (.ci/run installs them); without one its checks skip.
NO_XMLLINT = None if shutil.which('xmllint') else 'xmllint is missing (Debian: libxml2-utils): XML not parsed'
NO_NODE = None if shutil.which('node') else 'node is missing (Debian: nodejs): JSON not evaluated'

# Node.js evaluates each script with a stub for every constructor: API
# objects keep their properties and attributes, APIProp its name and value.
# It prints, per script, the objects as JSON: [{basetype, props: [[name,
# value]...], nested}]
NODE_STUB = r"""
const fs = require('fs');
function APIProp(p) { this.p = p; }
const flat = (o) => ({basetype: o.attrs.basetype,
  props: o.items.filter((i) => i instanceof APIProp).map((i) => [i.p.name, i.p.value]),
  nested: o.items.filter((i) => !(i instanceof APIProp)).map(flat)});
process.stdout.write(JSON.stringify(process.argv.slice(2).map((path) => {
  const text = fs.readFileSync(path, 'utf8');
  for (const [, name] of text.matchAll(/new (API\w+)/g))
    if (name !== 'APIProp') globalThis[name] = function (items, attrs) { this.items = items; this.attrs = attrs || {}; };
  return eval(text).items.map(flat);
})));
"""

# Run after the page's own script: serializes every table's rows (nested
# tables too) and clicks the first header with a numeric companion twice,
# recording that column.
DOM_PROBE = r"""
<script>
(function () {
  const cells = (t, tr) => [...tr.cells].map((td, i) => [t.tHead.rows[0].cells[i], td])
    .filter(([th]) => !th.hasAttribute('data-nested')).map(([th, td]) => [th.dataset.key, td.textContent]);
  const out = {rows: [...document.querySelectorAll('table.qel')].flatMap((t) =>
                 [...t.tBodies[0].rows].map((tr) => [t.dataset.basetype, cells(t, tr)])),
               tables: document.querySelectorAll('body > table.qel').length,
               filters: document.querySelectorAll('input.filter').length, sorted: []};
  const table = document.querySelector('body > table.qel');
  const th = table && table.querySelector('th[data-key="size"] button');
  if (th) {
    const i = [...th.parentNode.parentNode.cells].indexOf(th.parentNode);
    const companion = th.parentNode.nextElementSibling.dataset.key.endsWith('-numeric') ? 1 : 0;
    for (const _ of [0, 1]) {
      th.click();
      out.sorted.push([th.parentNode.getAttribute('aria-sort'),
                       [...table.tBodies[0].rows].map((r) => r.cells[i + companion].textContent)]);
    }
  }
  const pre = document.createElement('pre');
  pre.id = 'qel-probe';
  pre.textContent = JSON.stringify(out);
  document.body.appendChild(pre);
})();
</script>
"""


def qel(*args, check=True):
    proc = subprocess.run([QEL, *args], capture_output=True, env=ENV)
    if check and proc.returncode != 0:
        raise AssertionError(f'qel {" ".join(args)} exited {proc.returncode}: {proc.stderr.decode()}')
    return proc


def run_all(arg_lists):
    # One qel run per argument list, as many at a time as there are cores.
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        return list(pool.map(lambda a: qel(*a, check=False), arg_lists))


def write(docs, suffix):
    # Each document in a file of its own; returns their paths.
    paths = [os.path.join(TMP, f'{next(SERIAL)}{suffix}') for _ in docs]
    for path, doc in zip(paths, docs):
        with open(path, 'wb') as f:
            f.write(doc)
    return paths


def xmllint(docs):
    # Runs xmllint --noout over the documents, 200 a run; returns its complaints.
    paths = write(docs, '.xml')
    runs = [subprocess.run(['xmllint', '--noout', *paths[i:i + 200]], capture_output=True)
            for i in range(0, len(paths), 200)]
    return [run.stderr.decode()[:2000] for run in runs if run.returncode]


def node_eval(docs):
    # The objects of each script, all evaluated by one Node.js process.
    proc = subprocess.run(['node', *write([NODE_STUB.encode(), *docs], '.js')], capture_output=True)
    if proc.returncode:
        raise AssertionError(proc.stderr.decode()[:2000])
    return json.loads(proc.stdout)


def chromium(*args):
    # Headless Chromium with a fresh profile; None when it cannot start.
    exe = shutil.which('chromium') or shutil.which('chromium-browser')
    try:
        return exe and subprocess.run(
            [exe, '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
             '--disable-background-networking', '--disable-component-update', '--disable-sync',
             f'--user-data-dir={tempfile.mkdtemp(dir=TMP)}', *args], capture_output=True, timeout=120)
    except (OSError, subprocess.TimeoutExpired):
        return None


def xml_objects(doc):
    # The XML document as [(basetype, [(name, text)...], nested)].
    def obj(o):
        return (o.get('basetype'), [(p.get('name'), p.text or '') for p in o.findall('PROPERTY')],
                [obj(c) for c in o.findall('OBJECT')])
    return [obj(o) for o in ElementTree.fromstring(doc).findall('OBJECT')]


def flat(objects):
    # xml_objects, nested ones included, as a sorted list of (basetype, props):
    # what every format holds, whatever its nesting and row order.
    return sorted([(b, p) for b, p, _ in objects] + [o for _, _, n in objects for o in flat(n)], key=repr)


def json_row(basetype, row):
    # A json-std/ndjson row in the form of xml_objects; numbers as the XML API writes them.
    props = [(n, f'{v:.2f}' if isinstance(v, float) else str(v)) for n, v in row.items() if not isinstance(v, list)]
    return (basetype, props, [json_row(None, r) for v in row.values() if isinstance(v, list) for r in v])


def as_json(objects, top=True):
    # xml_objects as JSON holds them: nested basetypes unnamed, the n-th
    # property of a name in an object named name-n.
    def unique(props):
        names = [n for n, _ in props]
        return [(n if names[:i].count(n) == 0 else f'{n}-{names[:i].count(n) + 1}', v) for i, (n, v) in enumerate(props)]
    return [(b if top else None, unique(p), as_json(n, False)) for b, p, n in objects]


class EveryTable(unittest.TestCase):
    # Every table in every format; the XML API ones with all they can add.
    @classmethod
    def setUpClass(cls):
        extra = lambda f, b: ('--declaration', '--dtd', '--request', 'show ' + b) if f in XML_FORMATS else ()
        procs = iter(run_all([('--format', f, *extra(f, b), 'show', b) for b in BASETYPES for f in FORMATS]))
        cls.docs = {b: {f: next(procs) for f in FORMATS} for b in BASETYPES}
        cls.locales = run_all([('--format', 'api', '--locale', loc, 'show', 'controllers') for loc in LOCALES])

    def test_every_document_is_complete_quiet_and_read_back_whole(self):
        # Every document is complete and quiet and xmllint parses the XML.
        # What the other XML formats, the scripts as Node.js reads them,
        # json-std, ndjson (and jq's reading of them), csv and tsv hold is
        # the XML API document's properties.
        docs = [(b, f, proc) for b, by_format in self.docs.items() for f, proc in by_format.items()]
        docs += [('controllers', 'api', proc) for proc in self.locales]
        for b, f, proc in docs:
            with self.subTest(basetype=b, format=f):
                self.assertEqual((proc.returncode, proc.stderr), (0, b''))
                self.assertTrue(proc.stdout.strip() or f in ('csv', 'tsv'))  # no rows of its own: an empty line
        # Tag XML too, except sas-port (its dictionary element names "Lanes
        # Expected" and "Active Lanes" hold a space) and events (tag XML
        # writes the '<' and '&' of its messages unescaped).
        with self.subTest('xmllint'):
            if NO_XMLLINT:
                self.skipTest(NO_XMLLINT)
            self.assertEqual(xmllint([proc.stdout for b, f, proc in docs if f in XML_FORMATS
                                      or f == 'tag' and b not in ('sas-port', 'events')]), [])
        scripts = [(b, f) for b in BASETYPES for f in ('json', 'json-alt')]
        read = dict(zip(scripts, node_eval([self.docs[b][f].stdout for b, f in scripts]) if not NO_NODE else []))
        for b, by_format in self.docs.items():
            with self.subTest(basetype=b):
                api = xml_objects(by_format['api'].stdout)
                for f in XML_FORMATS[1:]:
                    self.assertEqual(flat(xml_objects(by_format[f].stdout)), flat(api), f)
                for f in ('json', 'json-alt') if not NO_NODE else ():
                    node = lambda o: (o['basetype'], [tuple(p) for p in o['props']], [node(n) for n in o['nested']])
                    self.assertEqual(flat([node(o) for o in read[b, f]]), flat(api), f)
                std = json.loads(by_format['json-std'].stdout)
                self.assertEqual([json_row(t, r) for t, rows in std.items() for r in rows], as_json(api))
                lines = [json.loads(line) for line in by_format['ndjson'].stdout.splitlines()]
                self.assertEqual([json_row(*next(iter(o.items()))) for o in lines], as_json(api))
                for f, parsed in (('json-std', [std]), ('ndjson', lines)):
                    jq = subprocess.run(['jq', '-c', '.'], input=by_format[f].stdout, capture_output=True)
                    self.assertEqual((jq.returncode, [json.loads(x) for x in jq.stdout.splitlines()]), (0, parsed))
                own = [o for o in api if o[0] == b]
                table = ([[n for n, _ in own[0][1]]] if own else []) + [[v for _, v in o[1]] for o in own]
                for f, delimiter in (('csv', ','), ('tsv', '\t')):
                    got = list(csv.reader(io.StringIO(by_format[f].stdout.decode(), newline=''), delimiter=delimiter))
                    self.assertEqual(got if own else got[1:], table, f)
        if NO_NODE:
            self.skipTest(NO_NODE)

    def test_meta_documents(self):
        self.assertEqual(len(BASETYPES), 136)
        self.assertIn('storage-pools', BASETYPES)  # a token-only keyword
        args = [('--format', f, '--locale', loc, 'meta', which)
                for f in XML_FORMATS for loc in LOCALES for which in ('all', 'wbi')]
        args += [('--format', 'api', 'meta', b) for b in BASETYPES]
        args += [('--format', f, '--locale', 'ko', 'meta', 'all') for f in ('json', 'json-alt')]
        docs = [p.stdout for p in run_all(args)]
        self.assertEqual(len(ElementTree.fromstring(docs[0]).findall('OBJECT')), len(BASETYPES))
        with self.subTest('xmllint'):
            if NO_XMLLINT:
                self.skipTest(NO_XMLLINT)
            self.assertEqual(xmllint(docs[:-2]), [])
        if NO_NODE:
            self.skipTest(NO_NODE)
        for objects in node_eval(docs[-2:]):
            self.assertEqual(sorted(o['basetype'] for o in objects), sorted(BASETYPES))

    def test_html_page_in_a_browser(self):
        probe = chromium('--version')
        if not probe or probe.returncode != 0:
            self.skipTest('chromium is missing or does not start (.ci/run installs it): the page is not checked')

        def check(b):
            page = qel('--format', 'html', '--locale', 'de', 'show', b).stdout.replace(b'</body>', DOM_PROBE.encode() + b'</body>')
            dom = chromium('--dump-dom', 'file://' + write([page], '.html')[0])
            found = re.search(r'<pre id="qel-probe">(.*?)</pre>', dom.stdout.decode(), re.S)
            return b, json.loads(html.unescape(found.group(1))) if found else dom.stderr.decode()[-2000:]

        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            results = list(pool.map(check, ['volumes', 'controllers', 'enclosures', 'hosts', 'system', 'drives']))
        for b, probe in results:
            with self.subTest(basetype=b):
                self.assertIsInstance(probe, dict, probe)
                got = sorted(((t, [tuple(p) for p in props]) for t, props in probe['rows']), key=repr)
                self.assertEqual(got, flat(xml_objects(qel('--format', 'api', '--locale', 'de', 'show', b).stdout)))
                self.assertEqual(probe['filters'], probe['tables'])
        (up, ascending), (down, descending) = dict(results)['volumes']['sorted']
        self.assertEqual((up, down), ('ascending', 'descending'))
        self.assertEqual([int(x) for x in ascending], sorted(int(x) for x in ascending))
        self.assertEqual([int(x) for x in descending], sorted((int(x) for x in ascending), reverse=True))
        self.assertGreater(len(set(ascending)), 1)
        # The screenshot, kept as a test artefact in the build tree.
        artefacts = os.environ.get('QEL_ARTEFACT_DIR') or TMP
        os.makedirs(artefacts, exist_ok=True)
        shot = os.path.join(artefacts, 'show-volumes.png')
        page = write([qel('--format', 'html', 'show', 'volumes').stdout], '.html')[0]
        proc = chromium('--screenshot=' + shot, '--window-size=1400,900', '--hide-scrollbars', 'file://' + page)
        self.assertTrue(proc and os.path.getsize(shot) > 10000, proc and proc.stderr.decode()[-2000:])
        with open(shot, 'rb') as f:
            self.assertEqual(f.read(8), b'\x89PNG\r\n\x1a\n')


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
        for (name, args), proc in zip(self.CASES, run_all([args for _, args in self.CASES])):
            with self.subTest(golden=name):
                self.assertEqual(proc.returncode, 0, proc.stderr)
                path = os.path.join(SOURCE, 'tests/apps/golden', name)
                if os.environ.get('QEL_UPDATE_GOLDEN') == '1':
                    with open(path, 'wb') as f:
                        f.write(proc.stdout)
                with open(path, 'rb') as f:
                    self.assertEqual(proc.stdout.decode(), f.read().decode())


class Options(unittest.TestCase):
    def test_options_and_bad_input(self):
        # Each row: exit status 0 and the output matching a pattern, or byte
        # for byte the output of other arguments; or bad input: status 2,
        # nothing on stdout and one line on stderr holding the message.
        api_de = ('--format', 'api', '--locale', 'de', 'show', 'hosts')
        rows40 = ('--format', 'api', '--rows', '40', 'show', 'volumes')
        good = [
            (('--help',), r'usage: qel'),
            (('-h',), r'usage: qel'),
            (('--version',), r'\Aqel \d+\.\d+\.\d+\n\Z'),
            (('-V',), r'\Aqel \d+\.\d+\.\d+\n\Z'),
            (('--units', 'GB', '--precision', '1', 'show', 'volumes'), r' 900\.0GB '),
            (('--base', '2', 'show', 'volumes'), r' 838\.19GiB '),
            (('--layout', 'pairs', 'show', 'volumes'), r'(?m)^Volume Name: vd01_v001$'),
            (('--layout', 'rows', 'show', 'system'), r'\ASystem Name +System Contact'),
            (('-f', 'api', '-l', 'de', 'meta', 'volumes'), r'>Name des virtuellen Datenträgers</PROPERTY>'),
            (('-f', 'api', '-l', 'de', '--no-l10n', 'meta', 'volumes'), r'>Vdisk Name</PROPERTY>'),
            # A nested table's rows, each with its parent's key.
            (('-f', 'csv', '--table', 'port', 'show', 'controllers'), r'(?m)^hostport_A0,A,[\s\S]*^hostport_B0,B,'),
            # No header, no rules; rows in storage order, not the column layout's.
            (('-n', '-w', '1000', 'show', 'volumes'), r'\A(?![\s\S]*--)vd01 +vd01_v002 '),
            (('-f', 'api', '-l', 'de', '--', 'show', 'hosts'), api_de),
            (('show', '--format=api', '--loc', 'de', 'hosts'), api_de),
            (rows40, rows40),  # the same bytes every time
        ]
        bad = [
            (['show', 'volumse'], 'unknown basetype "volumse"; did you mean volumes'),
            (['meta', 'volumes,drivez'], 'unknown basetype "drivez"'),
            (['show'], 'show needs a basetype'),
            (['show', 'volumes', 'drives'], 'show takes one basetype'),
            ([], 'missing command'),
            (['list'], 'unknown command "list"'),
            (['--colour', 'show', 'volumes'], 'unknown option --colour'),
            (['-x', 'show', 'volumes'], 'unknown option -x'),
            (['--format', 'yaml', 'show', 'volumes'], 'invalid value "yaml" for --format'),
            (['--locale', 'pt', 'show', 'volumes'], 'invalid value "pt" for --locale'),
            (['--base', '8', 'show', 'volumes'], 'invalid value "8" for --base'),
            (['show', 'volumes', '--format'], 'option --format needs a value'),
            (['-f'], 'option --format needs a value'),
            (['--dtd=yes', 'show', 'volumes'], 'option --dtd takes no value'),
            (['--rows', '+5', 'show', 'volumes'], 'invalid value "+5" for --rows'),
            (['--rows', '1000000001', 'show', 'volumes'], 'for --rows (a number from 0 to 1000000000)'),
            (['--rows', '10000000', '-s', 'size', 'show', 'drives'], 'show drives sorted holds at most 7895160 rows'),
            (['show', 'a\nb'], 'unknown basetype "a\\nb" (qel tables'),
            (['show', ''], 'empty basetype name'),
            (['meta', 'volumes,'], 'empty basetype name'),
            (['--format', 'api', '--format', 'json', 'show', 'hosts'], 'option --format given twice'),
            (['--format', 'console', '--declaration', 'show', 'hosts'],
             'option --declaration conflicts with --format console'),
            (['--format', 'tag', '--layout', 'pairs', 'show', 'hosts'], 'option --layout conflicts with --format tag'),
            (['-n', '--layout', 'pairs', 'show', 'hosts'], 'option --no-headings conflicts with --layout pairs'),
            (['--rows', '5', 'show', 'system'], 'option --rows conflicts with show system'),
            (['--rows', '5', 'meta', 'volumes'], 'option --rows conflicts with the meta command'),
            (['--locale', 'de', 'tables'], 'option --locale conflicts with the tables command'),
            (['--format', 'json-std', '--labels', 'show', 'hosts'], 'option --labels conflicts with --format json-std'),
            (['-f', 'csv', '--table', 'prot', 'show', 'controllers'], 'unknown basetype "prot"; did you mean'),
            (['-f', 'html', 'meta', 'volumes'], '--format html conflicts with the meta command'),
            (['-o', 'sise', 'show', 'volumes'], 'unknown column "sise" of volumes for --output; did you mean size'),
            (['-o', 'size,', 'show', 'volumes'], 'an empty column name'),
            (['--sort', '-volume-nam', 'show', 'volumes'], 'for --sort; did you mean volume-name?'),
            (['--sort', 'zzzzzzzz', 'show', 'volumes'], 'unknown column "zzzzzzzz" of volumes for --sort (qel meta'),
        ]
        same = [e for _, e in good if isinstance(e, tuple)]
        procs = run_all([args for args, _ in good + bad] + same)
        same = dict(zip(same, procs[len(good) + len(bad):]))
        for (args, expected), proc in zip(good + bad, procs):
            with self.subTest(args=args):
                if (args, expected) in bad:
                    self.assertEqual((proc.returncode, proc.stdout, proc.stderr.count(b'\n')), (2, b'', 1), proc.stderr)
                    self.assertIn(expected, proc.stderr.decode())
                elif isinstance(expected, tuple):
                    self.assertEqual((proc.returncode, proc.stdout), (0, same[expected].stdout))
                else:
                    self.assertEqual(proc.returncode, 0, proc.stderr)
                    self.assertRegex(proc.stdout.decode(), expected)

    def test_rows_output_and_sort(self):
        # More rows than one page of the paged print: ids run on across pages.
        doc = qel('--format', 'api', '--rows', '4100', '-o', 'volume-name', 'show', 'volumes').stdout.decode()
        self.assertEqual(doc.count('<OBJECT basetype="volumes"'), 4100)
        self.assertEqual(len(set(re.findall(r'name="volume-name"[^>]*>([^<]*)<', doc))), 4100, 'distinct names')
        self.assertEqual(re.findall(r'oid="(\d+)"', doc), [str(i) for i in range(1, 4102)])
        self.assertTrue(doc.endswith('</OBJECT>\n</RESPONSE>\n'))
        doc = qel('-f', 'api', '-o', 'size,volume-name', '--sort', '-size', 'show', 'volumes').stdout.decode()
        first = doc[doc.index('basetype="volumes"'):]
        self.assertEqual(re.findall(r'PROPERTY name="([a-z-]+)"', first[:first.index('</OBJECT>')])[:3],
                         ['size', 'size-numeric', 'volume-name'])
        sizes = [int(n) for n in re.findall(r'name="size-numeric"[^>]*>(\d+)<', doc)]
        self.assertEqual(sizes, sorted(sizes, reverse=True))

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
        cases = [
            (['--form'], ['--format']),
            (['--format', 'json'], ['json', 'json-alt', 'json-std']),
            (['-f', 'csv', '--table', 'por'], ['port']),
            (['sh'], ['show']),
            (['-f', 'api', 'show', 'volume-n'], ['volume-names']),
            (['meta', 'volumes,host-g'], ['volumes,host-group', 'volumes,host-group-view']),
        ]
        for words, expected in cases:
            with self.subTest(words=words):
                cmd = (f'source {dist}/qel.bash; COMP_WORDS=({QEL} {" ".join(words)}); COMP_CWORD={len(words)}; '
                       '_qel; printf "%s\\n" "${COMPREPLY[@]}"')
                got = subprocess.run(['bash', '-c', cmd], capture_output=True, text=True).stdout.split()
                self.assertEqual(sorted(got), expected)

    def test_progress_only_on_a_terminal(self):
        # Without a terminal stderr stays empty: EveryTable checks that.
        master, slave = pty.openpty()
        proc = subprocess.run([QEL, '--format', 'api', '--rows', '150000', 'show', 'volumes'],
                              stdout=subprocess.DEVNULL, stderr=slave, env=dict(ENV, QEL_PROGRESS_DELAY_MS='0'))
        os.close(slave)
        seen = b''
        try:
            while chunk := os.read(master, 4096):
                seen += chunk
        except OSError:  # EIO once the writer has closed the terminal
            pass
        os.close(master)
        self.assertEqual(proc.returncode, 0)
        self.assertIn(b'qel: show volumes: ', seen)
        self.assertTrue(seen.endswith(b'\r\x1b[K'), seen[-40:])


if __name__ == '__main__':
    QEL, SOURCE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    BASETYPES = [line.split()[0] for line in qel('tables').stdout.decode().splitlines()[1:]]
    with tempfile.TemporaryDirectory() as TMP:
        unittest.main(argv=sys.argv[:1], verbosity=1)
