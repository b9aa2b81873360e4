// qel: the management CLI's show and meta commands over a built-in sample
// storage system. It starts the output service as the controller does,
// builds each table through the descriptor API and prints it in the output
// type, locale and units that the options set for the session.
//
// Bad input (an unknown option, value, command or basetype, or options that
// conflict) gets one line on stderr, nothing on stdout and exit status 2;
// the command itself failing gets status 1.
#include "qel_main.h"
#include "progress.h"
#include "sample_data.h"
#include "sample_system.h"

#include <qel/qel.h>

#include <getopt.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using services::user::Preferences;

// Ends the command with an exit status; qelMain returns it. Thrown rather
// than calling exit so that qel can run in-process (the argument fuzzer).
struct Exit {
  int status;
};

const char kUsage[] =
    "usage: qel [options] show <basetype>\n"
    "       qel [options] meta [all|wbi|<basetype>[,<basetype>...]]\n"
    "       qel tables\n"
    "\n"
    "Prints the tables of a built-in sample storage system the way the\n"
    "controller's management interfaces do.\n"
    "\n"
    "commands:\n"
    "  show <basetype>    one registered table (see qel tables), e.g. volumes\n"
    "  meta [which]       the metadata document of all tables (default), the\n"
    "                     WBI set, or the named basetypes; XML API unless\n"
    "                     --format names another API format\n"
    "  tables             every basetype with its column count and WBI flag\n"
    "\n"
    "options:\n"
    "  -f, --format F     console api api-brief xml2 xml2-brief json json-alt tag\n"
    "                     json-std ndjson csv tsv html\n"
    "                     (default console)\n"
    "  -l, --locale L     en es fr de it ja nl zh-cn zh-tw ko (default en)\n"
    "      --no-l10n      labels in English whatever the locale\n"
    "  -w, --width N      console width, 20..1000 (default: the terminal's, else 80)\n"
    "      --units U      auto KB MB GB TB (default auto)\n"
    "      --precision N  decimals of sizes, 0..9 (default 2)\n"
    "      --base B       2 or 10: sizes in binary or decimal units (default 10)\n"
    "      --declaration  XML API: start with the XML declaration\n"
    "      --dtd          XML API: include the document type definition\n"
    "      --request TEXT XML API: the request echoed in the document\n"
    "      --labels       csv, tsv: a header of labels in the locale, not keywords\n"
    "      --table B      csv, tsv: the rows of basetype B wherever they are nested\n"
    "      --rows N       give a list table (volumes, drives, ...) N rows, 0..1e9\n"
    "  -o, --output COLS  print only these columns, in this order (comma-separated\n"
    "                     property names, see qel meta <basetype>)\n"
    "  -s, --sort [-]COL  sort the rows by a column; a leading - sorts descending\n"
    "  -n, --no-headings  console: rows without the header and rules\n"
    "      --layout L     console: rows pairs packed labeled status\n"
    "  -h, --help         this text\n"
    "  -V, --version      the library's version\n"
    "  --                 end of options\n"
    "\n"
    "examples:\n"
    "  qel show system\n"
    "  qel --width 132 show volumes\n"
    "  qel -o volume-name,size --sort -size show volumes\n"
    "  qel --format api --declaration show controllers\n"
    "  qel --format json --locale de show drives\n"
    "  qel --format xml2 meta volumes,drives\n";

// What a format takes: the envelope options of the XML API family, the
// console's layout options. New formats add a row here.
enum Family : unsigned { kConsole = 1, kXmlApi = 2, kOther = 4, kCsv = 8, kStandard = 16 };

struct Format {
  const char *name;
  Preferences::OutputType type;
  Family family;
};
const Format kFormats[] = {
    {"console", Preferences::OUTPUT_CONSOLE, kConsole},
    {"api", Preferences::OUTPUT_API, kXmlApi},
    {"api-brief", Preferences::OUTPUT_API_BRIEF, kXmlApi},
    {"xml2", Preferences::OUTPUT_XML2, kXmlApi},
    {"xml2-brief", Preferences::OUTPUT_XML2_BRIEF, kXmlApi},
    {"json", Preferences::OUTPUT_JSON, kOther},
    {"json-alt", Preferences::OUTPUT_JSON_ALT, kOther},
    {"tag", Preferences::OUTPUT_TAG, kOther},
    {"json-std", Preferences::OUTPUT_JSON_STD, kStandard},
    {"ndjson", Preferences::OUTPUT_NDJSON, kStandard},
    {"csv", Preferences::OUTPUT_CSV, kCsv},
    {"tsv", Preferences::OUTPUT_TSV, kCsv},
    {"html", Preferences::OUTPUT_HTML, kStandard},
};

struct Named {
  const char *name;
  unsigned value;
};
const Named kLocales[] = {
    {"en", LOCALE_EN}, {"es", LOCALE_ES}, {"fr", LOCALE_FR}, {"de", LOCALE_DE},
    {"it", LOCALE_IT}, {"ja", LOCALE_JP}, {"nl", LOCALE_NL}, {"zh-cn", LOCALE_ZH_CHS},
    {"zh-tw", LOCALE_ZH_CHT}, {"ko", LOCALE_KO},
};
const Named kUnits[] = {
    {"auto", Preferences::UNITS_AUTO}, {"KB", Preferences::UNITS_KB},
    {"MB", Preferences::UNITS_MB}, {"GB", Preferences::UNITS_GB},
    {"TB", Preferences::UNITS_TB},
};
const Named kLayouts[] = {
    {"rows", QEL_FORMAT_ROWS}, {"pairs", QEL_FORMAT_PAIRS}, {"packed", QEL_FORMAT_PACKED},
    {"labeled", QEL_FORMAT_LABELED}, {"status", QEL_FORMAT_STATUS},
};

// Options by getopt_long value; short options use their letter.
enum Option : int {
  optFormat = 'f', optLocale = 'l', optWidth = 'w', optOutput = 'o', optSort = 's',
  optNoHeadings = 'n', optHelp = 'h', optVersion = 'V',
  optNoL10n = 256, optUnits, optPrecision, optBase, optDeclaration, optDtd, optRequest, optRows, optLayout,
  optLabels, optTable,
};
const option kLongOptions[] = {
    {"format", required_argument, nullptr, optFormat},
    {"locale", required_argument, nullptr, optLocale},
    {"no-l10n", no_argument, nullptr, optNoL10n},
    {"width", required_argument, nullptr, optWidth},
    {"units", required_argument, nullptr, optUnits},
    {"precision", required_argument, nullptr, optPrecision},
    {"base", required_argument, nullptr, optBase},
    {"declaration", no_argument, nullptr, optDeclaration},
    {"dtd", no_argument, nullptr, optDtd},
    {"request", required_argument, nullptr, optRequest},
    {"rows", required_argument, nullptr, optRows},
    {"labels", no_argument, nullptr, optLabels},
    {"table", required_argument, nullptr, optTable},
    {"output", required_argument, nullptr, optOutput},
    {"sort", required_argument, nullptr, optSort},
    {"no-headings", no_argument, nullptr, optNoHeadings},
    {"layout", required_argument, nullptr, optLayout},
    {"help", no_argument, nullptr, optHelp},
    {"version", no_argument, nullptr, optVersion},
    {nullptr, 0, nullptr, 0},
};
const char kShortOptions[] = ":f:l:w:o:s:nhV";

const char *longName(int value) {
  for (const option &o : kLongOptions)
    if (o.name && o.val == value)
      return o.name;
  return "?";
}

// --rows: printed in pages of kPageRows rows, so any count fits in memory.
constexpr long kMaxRows = 1000000000;
constexpr int kPageRows = 4096;

struct Options {
  const Format *format = &kFormats[0];
  LocaleCode locale = LOCALE_EN;
  bool l10n = true;
  int width = -1;
  Preferences::StorageUnit units = Preferences::UNITS_AUTO;
  int precision = 2;
  int base = 10;
  bool declaration = false;
  bool dtd = false;
  std::string request;
  long rows = -1;
  std::vector<std::string> columns; // --output
  std::string sort;                 // --sort, without its "-"
  bool descending = false;
  bool noHeadings = false;
  int layout = -1;
  bool labels = false;
  std::string table;                // --table
  std::vector<int> given;           // options in the order given
  std::vector<std::string> words;   // command and its argument

  bool has(int option) const { return std::find(given.begin(), given.end(), option) != given.end(); }
};

// Control characters of echoed input are written as escapes, so that every
// message stays one line whatever the user typed.
std::string escaped(const std::string &text) {
  std::string out;
  for (unsigned char c : text) {
    if (c == '\n')
      out += "\\n";
    else if (c == '\t')
      out += "\\t";
    else if (c == '\r')
      out += "\\r";
    else if (c < 0x20 || c == 0x7f) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
    } else
      out += static_cast<char>(c);
  }
  return out;
}

// Bad input: one line on stderr, nothing on stdout, exit status 2.
[[noreturn]] void fail(const std::string &message) {
  std::fprintf(stderr, "qel: %s\n", escaped(message).c_str());
  throw Exit{2};
}

[[noreturn]] void conflict(int option, const std::string &with) {
  fail(std::string("option --") + longName(option) + " conflicts with " + with);
}

template <size_t N>
unsigned lookup(const Named (&table)[N], const std::string &value, int option) {
  std::string known;
  for (const Named &n : table) {
    if (value == n.name)
      return n.value;
    known += known.empty() ? "" : ", ";
    known += n.name;
  }
  fail("invalid value \"" + value + "\" for --" + longName(option) + " (one of: " + known + ")");
}

const Format *findFormat(const std::string &value) {
  std::string known;
  for (const Format &f : kFormats) {
    if (value == f.name)
      return &f;
    known += known.empty() ? "" : ", ";
    known += f.name;
  }
  fail("invalid value \"" + value + "\" for --format (one of: " + known + ")");
}

// Digits only: no sign, no blanks, nothing after the number.
long number(const std::string &value, int option, long low, long high) {
  const bool digits = !value.empty() && value.size() <= 12 &&
                      std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
  const long n = digits ? std::strtol(value.c_str(), nullptr, 10) : -1;
  if (!digits || n < low || n > high)
    fail("invalid value \"" + value + "\" for --" + longName(option) + " (a number from " +
         std::to_string(low) + " to " + std::to_string(high) + ")");
  return n;
}

std::vector<std::string> splitCommas(const std::string &list) {
  std::vector<std::string> out;
  for (size_t start = 0; start <= list.size();) {
    const size_t comma = std::min(list.find(',', start), list.size());
    out.push_back(list.substr(start, comma - start));
    start = comma + 1;
  }
  return out;
}

Options parse(int argc, char **argv) {
  Options o;
  opterr = 0;
  for (;;) {
    const int c = getopt_long(argc, argv, kShortOptions, kLongOptions, nullptr);
    if (c == -1)
      break;
    if (c == '?' || c == ':') {
      // getopt_long leaves the option as spelled just before optind; for a
      // long option that it rejects, optopt holds its value or 0 if unknown.
      const std::string spelled = optind > 0 && optind <= argc ? argv[optind - 1] : "";
      const bool isLong = spelled.compare(0, 2, "--") == 0;
      const std::string name = isLong ? spelled.substr(0, spelled.find('='))
                                      : std::string("-") + static_cast<char>(optopt);
      if (c == ':')
        fail("option " + (isLong ? name : std::string("--") + longName(optopt)) + " needs a value");
      if (isLong && optopt)
        fail("option " + name + " takes no value");
      fail("unknown option " + name + " (see qel --help)");
    }
    if (c == optHelp) {
      std::fputs(kUsage, stdout);
      throw Exit{0};
    }
    if (c == optVersion) {
      std::printf("qel %s\n", QEL_VERSION);
      throw Exit{0};
    }
    if (o.has(c))
      fail(std::string("option --") + longName(c) + " given twice");
    o.given.push_back(c);
    const std::string value = optarg ? optarg : "";
    switch (c) {
    case optFormat: o.format = findFormat(value); break;
    case optLocale: o.locale = static_cast<LocaleCode>(lookup(kLocales, value, c)); break;
    case optNoL10n: o.l10n = false; break;
    case optWidth: o.width = static_cast<int>(number(value, c, 20, 1000)); break;
    case optUnits: o.units = static_cast<Preferences::StorageUnit>(lookup(kUnits, value, c)); break;
    case optPrecision: o.precision = static_cast<int>(number(value, c, 0, 9)); break;
    case optBase:
      if (value != "2" && value != "10")
        fail("invalid value \"" + value + "\" for --base (2 or 10)");
      o.base = value == "2" ? 2 : 10;
      break;
    case optDeclaration: o.declaration = true; break;
    case optDtd: o.dtd = true; break;
    case optRequest: o.request = value; break;
    case optRows: o.rows = number(value, c, 0, kMaxRows); break;
    case optOutput:
      o.columns = splitCommas(value);
      for (const std::string &column : o.columns)
        if (column.empty())
          fail("invalid value \"" + value + "\" for --output (an empty column name)");
      break;
    case optSort:
      o.descending = !value.empty() && value[0] == '-';
      o.sort = value.substr(o.descending ? 1 : 0);
      if (o.sort.empty())
        fail("invalid value \"" + value + "\" for --sort (a column name, - to sort descending)");
      break;
    case optNoHeadings: o.noHeadings = true; break;
    case optLabels: o.labels = true; break;
    case optTable: o.table = value; break;
    case optLayout: o.layout = static_cast<int>(lookup(kLayouts, value, c)); break;
    default: fail("unknown option (see qel --help)");
    }
  }
  for (int i = optind; i < argc; ++i)
    o.words.push_back(argv[i]);
  return o;
}

// Options that make no sense together, or with the command: each names
// both sides.
void checkConflicts(const Options &o) {
  const std::string format = std::string("--format ") + o.format->name;
  if (o.format->family != kXmlApi)
    for (int option : {optDeclaration, optDtd, optRequest})
      if (o.has(option))
        conflict(option, format + " (XML API formats only)");
  if (o.format->family != kConsole)
    for (int option : {optNoHeadings, optLayout, optWidth})
      if (o.has(option))
        conflict(option, format + " (console only)");
  if (o.format->family != kCsv)
    for (int option : {optLabels, optTable})
      if (o.has(option))
        conflict(option, format + " (csv and tsv only)");
  if (o.noHeadings && o.layout > 0)
    for (const Named &layout : kLayouts)
      if (static_cast<int>(layout.value) == o.layout)
        conflict(optNoHeadings, std::string("--layout ") + layout.name + " (rows only)");
  const std::string &command = o.words.empty() ? std::string() : o.words[0];
  if (command == "meta" && (o.format->family & (kCsv | kStandard)))
    fail(format + " conflicts with the meta command (console and API formats only)");
  if (command == "meta" || command == "tables")
    for (int option : {optLabels, optTable, optRows, optOutput, optSort, optNoHeadings, optLayout, optDeclaration, optDtd, optRequest})
      if (o.has(option))
        conflict(option, "the " + command + " command");
  if (command == "tables")
    for (int option : {optFormat, optLocale, optNoL10n, optWidth, optUnits, optPrecision, optBase})
      if (o.has(option))
        conflict(option, "the tables command");
}

// Edit distance, for suggesting the names closest to a misspelt one.
size_t distance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j)
    row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// Up to three candidates close to \p name ("a, b, c"), or "" when none is:
// within a third of the name's length in edits, or containing it (or
// contained in it) when it has three characters or more.
std::string closest(const std::string &name, const std::vector<std::string> &candidates) {
  std::vector<std::pair<size_t, std::string>> ranked;
  for (const std::string &candidate : candidates) {
    size_t d = distance(name, candidate);
    if (name.size() >= 3 &&
        (candidate.find(name) != std::string::npos || name.find(candidate) != std::string::npos))
      d = std::min<size_t>(d, 1);
    if (d <= std::max<size_t>(2, name.size() / 3))
      ranked.emplace_back(d, candidate);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto &a, const auto &b) { return a.first < b.first; });
  std::string hint;
  for (size_t i = 0; i < ranked.size() && i < 3; ++i)
    hint += (i ? ", " : "") + ranked[i].second;
  return hint;
}

// The registered basetypes in table-index order.
std::vector<const TableMetaData *> registered() {
  std::vector<const TableMetaData *> out;
  TableMetaDataManager *manager = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  for (int slot = 0; slot < TableMetaDataManager::kSlots; ++slot)
    if (const TableMetaData *t = manager->getSlot(slot))
      out.push_back(t);
  return out;
}

[[noreturn]] void unknownBasetype(const std::string &name) {
  if (name.empty())
    fail("empty basetype name (qel tables lists them all)");
  std::vector<std::string> names;
  for (const TableMetaData *t : registered())
    names.push_back(strings::GS.toString(t->getTableId()));
  const std::string hint = closest(name, names);
  fail("unknown basetype \"" + name + "\"" + (hint.empty() ? "" : "; did you mean " + hint + "?") +
       " (qel tables lists them all)");
}

const TableMetaData *findTable(const std::string &name) {
  const GS_TokenValues token = strings::GS.toToken(name.c_str());
  return token ? TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(token) : nullptr;
}

// The token of column \p name of \p table, or a one-line error with the
// closest column names.
GS_TokenValues columnToken(const TableMetaData *table, const std::string &name, int option) {
  std::vector<std::string> names;
  for (int i = 0; i < table->getNumColumns(); ++i) {
    const GS_TokenValues token = table->getPropertyDef(i)->keywordId;
    const char *text = strings::GS.toString(token);
    if (text && name == text)
      return token;
    if (text && std::find(names.begin(), names.end(), text) == names.end())
      names.push_back(text);
  }
  const std::string basetype = strings::GS.toString(table->getTableId());
  const std::string hint = closest(name, names);
  fail("unknown column \"" + name + "\" of " + basetype + " for --" + longName(option) +
       (hint.empty() ? "" : "; did you mean " + hint + "?") + " (qel meta " + basetype +
       " lists them)");
}

int screenWidth(int requested) {
  if (requested > 0)
    return requested;
  winsize ws{};
  if (isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col >= 20)
    return ws.ws_col;
  return 80;
}

int printTables(utility::PutStream &out) {
  out.PutF("%-36s %7s  %s\n", "basetype", "columns", "wbi");
  for (const TableMetaData *t : registered())
    out.PutF("%-36s %7d  %s\n", strings::GS.toString(t->getTableId()), t->getNumColumns(),
             t->isWBI() ? "yes" : "no");
  return 0;
}

// The show command's table: which sample table, its column choice and order.
struct Show {
  int index = -1;
  const TableMetaData *table = nullptr;
  std::vector<GS_TokenValues> columns;
  GS_TokenValues sortColumn = tGS_NoToken;
};

Show checkShow(const Options &o) {
  Show s;
  const std::string &name = o.words[1];
  s.table = findTable(name);
  if (!s.table || (s.index = sample::findShown(name.c_str())) < 0)
    unknownBasetype(name);
  if (o.rows >= 0) {
    if (!sample::isScalable(s.index))
      conflict(optRows, "show " + name + " (a table with a fixed number of rows)");
    // Sorting needs the whole table in one descriptor, and the largest the
    // library builds has (rows * columns + 10) * 4 bytes that fit an int.
    const long limit = (INT_MAX / 4 - 10) / std::max(1, s.table->getNumColumns());
    if (!o.sort.empty() && o.rows > limit)
      fail("invalid value \"" + std::to_string(o.rows) + "\" for --rows: show " + name +
           " sorted holds at most " + std::to_string(limit) + " rows");
  }
  for (const std::string &column : o.columns)
    s.columns.push_back(columnToken(s.table, column, optOutput));
  if (!o.sort.empty())
    s.sortColumn = columnToken(s.table, o.sort, optSort);
  return s;
}

// Applies --output and --sort to the show table.
void shapeColumns(QEL_DESC *head, const Show &s, const Options &o) {
  if (!s.columns.empty())
    QEL_SelectColumns(head, s.columns.data(), static_cast<int>(s.columns.size()));
  if (s.sortColumn)
    QEL_SortRows(head, s.sortColumn, o.descending);
}

// The head table's console layout: --layout, or rows without headings for
// -n, else the sample's own (-1).
int layoutFor(const Options &o) {
  if (o.noHeadings)
    return QEL_FORMAT_EMBEDDED_ROWS;
  return o.layout;
}

// --rows without --sort: the table in pages of kPageRows rows, in the order
// the sample makes them, then what follows it; one page in memory at a
// time. False when a descriptor could not be built.
bool printPaged(services::user::Session &session, utility::PutStream &out, const Show &show,
                const Options &o) {
  QEL_PRINT *print = QEL_PrintOpen(&session, out, o.dtd, o.declaration,
                                   o.request.empty() ? nullptr : o.request.c_str());
  if (!print)
    return false;
  bool built = true;
  long first = 0;
  do {
    const int count = static_cast<int>(std::min<long>(kPageRows, o.rows - first));
    QEL_DESC *page = sample::buildPage(session, show.index, first, count, layoutFor(o));
    built = page != nullptr;
    if (page)
      shapeColumns(page, show, o);
    const bool printed = built && QEL_PrintPage(print, page);
    QEL_Free(page);
    if (!printed)
      break;
    first += count;
  } while (first < o.rows);
  if (QEL_DESC *trailer = built ? sample::buildTrailer(session, show.index) : nullptr) {
    QEL_PrintPage(print, trailer);
    QEL_Free(trailer);
  }
  QEL_PrintClose(print);
  return built;
}

int run(int argc, char **argv) {
  // The library reports through the platform log; a terminal user sees only
  // the output unless QEL_LOG asks for the diagnostics too.
  if (!std::getenv("QEL_LOG"))
    framework::Logger::setSink([](const framework::LogRecord &, void *) {});

  Options o = parse(argc, argv);
  if (o.words.empty())
    fail("missing command: show, meta or tables (see qel --help)");
  const std::string &command = o.words[0];
  const size_t arguments = o.words.size() - 1;
  if (command != "show" && command != "meta" && command != "tables")
    fail("unknown command \"" + command + "\" (show, meta or tables)");
  checkConflicts(o);

  // The output service, started as the controller starts it.
  framework::Service *service = framework::Container::getContainer()->buildService(pGSQel);
  if (!service || !service->Startup())
    fail("the output service did not start");

  Show show;
  if (command == "show") {
    if (arguments != 1)
      fail(arguments ? "show takes one basetype" : "show needs a basetype (see qel tables)");
    show = checkShow(o);
  } else if (command == "meta") {
    if (arguments > 1)
      fail("meta takes one list of basetypes, separated by commas");
    if (arguments == 1 && o.words[1] != "all" && o.words[1] != "wbi")
      for (const std::string &name : splitCommas(o.words[1]))
        if (!findTable(name))
          unknownBasetype(name);
  } else if (arguments) {
    fail("tables takes no argument");
  }

  utility::FileStream out(STDOUT_FILENO, 64 * 1024);
  services::user::Session session(out);
  Preferences &prefs = session.getPreferences();
  prefs.setOutputFormat(o.format->type);
  prefs.setLocale(o.locale);
  prefs.setStorageSizeUnits(o.units);
  prefs.setStorageSizePrecision(static_cast<std::uint8_t>(o.precision));
  prefs.setStorageSizeBase(o.base);
  prefs.setHeaderLabels(o.labels);
  if (!o.table.empty()) {
    if (!findTable(o.table))
      unknownBasetype(o.table);
    prefs.setSelectedTable(strings::GS.toToken(o.table.c_str()));
  }
  session.getContext().setScreenWidth(screenWidth(o.width));
  services::capi::setL10NEnabled(o.l10n);

  int status = 0;
  if (command == "tables") {
    status = printTables(out);
  } else if (command == "meta") {
    // Metadata documents exist for the API families only; at a terminal
    // the XML API one is the readable choice.
    if (o.format->family == kConsole)
      prefs.setOutputFormat(Preferences::OUTPUT_API);
    cli_metaHandler(&session, arguments ? o.words[1].c_str() : "all");
  } else {
    Progress progress(command + " " + o.words[1]);
    if (o.rows >= 0 && o.sort.empty()) {
      progress.printing();
      if (!printPaged(session, out, show, o)) {
        std::fprintf(stderr, "qel: could not build the %s table\n", o.words[1].c_str());
        status = 1;
      }
    } else if (QEL_DESC *head = sample::buildShow(session, show.index, static_cast<int>(o.rows),
                                                   layoutFor(o))) {
      shapeColumns(head, show, o);
      progress.printing();
      // The page's title is the command.
      const std::string request =
          o.format->type == Preferences::OUTPUT_HTML ? command + " " + o.words[1] : o.request;
      QEL_Print_Data(head, &session, out, o.dtd, o.declaration,
                     request.empty() ? nullptr : request.c_str());
      QEL_Free(head);
    } else {
      std::fprintf(stderr, "qel: could not build the %s table\n", o.words[1].c_str());
      status = 1;
    }
    out.FlushOutputStream();
  }
  out.FlushOutputStream();
  if (out.isOutputStreamInError()) {
    std::fprintf(stderr, "qel: could not write the output\n");
    status = 1;
  }
  return status;
}

} // namespace

int qelMain(int argc, char **argv) {
  optind = 0; // getopt_long starts afresh on every call
  try {
    return run(argc, argv);
  } catch (const Exit &exit) {
    std::fflush(stdout);
    return exit.status;
  }
}
