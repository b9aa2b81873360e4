// The renderer workload: a 42-column volume-like table (9 texts, some with
// XML specials and UTF-8; 20 integers, 7 of them 64-bit; 5 enumerations; 4
// storage sizes; hex fields) filled, printed through every output type into
// a byte-counting sink and freed. Machines are shared and absolute times
// drift, so every figure that matters is a ratio measured in the same run:
// against memcpy of the finished XML API document (the bandwidth ceiling)
// and, when built with libsmartcols, against its aligned table and JSON
// output of the same cell texts.
//
//   qel_workload [--rows N] [--reps N]
#include "support/bench_support.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <malloc.h>
#include <string>
#include <vector>

#ifdef QEL_HAVE_SMARTCOLS
#include <libsmartcols.h>
#endif

namespace {

using services::user::Preferences;
using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double>(b - a).count();
}

#define COL(keyword, size, type, track, decoder)                                           \
  {keyword, size, type, tGSnone, tGSnone, true, true, false, track, false, SORT_STRING, decoder}

PropertyMetaData kColumns[42] = {
    COL(tGSdurable_2Did, 10, COLTYPE_STRING, false, nullptr),
    {tGSvolume_2Dname, 32, COLTYPE_STRING, tGSnone, tGSnone, true, true, false, true, true,
     SORT_STRING, nullptr},
    COL(tGSvirtual_2Ddisk_2Dname, 20, COLTYPE_STRING, true, nullptr),
    COL(tGSstorage_2Dpool_2Dname, 20, COLTYPE_STRING, true, nullptr),
    COL(tGSserial_2Dnumber, 33, COLTYPE_STRING, false, nullptr),
    COL(tGSwwn, 32, COLTYPE_STRING, false, nullptr),
    COL(tGSvolume_2Ddescription, 80, COLTYPE_STRING, true, nullptr),
    COL(tGShealth_2Dreason, 80, COLTYPE_STRING, true, nullptr),
    COL(tGShealth_2Drecommendation, 100, COLTYPE_STRING, false, nullptr),
    COL(tGSsize, 10, COLTYPE_BLOCKS, false, nullptr),
    COL(tGStotal_2Dsize, 10, COLTYPE_BLOCKS, false, nullptr),
    COL(tGSallocated_2Dsize, 10, COLTYPE_BLOCKS, false, nullptr),
    COL(tGSdata_2Dread, 10, COLTYPE_BLOCKS2BYTES, false, nullptr),
    COL(tGSblocks, 20, COLTYPE_U64, false, nullptr),
    COL(tGSnumber_2Dof_2Dreads, 20, COLTYPE_U64, false, nullptr),
    COL(tGSnumber_2Dof_2Dwrites, 20, COLTYPE_U64, false, nullptr),
    COL(tGSdata_2Dwritten, 20, COLTYPE_U64, false, nullptr),
    COL(tGSread_2Dcache_2Dhits, 20, COLTYPE_U64, false, nullptr),
    COL(tGSwrite_2Dcache_2Dhits, 20, COLTYPE_U64, false, nullptr),
    COL(tGSnumber_2Dof_2Dpage_2Dallocations, 20, COLTYPE_U64, false, nullptr),
    COL(tGSiops, 8, COLTYPE_U32, false, nullptr),
    COL(tGStotal_2Diops, 8, COLTYPE_U32, false, nullptr),
    COL(tGSbytes_2Dper_2Dsecond, 12, COLTYPE_U32, false, nullptr),
    COL(tGSqueue_2Ddepth, 8, COLTYPE_U32, false, nullptr),
    COL(tGSreset_2Dtime, 10, COLTYPE_U32, false, nullptr),
    COL(tGSwrite_2Dcache_2Dmisses, 10, COLTYPE_U32, false, nullptr),
    COL(tGSread_2Dcache_2Dmisses, 10, COLTYPE_U32, false, nullptr),
    COL(tGSsmall_2Ddestages, 10, COLTYPE_U32, false, nullptr),
    COL(tGSfull_2Dstripe_2Dwrite_2Ddestages, 10, COLTYPE_U32, false, nullptr),
    COL(tGSread_2Dahead_2Doperations, 10, COLTYPE_U32, false, nullptr),
    COL(tGSavg_2Drsp_2Dtime, 10, COLTYPE_I32, false, nullptr),
    COL(tGStemperature, 6, COLTYPE_I32, false, nullptr),
    COL(tGSport, 4, COLTYPE_U8, false, nullptr),
    COL(tGSslot, 5, COLTYPE_U16, false, nullptr),
    COL(tGShealth, 10, COLTYPE_ENUM, true, &decodeHealthStatus),
    COL(tGSowner, 12, COLTYPE_ENUM, false, &decodeControllerIndex),
    COL(tGSwrite_2Dpolicy, 14, COLTYPE_ENUM, false, &decodeCacheWritebackPolicy),
    COL(tGScache_2Doptimization, 14, COLTYPE_ENUM, false, &decodeCacheOptimization),
    COL(tGSlocator_2Dled, 10, COLTYPE_ENUM, false, &decodeEnabledParam),
    COL(tGSdebug_2Dflags, 10, COLTYPE_HEX32, false, nullptr),
    COL(tGSdrive_2Ddown_2Dcode, 4, COLTYPE_HEX8, false, nullptr),
    COL(tGSvendor, 16, COLTYPE_HEX_STRING, false, nullptr),
};
#undef COL

constexpr GS_TokenValues kTable = tGSspares; // a basetype the catalogue leaves free

const char *const kDescriptions[] = {
    "database <primary> & \"logs\"", "Größe für Übersicht", "scratch space",
    "ボリューム説明", "backup > 30 days & < 90 days", "plain", "web 'front' tier", ""};
const char *const kReasons[] = {"", "", "", "Disk group is degraded — rebuild in progress",
                                "Le volume est réservé"};

// A deterministic xorshift generator: the same table on every run.
struct Random {
  std::uint64_t s = 0x9E3779B97F4A7C15ull;
  std::uint64_t next() {
    s ^= s << 13;
    s ^= s >> 7;
    s ^= s << 17;
    return s;
  }
};

constexpr int kTexts = 17; // text cells per row: columns 0..8 and 9..19 but 12's numbers

// The texts of every row, made once: the timing measures the library, not
// the generator's printf.
std::vector<std::string> makeTexts(int rows) {
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(rows) * kTexts);
  Random rnd;
  char t[160];
  auto add = [&](const char *v) { texts.emplace_back(v); };
  for (int r = 0; r < rows; ++r) {
    std::snprintf(t, sizeof t, "V%08X", static_cast<unsigned>(r));
    add(t);
    std::snprintf(t, sizeof t, "vol-%07d", r);
    add(t);
    std::snprintf(t, sizeof t, "vd%02d", r % 16);
    add(t);
    std::snprintf(t, sizeof t, "pool-%c", 'A' + r % 2);
    add(t);
    std::snprintf(t, sizeof t, "00c0ff%026llx", static_cast<unsigned long long>(rnd.next()));
    add(t);
    std::snprintf(t, sizeof t, "600C0FF%025llX", static_cast<unsigned long long>(rnd.next()));
    add(t);
    add(kDescriptions[r % 8]);
    add(kReasons[r % 5]);
    add(r % 5 == 3 ? "- Check the disk group status and replace the failed disk." : "");
    for (int c = 9; c <= 12; ++c) {
      std::snprintf(t, sizeof t, "%llu", static_cast<unsigned long long>(rnd.next() % 40000000000ull));
      add(t);
    }
    for (int c = 13; c <= 19; ++c) {
      if (c == 16)
        continue; // keeps kTexts at 17 with 6 of the 7 64-bit columns as texts here
      std::snprintf(t, sizeof t, "%llu", static_cast<unsigned long long>(rnd.next() >> (c % 4) * 8));
      add(t);
    }
  }
  return texts;
}

// Fills row r from its texts; \p textBytes adds the bytes of the copies.
void fillRow(services::user::Session *s, QEL_DESC *d, int r, const std::string *texts,
             Random &rnd, long &textBytes) {
  int k = 0;
  auto text = [&](int c) {
    const std::string &v = texts[k++];
    QEL_FillColumn(s, d, c, r, static_cast<const void *>(v.c_str()));
    textBytes += static_cast<long>(v.size()) + 1;
  };
  for (int c = 0; c <= 19; ++c)
    if (c != 16)
      text(c);
  QEL_FillColumn(s, d, 16, r, static_cast<const void *>(texts[13].c_str()));
  textBytes += static_cast<long>(texts[13].size()) + 1;
  for (int c = 20; c <= 29; ++c)
    QEL_FillColumnU32(s, d, c, r, static_cast<std::uint32_t>(rnd.next() % 5000000));
  QEL_FillColumnI32(s, d, 30, r, static_cast<std::int32_t>(rnd.next() % 20000) - 100);
  QEL_FillColumnI32(s, d, 31, r, static_cast<std::int32_t>(rnd.next() % 70) - 10);
  QEL_FillColumnU8(s, d, 32, r, static_cast<std::uint8_t>(r % 4));
  QEL_FillColumnU16(s, d, 33, r, static_cast<std::uint16_t>(r % 12));
  QEL_FillColumnEnum(s, d, 34, r, r % 7 == 0 ? 1 : 0);
  QEL_FillColumnEnum(s, d, 35, r, static_cast<unsigned>(r % 2));
  QEL_FillColumnEnum(s, d, 36, r, static_cast<unsigned>(r % 3 == 0));
  QEL_FillColumnEnum(s, d, 37, r, static_cast<unsigned>(r % 2));
  QEL_FillColumnEnum(s, d, 38, r, static_cast<unsigned>(r % 2));
  QEL_FillColumnHex32(s, d, 39, r, static_cast<std::uint32_t>(rnd.next()));
  QEL_FillColumnHex8(s, d, 40, r, static_cast<std::uint8_t>(rnd.next()));
  std::uint64_t bytes[2] = {rnd.next(), rnd.next()};
  QEL_FillColumnHexString(s, d, 41, r, reinterpret_cast<const std::uint8_t *>(bytes));
  textBytes += 17;
}

// A sink that counts what reaches it and, when asked, keeps it.
class CountingSink : public utility::PutStream {
public:
  explicit CountingSink(std::string *keep = nullptr) : m_keep(keep) {
    capacity = 1 << 16;
    allocBuffer();
  }
  bool FlushOutputStream() override {
    m_bytes += ReadAvailable();
    if (m_keep)
      m_keep->append(pTail(), static_cast<std::size_t>(ReadAvailable()));
    Rewind();
    return true;
  }
  long long bytes() {
    FlushOutputStream();
    return m_bytes;
  }

private:
  std::string *m_keep;
  long long m_bytes = 0;
};

struct Result {
  const char *name;
  double rowsPerSecond;   ///< fill + print + free
  double renderMBps;      ///< print only
  double fillAllocsPerCell, printAllocsPerCell;
  double heldRatio;       ///< heap held by the filled table / its cell and text bytes
  long long bytes;
};

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

long heapInUse() {
  const struct mallinfo2 m = mallinfo2();
  return static_cast<long>(m.uordblks + m.hblkhd); // small blocks and mapped ones
}

Result run(const char *name, Preferences::OutputType type, int rows, int reps,
           const std::vector<std::string> &texts, std::string *keep) {
  std::vector<double> total, render;
  Result res{name, 0, 0, 0, 0, 0, 0};
  for (int rep = 0; rep < reps; ++rep) {
    CountingSink sink(rep == 0 ? keep : nullptr);
    services::user::Session session(sink);
    session.getPreferences().setOutputFormat(type);
    session.getContext().setScreenWidth(200);
    Random rnd;
    long textBytes = 0;
    const long heap0 = heapInUse();
    const long allocs0 = qelbench::newCalls().load() + framework::Memory::totalAllocations();
    const auto t0 = Clock::now();
    QEL_DESC *d = QEL_Create(&session, kTable, tGSvolume, rows, 0);
    for (int r = 0; r < rows; ++r)
      fillRow(&session, d, r, &texts[static_cast<std::size_t>(r) * kTexts], rnd, textBytes);
    const auto t1 = Clock::now();
    const long allocs1 = qelbench::newCalls().load() + framework::Memory::totalAllocations();
    const long held = heapInUse() - heap0;
    QEL_Print_Data(d, &session, sink, false, false, nullptr);
    const auto t2 = Clock::now();
    const long allocs2 = qelbench::newCalls().load() + framework::Memory::totalAllocations();
    QEL_Free(d);
    const auto t3 = Clock::now();
    total.push_back(seconds(t0, t3));
    render.push_back(seconds(t1, t2));
    if (rep == 0) {
      const double cells = static_cast<double>(rows) * 42;
      res.fillAllocsPerCell = static_cast<double>(allocs1 - allocs0) / cells;
      res.printAllocsPerCell = static_cast<double>(allocs2 - allocs1) / cells;
      res.heldRatio = static_cast<double>(held) / (cells * sizeof(QEL_CELL) + static_cast<double>(textBytes));
      res.bytes = sink.bytes();
    }
  }
  res.rowsPerSecond = rows / median(total);
  res.renderMBps = static_cast<double>(res.bytes) / 1e6 / median(render);
  return res;
}

// memcpy of the document: the bandwidth ceiling of any renderer.
double memcpyMBps(const std::string &document, int reps) {
  std::vector<char> target(document.size() + 1);
  std::vector<double> t;
  for (int i = 0; i < std::max(reps, 3); ++i) {
    const auto a = Clock::now();
    std::memcpy(target.data(), document.data(), document.size());
    const auto b = Clock::now();
    t.push_back(seconds(a, b));
  }
  volatile char sink = target[document.size() / 2];
  (void)sink;
  return static_cast<double>(document.size()) / 1e6 / median(t);
}

#ifdef QEL_HAVE_SMARTCOLS
// The same cell texts through libsmartcols: build the table from the texts,
// print it aligned (or as JSON) to /dev/null, free it.
double smartcolsRowsPerSecond(int rows, int reps, bool json,
                              const std::vector<std::string> &source) {
  // The texts the console shows, made once outside the timing.
  utility::BufferStream out(1 << 10);
  services::user::Session session(out);
  Random rnd;
  long ignored = 0;
  QEL_DESC *d = QEL_Create(&session, kTable, tGSvolume, rows, 0);
  for (int r = 0; r < rows; ++r)
    fillRow(&session, d, r, &source[static_cast<std::size_t>(r) * kTexts], rnd, ignored);
  std::vector<std::string> texts(static_cast<std::size_t>(rows) * 42);
  {
    ConsoleRenderer formatter(&session, out);
    utility::BufferStream value(7000), numeric(1024);
    value.setSilentTruncation(true);
    numeric.setSilentTruncation(true);
    for (int r = 0; r < rows; ++r)
      for (int c = 0; c < 42; ++c) {
        numeric.Rewind();
        formatter.FormatData(d, c, r, value, numeric, false);
        texts[static_cast<std::size_t>(r) * 42 + c] = value.pTail();
      }
  }
  QEL_Free(d);
  FILE *devnull = std::fopen("/dev/null", "w");
  std::vector<double> t;
  for (int rep = 0; rep < reps; ++rep) {
    const auto a = Clock::now();
    libscols_table *tb = scols_new_table();
    scols_table_set_stream(tb, devnull);
    if (json) {
      scols_table_enable_json(tb, 1);
      scols_table_set_name(tb, "volumes");
    }
    for (int c = 0; c < 42; ++c)
      scols_table_new_column(tb, strings::GS.toString(kColumns[c].keywordId), 0,
                             c >= 9 && c <= 33 ? SCOLS_FL_RIGHT : 0);
    for (int r = 0; r < rows; ++r) {
      libscols_line *ln = scols_table_new_line(tb, nullptr);
      for (int c = 0; c < 42; ++c)
        scols_line_set_data(ln, static_cast<std::size_t>(c),
                            texts[static_cast<std::size_t>(r) * 42 + c].c_str());
    }
    scols_print_table(tb);
    scols_unref_table(tb);
    t.push_back(seconds(a, Clock::now()));
  }
  std::fclose(devnull);
  return rows / median(t);
}
#endif

} // namespace

int main(int argc, char **argv) {
  int rows = 100000, reps = 5;
  const char *only = nullptr; // --format NAME: that format alone (for profiling)
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--rows") == 0)
      rows = std::max(1, std::atoi(argv[i + 1]));
    else if (std::strcmp(argv[i], "--reps") == 0)
      reps = std::max(1, std::atoi(argv[i + 1]));
    else if (std::strcmp(argv[i], "--format") == 0)
      only = argv[i + 1];
  }
  qelbench::start();
  TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)
      ->addTable(kTable, kColumns, 42, true, pGSnone, pGSnone, pGSnone);

  struct Format {
    const char *name;
    Preferences::OutputType type;
  } formats[] = {{"console", Preferences::OUTPUT_CONSOLE}, {"api", Preferences::OUTPUT_API},
                 {"api-brief", Preferences::OUTPUT_API_BRIEF}, {"xml2", Preferences::OUTPUT_XML2},
                 {"xml2-brief", Preferences::OUTPUT_XML2_BRIEF}, {"json", Preferences::OUTPUT_JSON},
                 {"json-alt", Preferences::OUTPUT_JSON_ALT}, {"tag", Preferences::OUTPUT_TAG},
                 {"json-std", Preferences::OUTPUT_JSON_STD}, {"ndjson", Preferences::OUTPUT_NDJSON},
                 {"csv", Preferences::OUTPUT_CSV}, {"tsv", Preferences::OUTPUT_TSV},
                 {"html", Preferences::OUTPUT_HTML}};
  const std::vector<std::string> texts = makeTexts(rows);
  std::string apiDocument;
  std::vector<Result> results;
  for (const Format &f : formats)
    if (!only || std::strcmp(only, f.name) == 0 || f.type == Preferences::OUTPUT_API)
      results.push_back(run(f.name, f.type, rows, reps, texts,
                            f.type == Preferences::OUTPUT_API ? &apiDocument : nullptr));
  auto rate = [&](const char *name) {
    for (const Result &r : results)
      if (std::strcmp(r.name, name) == 0)
        return r.rowsPerSecond;
    return 0.0;
  };
  const double ceiling = memcpyMBps(apiDocument, reps);

  std::printf("workload: %d rows x 42 columns, median of %d runs\n", rows, reps);
  std::printf("%-11s %12s %10s %9s %12s %12s %9s\n", "format", "rows/s", "MB/s", "memcpy%",
              "fill allocs", "print allocs", "held/data");
  for (const Result &r : results)
    std::printf("%-11s %12.0f %10.1f %8.2f%% %12.4f %12.6f %9.2f\n", r.name, r.rowsPerSecond,
                r.renderMBps, 100.0 * r.renderMBps / ceiling, r.fillAllocsPerCell,
                r.printAllocsPerCell, r.heldRatio);
  std::printf("memcpy of the %.1f MB XML API document: %.0f MB/s\n",
              static_cast<double>(apiDocument.size()) / 1e6, ceiling);
#ifdef QEL_HAVE_SMARTCOLS
  const double aligned = smartcolsRowsPerSecond(rows, reps, false, texts);
  const double json = smartcolsRowsPerSecond(rows, reps, true, texts);
  std::printf("libsmartcols aligned table: %.0f rows/s; console is %.2fx\n", aligned,
              rate("console") / aligned);
  std::printf("libsmartcols JSON:          %.0f rows/s; json is %.2fx\n", json,
              rate("json") / json);
#else
  std::printf("libsmartcols: not built (install libsmartcols-dev for the peer ratios)\n");
#endif
  if (rate("json") > 0)
    for (const char *name : {"json-std", "ndjson", "csv", "tsv", "html"})
      if (rate(name) > 0)
        std::printf("%-9s is %.2fx the web script's rows/s\n", name, rate(name) / rate("json"));
  return 0;
}
