// Allocation failures: every allocation of a representative job fails in
// turn, once and from then on. Each point must end without a crash, an
// escaping exception or a leaked block, with either the reference document
// or a reported failure: a logged record the reference run does not log, or
// a descriptor the library refused to create.
#include "support/fixture_tables.h"

#include <cstdio>
#include <set>

namespace {

using qeltest::LogCapture;
using Preferences = services::user::Preferences;

// A part of the job: prints into the session's stream; false when the
// library refused a descriptor, which the caller is told by the null.
using Part = bool (*)(services::user::Session &);

// A 50-row `managed-logs` table, its texts refilled, with a nested chain of
// `snmp-users` tables in every fifth row and a row of every cell type linked
// after it, printed as a command handler prints it.
bool printNested(services::user::Session &s) {
  QEL_DESC *top = QEL_Create(&s, tGSmanaged_2Dlogs, tGSnone, 50, 0);
  if (!top)
    return false;
  bool created = true;
  char name[32];
  for (int r = 0; r < 50 && created; ++r) {
    std::snprintf(name, sizeof name, "entry <%02d> & \"more\"", r);
    QEL_FillColumnString(&s, top, 0, r, "x"); // refilled: the first copy is released
    QEL_FillColumnString(&s, top, 0, r, name);
    QEL_FillColumnU32(&s, top, 2, r, static_cast<unsigned>(50 - r));
    if (r % 5)
      continue;
    QEL_DESC *nested = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 2, 0);
    QEL_DESC *chained = nested ? QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0) : nullptr;
    created = chained != nullptr;
    for (int n = 0; n < 2 && nested; ++n) {
      QEL_FillColumnString(&s, nested, 0, n, n ? "second" : "first");
      QEL_FillColumnU32(&s, nested, 1, n, static_cast<unsigned>(r + n));
    }
    if (!chained) {
      QEL_Free(nested);
      break;
    }
    QEL_link(nested, chained); // a chain in the cell
    QEL_FillColumnQEL(&s, top, 1, r, nested);
  }
  QEL_DESC *types = created ? QEL_Create(&s, tGSspares, tGSnone, 1, 0) : nullptr;
  if (types) {
    static const std::uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    QEL_FillColumnHex8(&s, types, 0, 0, 0xab);
    QEL_FillColumnHex32(&s, types, 1, 0, 0xdeadbeef);
    QEL_FillColumnU8(&s, types, 2, 0, 7);
    QEL_FillColumnU32(&s, types, 3, 0, 123456);
    QEL_FillColumnString(&s, types, 4, 0, "a\"b<c>");
    QEL_FillColumnDouble(&s, types, 6, 0, 2.5);
    QEL_FillColumnEnum(&s, types, 7, 0, 1);
    QEL_FillColumnIndex(&s, types, 8, 0, 3);
    QEL_FillColumnU64(&s, types, 9, 0, "18446744073709551615");
    QEL_FillColumnI32(&s, types, 10, 0, -5);
    QEL_FillColumnHexString(&s, types, 11, 0, bytes);
    QEL_FillColumnU16(&s, types, 12, 0, 65535);
    QEL_FillColumnStringN(&s, types, 13, 0, "SEAGATE_");
    QEL_FillColumnBlocks(&s, types, 14, 0, "2048");
    QEL_FillColumnDateTime(&s, types, 15, 0, 1700000000u);
    QEL_FillColumnTime(&s, types, 16, 0, 3661);
    QEL_FillColumnEnumToken(&s, types, 17, 0, Preferences::OUTPUT_JSON);
    QEL_FillColumnBlocks2Bytes(&s, types, 18, 0, "4096");
    QEL_link(top, types);
  }
  if (created && types)
    QEL_Print_Data(top, &s, s.getOutputStream(), true, true, "show managed-logs");
  QEL_Free(top);
  return created && types;
}

// The same kind of job as a paged print: 15 `managed-logs` rows in pages
// of 1 (a row the tag form holds back) and 7, a nested table in every fifth
// row, a second table after them.
bool printPages(services::user::Session &s) {
  QEL_PRINT *print = QEL_PrintOpen(&s, s.getOutputStream(), true, true, "show managed-logs");
  bool created = print != nullptr;
  for (int first = 0; first < 15 && created;) {
    const int rows = first == 0 ? 1 : 7;
    QEL_DESC *page = QEL_Create(&s, tGSmanaged_2Dlogs, tGSvolume, rows, 0);
    first += rows;
    created = page != nullptr;
    for (int r = 0; r < rows && created; ++r) {
      QEL_FillColumnString(&s, page, 0, r, "entry <&>");
      QEL_FillColumnU32(&s, page, 2, r, static_cast<unsigned>(first + r));
      if ((first + r) % 5 == 1) {
        QEL_DESC *nested = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0);
        created = nested != nullptr;
        QEL_FillColumnQEL(&s, page, 1, r, nested);
      }
    }
    if (created && first >= 15) {
      QEL_DESC *next = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0);
      created = next != nullptr;
      if (next)
        QEL_FillColumnString(&s, next, 0, 0, "after");
      QEL_link(page, next);
    }
    if (created)
      QEL_PrintPage(print, page);
    QEL_Free(page);
  }
  QEL_PrintClose(print);
  return created;
}

bool metaCommand(services::user::Session &s) {
  cli_metaHandler(&s, "volumes,managed-logs");
  return true;
}

struct Outcome {
  std::string document;
  std::vector<std::string> log; // every route
  bool refused = false;
  long start = 0; // allocations counted before it
};

class AllocationFailure : public qeltest::SessionTest {
protected:
  Outcome run(Part part, Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    Outcome r;
    r.start = framework::Memory::totalAllocations();
    LogCapture log;
    try {
      r.refused = !part(session_);
    } catch (...) {
      ADD_FAILURE() << "exception escaped";
    }
    framework::testing::setFailAfter(-1);
    r.document = out_.pTail();
    for (const auto &record : log.records)
      r.log.push_back(record.text);
    return r;
  }

  // Sweeps every allocation of \p part.
  void sweep(const char *what, Part part, Preferences::OutputType type) {
    const Outcome reference = run(part, type);
    const long points = framework::Memory::totalAllocations() - reference.start;
    EXPECT_FALSE(reference.refused);
    const std::set<std::string> referenceLog(reference.log.begin(), reference.log.end());
    for (long i = 0; i < points; ++i) {
      for (bool persistent : {false, true}) {
        SCOPED_TRACE(testing::Message() << what << ", allocation " << i
                                        << (persistent ? " and all after it" : " alone"));
        const long live = framework::Memory::liveAllocations();
        framework::testing::setFailAfter(i, persistent);
        const Outcome r = run(part, type);
        EXPECT_EQ(framework::Memory::liveAllocations(), live) << "leaked blocks";
        bool reported = r.refused;
        for (const auto &text : r.log)
          reported = reported || !referenceLog.count(text);
        if (r.document != reference.document && !reported)
          ADD_FAILURE() << "a different document without a reported failure:\n" << r.document;
      }
    }
  }
};

TEST_F(AllocationFailure, EveryPointFailsCleanlyOrReports) {
  out_.setSilentTruncation(true);
  const std::pair<Preferences::OutputType, const char *> types[] = {
      {Preferences::OUTPUT_CONSOLE, "console"}, {Preferences::OUTPUT_API, "api"},
      {Preferences::OUTPUT_API_BRIEF, "api-brief"}, {Preferences::OUTPUT_XML2, "xml2"},
      {Preferences::OUTPUT_XML2_BRIEF, "xml2-brief"}, {Preferences::OUTPUT_JSON, "json"},
      {Preferences::OUTPUT_JSON_ALT, "json-alt"}, {Preferences::OUTPUT_TAG, "tag"},
      {Preferences::OUTPUT_JSON_STD, "json-std"}, {Preferences::OUTPUT_CSV, "csv"},
      {Preferences::OUTPUT_HTML, "html"}};
  for (const auto &t : types) {
    sweep(t.second, printNested, t.first);
    sweep((std::string("paged ") + t.second).c_str(), printPages, t.first);
  }
  // The metadata command allocates nothing today; the sweep covers whatever
  // it comes to allocate.
  sweep("meta api", metaCommand, Preferences::OUTPUT_API);
  sweep("meta json", metaCommand, Preferences::OUTPUT_JSON);
}

} // namespace
