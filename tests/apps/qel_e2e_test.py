"""End to end: the built qel front end on its sample system, its documents
checked by parsers nobody here wrote (xmllint, Node.js, jq, Python's json
and csv, headless Chromium), a few outputs
against golden files, and every kind of bad input.

Usage: qel_e2e_test.py <qel binary> <source dir>
Set QEL_UPDATE_GOLDEN=1 to rewrite the golden files from the current output.
"""

import concurrent.futures
import csv
import html
import io
import shutil
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

QEL = None
SOURCE = None
FORMATS = ['console', 'api', 'api-brief', 'xml2', 'xml2-brief', 'json', 'json-alt', 'tag']
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
const out = [];
for (const path of process.argv.slice(2)) {
  let data;
  with (ctors) { data = eval(fs.readFileSync(path, 'utf8')); }
  out.push(data.items.map(flat));
}
process.stdout.write(JSON.stringify(out));
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
    shutil.rmtree(tmp)
    return errors


def node_eval(docs):
    """The objects of each script, all evaluated by one Node.js process."""
    tmp = tempfile.mkdtemp()
    paths = [os.path.join(tmp, 'stub.js')] + [os.path.join(tmp, f'{i}.js') for i in range(len(docs))]
    for path, text in zip(paths, [NODE_STUB.encode()] + list(docs)):
        with open(path, 'wb') as f:
            f.write(text)
    proc = subprocess.run(['node'] + paths, capture_output=True)
    shutil.rmtree(tmp)
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

    def assertFilled(self, basetype, got):
        """\p got, the (name, text) pairs read back, holds every text and plain
        number the sample system filled into \p basetype."""
        got = {(name, value.strip()) for name, value in got}
        self.assertEqual(self.expected.get(basetype, set()) - got, set())

    def test_every_table_in_every_format(self):
        """Every document is complete and quiet; xmllint and Node.js parse
        them, and what they read back is what the sample system filled."""
        self.expected = sample_values()
        args = [('--format', f) + (('--declaration', '--dtd', '--request', 'show ' + b) if f in XML_FORMATS else ())
                + ('show', b) for b in self.basetypes for f in FORMATS]
        args += [('--format', 'api', '--locale', loc, 'show', 'controllers') for loc in LOCALES]
        docs = {}
        for a, proc in zip(args, run_all(args)):
            with self.subTest(args=a):
                self.assertEqual((proc.returncode, proc.stderr), (0, b''))
                self.assertTrue(proc.stdout.strip())
                docs[a] = proc.stdout
        xml = [a for a in args if a[1] in XML_FORMATS]
        for a in xml:
            with self.subTest(args=a):
                root = ElementTree.fromstring(docs[a])
                self.assertFilled(a[-1], [(p.get('name'), p.text or '') for o in root.iter('OBJECT')
                                          if o.get('basetype') == a[-1] for p in o.findall('PROPERTY')])
        # Tag XML too, except sas-port (its dictionary element names "Lanes
        # Expected" and "Active Lanes" hold a space) and events (tag XML
        # writes the '<' and '&' of its messages unescaped).
        xml += [a for a in args if a[1] == 'tag' and a[-1] not in ('sas-port', 'events')]
        with self.subTest('xmllint'):
            if NO_XMLLINT:
                self.skipTest(NO_XMLLINT)
            self.assertEqual(xmllint([docs[a] for a in xml]), [])
        with self.subTest('node'):
            if NO_NODE:
                self.skipTest(NO_NODE)
            scripts = [a for a in args if a[1] in ('json', 'json-alt')]
            for a, objects in zip(scripts, node_eval([docs[a] for a in scripts])):
                with self.subTest(args=a):
                    self.assertFilled(a[-1], [p for o in objects if o['basetype'] == a[-1] for p in o['props']])

    def test_meta_documents(self):
        args = [('--format', f, '--locale', loc, 'meta', which)
                for f in XML_FORMATS for loc in LOCALES for which in ('all', 'wbi')]
        args += [('--format', 'api', 'meta', b) for b in self.basetypes]
        docs = [p.stdout for p in run_all(args)]
        self.assertEqual(len(ElementTree.fromstring(docs[0]).findall('OBJECT')), len(self.basetypes))
        de = qel('--format', 'api', '--locale', 'de', 'meta', 'volumes').stdout.decode()
        self.assertIn('>Name des virtuellen Datenträgers</PROPERTY>', de)
        self.assertIn('>Vdisk Name</PROPERTY>',
                      qel('--format', 'api', '--locale', 'de', '--no-l10n', 'meta', 'volumes').stdout.decode())
        with self.subTest('xmllint'):
            if NO_XMLLINT:
                self.skipTest(NO_XMLLINT)
            self.assertEqual(xmllint(docs), [])
        with self.subTest('node'):
            if NO_NODE:
                self.skipTest(NO_NODE)
            scripts = [qel('--format', f, '--locale', 'ko', 'meta', 'all').stdout for f in ('json', 'json-alt')]
            for objects in node_eval(scripts):
                self.assertEqual(sorted(o['basetype'] for o in objects), sorted(self.basetypes))


def xml_objects(doc):
    """The XML API document as [(basetype, [(name, text)...], nested)]."""
    def obj(o):
        return (o.get('basetype'), [(p.get('name'), p.text or '') for p in o.findall('PROPERTY')],
                [obj(c) for c in o.findall('OBJECT')])
    return [obj(o) for o in ElementTree.fromstring(doc).findall('OBJECT')]


def json_row(basetype, row):
    """A json-std/ndjson row in the form of xml_objects; numbers as the XML
    API writes them."""
    props, nested = [], []
    for name, value in row.items():
        if isinstance(value, list):
            nested += [json_row(None, r) for r in value]
        elif isinstance(value, float):
            props.append((name, f'{value:.2f}'))
        else:
            props.append((name, str(value)))
    return (basetype, props, nested)


def as_json(objects, top=True):
    """xml_objects as JSON holds them: nested basetypes unnamed, the n-th
    property of a name in an object named name-n."""
    def unique(props):
        seen = {}
        for name, value in props:
            seen[name] = seen.get(name, 0) + 1
            yield (name if seen[name] == 1 else f'{name}-{seen[name]}', value)
    return [(b if top else None, list(unique(p)), as_json(n, False)) for b, p, n in objects]


# Run after the page's own script: serializes what the DOM holds and clicks
# the first header with a numeric companion twice, recording that column.
DOM_PROBE = r"""
<script>
(function () {
  function rows(table) {
    var heads = table.tHead.rows[0].cells;
    return Array.prototype.map.call(table.tBodies[0].rows, function (tr) {
      var props = [], nested = [];
      Array.prototype.forEach.call(tr.cells, function (td, i) {
        if (!heads[i].hasAttribute('data-nested')) { props.push([heads[i].dataset.key, td.textContent]); return; }
        td.querySelectorAll(':scope > details > table.qel').forEach(function (t) {
          rows(t).forEach(function (r) { nested.push([t.dataset.basetype].concat(r)); });
        });
      });
      return [props, nested];
    });
  }
  var out = {tables: [], sorted: []};
  document.querySelectorAll('body > table.qel').forEach(function (t) {
    out.tables.push([t.dataset.basetype, rows(t)]);
  });
  var table = document.querySelector('body > table.qel');
  var th = table && table.querySelector('th[data-key="size"] button');
  if (th) {
    var i = Array.prototype.indexOf.call(th.parentNode.parentNode.cells, th.parentNode);
    var companion = th.parentNode.nextElementSibling.dataset.key.endsWith('-numeric') ? 1 : 0;
    [0, 1].forEach(function () {
      th.click();
      out.sorted.push([th.parentNode.getAttribute('aria-sort'),
        Array.prototype.map.call(table.tBodies[0].rows, function (r) { return r.cells[i + companion].textContent; })]);
    });
  }
  out.filters = document.querySelectorAll('input.filter').length;
  var pre = document.createElement('pre');
  pre.id = 'qel-probe';
  pre.textContent = JSON.stringify(out);
  document.body.appendChild(pre);
})();
</script>
"""


def chromium(*args):
    """Runs headless Chromium with a fresh profile; None when it cannot start."""
    exe = shutil.which('chromium') or shutil.which('chromium-browser')
    if not exe:
        return None
    profile = tempfile.mkdtemp()
    try:
        return subprocess.run([exe, '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic',
                               '--no-first-run', '--disable-background-networking',
                               '--disable-component-update', '--disable-sync',
                               f'--user-data-dir={profile}'] + list(args),
                              capture_output=True, timeout=120)
    except (OSError, subprocess.TimeoutExpired):
        return None
    finally:
        shutil.rmtree(profile, ignore_errors=True)


class StandardFormats(unittest.TestCase):
    """json-std, ndjson, csv and tsv of every table read back by parsers
    nobody here wrote hold the XML API document's values, property by
    property; the HTML page does in a real browser."""

    @classmethod
    def setUpClass(cls):
        cls.basetypes = basetypes()
        formats = ['api', 'json-std', 'ndjson', 'csv', 'tsv']
        args = [('--format', f, 'show', b) for b in cls.basetypes for f in formats]
        procs = iter(run_all(args))
        cls.docs = {b: {f: next(procs) for f in formats} for b in cls.basetypes}

    def test_json_and_ndjson_hold_the_xml_api_values(self):
        for b, docs in self.docs.items():
            with self.subTest(basetype=b):
                for proc in docs.values():
                    self.assertEqual((proc.returncode, proc.stderr), (0, b''))
                expected = as_json(xml_objects(docs['api'].stdout))
                std = json.loads(docs['json-std'].stdout)
                got = [json_row(t, r) for t, rows in std.items() for r in rows]
                self.assertEqual(got, expected)
                lines = [json.loads(line) for line in docs['ndjson'].stdout.splitlines()]
                self.assertEqual([json_row(*next(iter(o.items()))) for o in lines], expected)
                for f in ('json-std', 'ndjson'):
                    jq = subprocess.run(['jq', '-c', '.'], input=docs[f].stdout, capture_output=True)
                    self.assertEqual(jq.returncode, 0, jq.stderr)
                    self.assertEqual([json.loads(x) for x in jq.stdout.splitlines()],
                                     [std] if f == 'json-std' else lines)

    def test_csv_and_tsv_hold_the_xml_api_values(self):
        for b, docs in self.docs.items():
            with self.subTest(basetype=b):
                objects = [o for o in xml_objects(docs['api'].stdout) if o[0] == b]
                expected = [[n for n, _ in objects[0][1]]] if objects else []
                expected += [[v for _, v in o[1]] for o in objects]
                for f, delimiter in (('csv', ','), ('tsv', '\t')):
                    text = docs[f].stdout.decode()
                    got = list(csv.reader(io.StringIO(text, newline=''), delimiter=delimiter))
                    self.assertEqual(got if objects else got[1:], expected, f)
        nested = qel('--format', 'csv', '--table', 'port', 'show', 'controllers').stdout.decode()
        rows = list(csv.DictReader(io.StringIO(nested, newline='')))
        self.assertEqual(sorted({r['controller'] for r in rows}), ['A', 'B'])

    def test_html_page_in_a_browser(self):
        if not shutil.which('chromium') and not shutil.which('chromium-browser'):
            self.skipTest('chromium is not installed (.ci/run installs it): the page is not checked')
        probe = chromium('--version')
        if probe is None or probe.returncode != 0:
            self.skipTest('chromium does not start here: the page is not checked')
        tmp = tempfile.mkdtemp()
        tables = ['volumes', 'controllers', 'enclosures', 'hosts', 'system', 'drives']

        def check(b):
            page = qel('--format', 'html', '--locale', 'de', 'show', b).stdout
            path = os.path.join(tmp, b + '.html')
            with open(path, 'wb') as f:
                f.write(page.replace(b'</body>', DOM_PROBE.encode() + b'</body>'))
            dom = chromium('--dump-dom', 'file://' + path)
            found = re.search(r'<pre id="qel-probe">(.*?)</pre>', dom.stdout.decode(), re.S)
            return b, json.loads(html.unescape(found.group(1))) if found else dom.stderr.decode()[-2000:]

        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            results = list(pool.map(check, tables))
        for b, probe in results:
            with self.subTest(basetype=b):
                self.assertIsInstance(probe, dict, probe)

                def objects(rows, basetype):
                    return [(basetype, [tuple(p) for p in props],
                             [objects([r[1:]], r[0])[0] for r in nested]) for props, nested in rows]
                got = [o for t, rows in probe['tables'] for o in objects(rows, t)]
                api = qel('--format', 'api', '--locale', 'de', 'show', b).stdout
                self.assertEqual(got, xml_objects(api))
                self.assertEqual(probe['filters'], len(probe['tables']))
        volumes = dict(results)['volumes']['sorted']
        (up, ascending), (down, descending) = volumes
        self.assertEqual((up, down), ('ascending', 'descending'))
        self.assertEqual([int(x) for x in ascending], sorted(int(x) for x in ascending))
        self.assertEqual([int(x) for x in descending], sorted((int(x) for x in ascending), reverse=True))
        self.assertGreater(len(set(ascending)), 1)
        # The screenshot, kept as a test artefact in the build tree.
        artefacts = os.environ.get('QEL_ARTEFACT_DIR') or tmp
        os.makedirs(artefacts, exist_ok=True)
        shot = os.path.join(artefacts, 'show-volumes.png')
        page = os.path.join(tmp, 'plain.html')
        with open(page, 'wb') as f:
            f.write(qel('--format', 'html', 'show', 'volumes').stdout)
        proc = chromium('--screenshot=' + shot, '--window-size=1400,900', '--hide-scrollbars', 'file://' + page)
        self.assertTrue(proc and os.path.getsize(shot) > 10000, proc and proc.stderr.decode()[-2000:])
        with open(shot, 'rb') as f:
            self.assertEqual(f.read(8), b'\x89PNG\r\n\x1a\n')
        shutil.rmtree(tmp, ignore_errors=True)


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
            (['qel', '--format', 'json'], ['json', 'json-alt', 'json-std']),
            (['qel', '-f', 'csv', '--table', 'por'], ['port']),
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
            (['--format', 'json-std', '--labels', 'show', 'hosts'], 'option --labels conflicts with --format json-std'),
            (['-f', 'csv', '--table', 'prot', 'show', 'controllers'], 'unknown basetype "prot"; did you mean'),
            (['-f', 'html', 'meta', 'volumes'], '--format html conflicts with the meta command'),
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
