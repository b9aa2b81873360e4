// qel: the management CLI's show and meta commands over a built-in sample
// storage system. It starts the output service as the controller does,
// builds each table through the descriptor API and prints it in the output
// type, locale and units that the options set for the session.
#include "sample_data.h"
#include "sample_system.h"

#include <qel/qel.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using services::user::Preferences;

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
    "  --format F         console api api-brief xml2 xml2-brief json json-alt tag\n"
    "                     (default console)\n"
    "  --locale L         en es fr de it ja nl zh-cn zh-tw ko (default en)\n"
    "  --no-l10n          labels in English whatever the locale\n"
    "  --width N          console width (default: the terminal's, else 80)\n"
    "  --units U          auto KB MB GB TB (default auto)\n"
    "  --precision N      decimals of sizes, 0..9 (default 2)\n"
    "  --base B           2 or 10: sizes in binary or decimal units (default 10)\n"
    "  --declaration      XML API: start with the XML declaration\n"
    "  --dtd              XML API: include the document type definition\n"
    "  --request TEXT     XML API: the request echoed in the document\n"
    "  --rows N           give list tables (volumes, drives, ...) N rows\n"
    "  --help             this text\n"
    "  --version          the library's version\n"
    "\n"
    "examples:\n"
    "  qel show system\n"
    "  qel --width 132 show volumes\n"
    "  qel --format api --declaration show controllers\n"
    "  qel --format json --locale de show drives\n"
    "  qel --format xml2 meta volumes,drives\n";

struct Named {
  const char *name;
  unsigned value;
};

const Named kFormats[] = {
    {"console", Preferences::OUTPUT_CONSOLE}, {"api", Preferences::OUTPUT_API},
    {"api-brief", Preferences::OUTPUT_API_BRIEF}, {"xml2", Preferences::OUTPUT_XML2},
    {"xml2-brief", Preferences::OUTPUT_XML2_BRIEF}, {"json", Preferences::OUTPUT_JSON},
    {"json-alt", Preferences::OUTPUT_JSON_ALT}, {"tag", Preferences::OUTPUT_TAG},
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

struct Options {
  Preferences::OutputType format = Preferences::OUTPUT_CONSOLE;
  LocaleCode locale = LOCALE_EN;
  bool l10n = true;
  int width = -1;
  Preferences::StorageUnit units = Preferences::UNITS_AUTO;
  int precision = 2;
  int base = 10;
  bool declaration = false;
  bool dtd = false;
  std::string request;
  int rows = -1;
  std::vector<std::string> words; // command and its argument
};

// Bad input: one line on stderr, nothing on stdout, exit status 2.
[[noreturn]] void fail(const std::string &message) {
  std::fprintf(stderr, "qel: %s\n", message.c_str());
  std::exit(2);
}

template <size_t N>
unsigned lookup(const Named (&table)[N], const std::string &value, const char *option) {
  std::string known;
  for (const Named &n : table) {
    if (value == n.name)
      return n.value;
    known += known.empty() ? "" : ", ";
    known += n.name;
  }
  fail("invalid value \"" + value + "\" for " + option + " (one of: " + known + ")");
}

int number(const std::string &value, const char *option, int low, int high) {
  char *end = nullptr;
  const long n = std::strtol(value.c_str(), &end, 10);
  if (value.empty() || *end != '\0' || n < low || n > high)
    fail("invalid value \"" + value + "\" for " + option + " (a number from " +
         std::to_string(low) + " to " + std::to_string(high) + ")");
  return static_cast<int>(n);
}

Options parse(int argc, char **argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg.size() < 2 || arg.compare(0, 2, "--") != 0) {
      o.words.push_back(arg);
      continue;
    }
    std::string value;
    bool hasValue = false;
    const size_t eq = arg.find('=');
    if (eq != std::string::npos) {
      value = arg.substr(eq + 1);
      arg.resize(eq);
      hasValue = true;
    }
    const bool flag = arg == "--no-l10n" || arg == "--declaration" || arg == "--dtd" ||
                      arg == "--help" || arg == "--version";
    if (flag && hasValue)
      fail("option " + arg + " takes no value");
    if (arg == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    }
    if (arg == "--version") {
      std::printf("qel %s\n", QEL_VERSION);
      std::exit(0);
    }
    if (arg == "--no-l10n") { o.l10n = false; continue; }
    if (arg == "--declaration") { o.declaration = true; continue; }
    if (arg == "--dtd") { o.dtd = true; continue; }
    const char *valued[] = {"--format", "--locale", "--width", "--units", "--precision",
                            "--base", "--request", "--rows"};
    if (std::find_if(std::begin(valued), std::end(valued),
                     [&](const char *v) { return arg == v; }) == std::end(valued))
      fail("unknown option " + arg + " (see qel --help)");
    if (!hasValue) {
      if (i + 1 >= argc)
        fail("option " + arg + " needs a value");
      value = argv[++i];
    }
    if (arg == "--format")
      o.format = static_cast<Preferences::OutputType>(lookup(kFormats, value, "--format"));
    else if (arg == "--locale")
      o.locale = static_cast<LocaleCode>(lookup(kLocales, value, "--locale"));
    else if (arg == "--width")
      o.width = number(value, "--width", 20, 1000);
    else if (arg == "--units")
      o.units = static_cast<Preferences::StorageUnit>(lookup(kUnits, value, "--units"));
    else if (arg == "--precision")
      o.precision = number(value, "--precision", 0, 9);
    else if (arg == "--base") {
      o.base = number(value, "--base", 2, 10);
      if (o.base != 2 && o.base != 10)
        fail("invalid value \"" + value + "\" for --base (2 or 10)");
    } else if (arg == "--request")
      o.request = value;
    else if (arg == "--rows")
      o.rows = number(value, "--rows", 0, 10000000);
  }
  return o;
}

// Edit distance, for suggesting the basetypes closest to a misspelt one.
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
  std::vector<std::pair<size_t, std::string>> ranked;
  for (const TableMetaData *t : registered()) {
    const std::string candidate = strings::GS.toString(t->getTableId());
    size_t d = distance(name, candidate);
    if (candidate.find(name) != std::string::npos || name.find(candidate) != std::string::npos)
      d = std::min<size_t>(d, 1);
    ranked.emplace_back(d, candidate);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto &a, const auto &b) { return a.first < b.first; });
  std::string hint;
  for (size_t i = 0; i < ranked.size() && i < 3; ++i)
    hint += (i ? ", " : "") + ranked[i].second;
  fail("unknown basetype \"" + name + "\"; did you mean " + hint + "? (qel tables lists them all)");
}

bool isBasetype(const std::string &name) {
  const GS_TokenValues token = strings::GS.toToken(name.c_str());
  return token && TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(token);
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

} // namespace

int main(int argc, char **argv) {
  // The library reports through the platform log; a terminal user sees only
  // the output unless QEL_LOG asks for the diagnostics too.
  if (!std::getenv("QEL_LOG"))
    framework::Logger::setSink([](const framework::LogRecord &) {});

  Options o = parse(argc, argv);
  if (o.words.empty())
    fail("missing command: show, meta or tables (see qel --help)");

  // The output service, started as the controller starts it.
  framework::Service *service = framework::Container::getContainer()->buildService(pGSQel);
  if (!service || !service->Startup())
    fail("the output service did not start");

  const std::string &command = o.words[0];
  const size_t arguments = o.words.size() - 1;
  int index = -1;
  if (command == "show") {
    if (arguments != 1)
      fail(arguments ? "show takes one basetype" : "show needs a basetype (see qel tables)");
    if (!isBasetype(o.words[1]) || (index = sample::findShown(o.words[1].c_str())) < 0)
      unknownBasetype(o.words[1]);
  } else if (command == "meta") {
    if (arguments > 1)
      fail("meta takes one list of basetypes, separated by commas");
    if (arguments == 1 && o.words[1] != "all" && o.words[1] != "wbi") {
      std::string list = o.words[1];
      for (size_t start = 0; start <= list.size();) {
        const size_t comma = std::min(list.find(',', start), list.size());
        const std::string name = list.substr(start, comma - start);
        if (!isBasetype(name))
          unknownBasetype(name);
        start = comma + 1;
      }
    }
  } else if (command == "tables") {
    if (arguments)
      fail("tables takes no argument");
  } else {
    fail("unknown command \"" + command + "\" (show, meta or tables)");
  }

  utility::FileStream out(STDOUT_FILENO, 64 * 1024);
  services::user::Session session(out);
  Preferences &prefs = session.getPreferences();
  prefs.setOutputFormat(o.format);
  prefs.setLocale(o.locale);
  prefs.setStorageSizeUnits(o.units);
  prefs.setStorageSizePrecision(static_cast<std::uint8_t>(o.precision));
  prefs.setStorageSizeBase(o.base);
  session.getContext().setScreenWidth(screenWidth(o.width));
  services::capi::setL10NEnabled(o.l10n);

  int status = 0;
  if (command == "tables") {
    status = printTables(out);
  } else if (command == "meta") {
    // Metadata documents exist for the API families only; at a terminal
    // the XML API one is the readable choice.
    if (o.format == Preferences::OUTPUT_CONSOLE)
      prefs.setOutputFormat(Preferences::OUTPUT_API);
    cli_metaHandler(&session, arguments ? o.words[1].c_str() : "all");
  } else {
    QEL_DESC *head = sample::buildShow(session, index, o.rows);
    if (!head) {
      std::fprintf(stderr, "qel: could not build the %s table\n", o.words[1].c_str());
      status = 1;
    } else {
      QEL_Print_Data(head, &session, out, o.dtd, o.declaration,
                     o.request.empty() ? nullptr : o.request.c_str());
      QEL_Free(head);
    }
  }
  out.FlushOutputStream();
  if (out.isOutputStreamInError()) {
    std::fprintf(stderr, "qel: could not write the output\n");
    status = 1;
  }
  return status;
}
