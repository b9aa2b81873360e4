// Allocation failures: every allocation of a representative job fails in
// turn, once and from then on. Each point must end without a crash, an
// escaping exception or a leaked block, with either the reference document
// or a reported failure: a logged record the reference run does not log, or
// a descriptor the library refused to create.
#include "support/fixture_tables.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

using Preferences = services::user::Preferences;
using Session = services::user::Session;

// A part of the job: prints into the session's stream; false when the
// library refused a descriptor, which the caller is told by the null.
using Part = bool (*)(Session &);

// Fills rows first.. of a `managed-logs` table: texts refilled (the first
// copy is released) and a nested chain of two `snmp-users` tables in every
// fifth row. False when the library refused a descriptor.
bool fillLogs(Session &s, QEL_DESC *d, int first) {
  bool created = d != nullptr;
  char name[32];
  for (int r = 0; created && r < d->maxRows; ++r) {
    std::snprintf(name, sizeof name, "entry <%02d> & \"more\"", first + r);
    QEL_FillColumnString(&s, d, 0, r, "x");
    QEL_FillColumnString(&s, d, 0, r, name);
    QEL_FillColumnU32(&s, d, 2, r, static_cast<unsigned>(first + r));
    if ((first + r) % 5)
      continue;
    QEL_DESC *nested = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 2, 0);
    QEL_DESC *chained = nested ? QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0) : nullptr;
    QEL_FillColumnString(&s, nested, 0, 0, "first"); // a null descriptor is ignored
    QEL_FillColumnU32(&s, nested, 1, 1, static_cast<unsigned>(r));
    QEL_link(nested, chained);
    QEL_FillColumnQEL(&s, d, 1, r, nested);
    created = chained != nullptr;
  }
  return created;
}

// 50 rows and a row of every cell type linked after them, printed as a
// command handler prints them.
bool printNested(Session &s) {
  QEL_DESC *top = QEL_Create(&s, tGSmanaged_2Dlogs, tGSnone, 50, 0);
  QEL_DESC *types = fillLogs(s, top, 0) ? QEL_Create(&s, tGSspares, tGSnone, 1, 0) : nullptr;
  qeltest::fillEveryType(s, types, 0);
  QEL_link(top, types);
  const bool created = types != nullptr;
  if (created)
    QEL_Print_Data(top, &s, s.getOutputStream(), true, true, "show managed-logs");
  QEL_Free(top);
  return created;
}

// The same kind of job as a paged print: 15 rows in pages of 1 (a row the
// tag form holds back) and 7, a second table after them.
bool printPages(Session &s) {
  QEL_PRINT *print = QEL_PrintOpen(&s, s.getOutputStream(), true, true, "show managed-logs");
  bool created = print != nullptr;
  for (int first = 0; first < 15 && created;) {
    QEL_DESC *page = QEL_Create(&s, tGSmanaged_2Dlogs, tGSvolume, first ? 7 : 1, 0);
    created = fillLogs(s, page, first);
    first += first ? 7 : 1;
    QEL_DESC *next = created && first >= 15 ? QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0) : nullptr;
    QEL_FillColumnString(&s, next, 0, 0, "after");
    QEL_link(page, next);
    if ((created = created && (first < 15 || next)))
      QEL_PrintPage(print, page);
    QEL_Free(page);
  }
  QEL_PrintClose(print);
  return created;
}

class AllocationFailure : public qeltest::SessionTest {
protected:
  // The document and the log of every route, a refused descriptor logged
  // as "refused".
  std::pair<std::string, std::vector<std::string>> run(Part part) {
    out_.Rewind();
    qeltest::LogCapture log;
    bool created = false;
    try {
      created = part(session_);
    } catch (...) {
      ADD_FAILURE() << "exception escaped";
    }
    framework::testing::setFailAfter(-1);
    std::vector<std::string> texts = log.all();
    if (!created)
      texts.push_back("refused");
    return {out_.pTail(), texts};
  }

  void sweep(const std::string &what, Part part, Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    const long start = framework::Memory::totalAllocations();
    const auto [document, log] = run(part);
    const long points = framework::Memory::totalAllocations() - start;
    const std::set<std::string> referenceLog(log.begin(), log.end());
    EXPECT_EQ(referenceLog.count("refused"), 0u) << what;
    for (long i = 0; i < points; ++i) {
      for (bool persistent : {false, true}) {
        SCOPED_TRACE(testing::Message() << what << ", allocation " << i
                                        << (persistent ? " and all after it" : " alone"));
        const long live = framework::Memory::liveAllocations();
        framework::testing::setFailAfter(i, persistent);
        const auto [failed, failedLog] = run(part);
        EXPECT_EQ(framework::Memory::liveAllocations(), live) << "leaked blocks";
        EXPECT_TRUE(failed == document || std::any_of(failedLog.begin(), failedLog.end(), [&](const auto &t) {
                      return !referenceLog.count(t);
                    })) << "a different document without a reported failure:\n" << failed;
      }
    }
  }
};

TEST_F(AllocationFailure, EveryPointFailsCleanlyOrReports) {
  out_.setSilentTruncation(true);
  for (const Preferences::OutputType type : qeltest::outputTypes) {
    sweep(strings::GS.toString(type), printNested, type);
    sweep(std::string("paged ") + strings::GS.toString(type), printPages, type);
  }
}

} // namespace
