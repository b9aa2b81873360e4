// Allocation failures: every allocation of a representative job fails in
// turn, once and from then on. Each point must end without a crash, an
// escaping exception or a leaked block, with either the reference document
// or a reported failure: a logged record the reference run does not log, or
// a descriptor the library refused to create.
#include "support/fixture_tables.h"

#include <cstdio>
#include <set>
#include <tuple>

namespace {

using Preferences = services::user::Preferences;
using Session = services::user::Session;

// A part of the job: prints into the session's stream; false when the
// library refused a descriptor, which the caller is told by the null.
using Part = bool (*)(Session &);

// A 50-row `managed-logs` table, its texts refilled, with a nested chain of
// `snmp-users` tables in every fifth row and a row of every cell type linked
// after it, printed as a command handler prints it.
bool printNested(Session &s) {
  QEL_DESC *top = QEL_Create(&s, tGSmanaged_2Dlogs, tGSnone, 50, 0);
  bool created = top != nullptr;
  char name[32];
  for (int r = 0; r < 50 && created; ++r) {
    std::snprintf(name, sizeof name, "entry <%02d> & \"more\"", r);
    QEL_FillColumnString(&s, top, 0, r, "x"); // refilled: the first copy is released
    QEL_FillColumnString(&s, top, 0, r, name);
    QEL_FillColumnU32(&s, top, 2, r, static_cast<unsigned>(50 - r));
    if (r % 5)
      continue;
    QEL_DESC *nested = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 2, 0);
    QEL_DESC *chained = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0);
    QEL_FillColumnString(&s, nested, 0, 0, "first"); // a null descriptor is ignored
    QEL_FillColumnU32(&s, nested, 1, 1, static_cast<unsigned>(r));
    QEL_link(nested, chained); // a chain in the cell
    QEL_FillColumnQEL(&s, top, 1, r, nested);
    created = nested && chained;
    if (!nested)
      QEL_Free(chained);
  }
  QEL_DESC *types = created ? QEL_Create(&s, tGSspares, tGSnone, 1, 0) : nullptr;
  qeltest::fillEveryType(s, types, 0);
  QEL_link(top, types);
  created = created && types;
  if (created)
    QEL_Print_Data(top, &s, s.getOutputStream(), true, true, "show managed-logs");
  QEL_Free(top);
  return created;
}

// The same kind of job as a paged print: 15 `managed-logs` rows in pages
// of 1 (a row the tag form holds back) and 7, a nested table in every fifth
// row, a second table after them.
bool printPages(Session &s) {
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
      if ((first + r) % 5 == 1)
        QEL_FillColumnQEL(&s, page, 1, r, QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0));
      created = (first + r) % 5 != 1 || page->cells[r * page->maxColumns + 1];
    }
    QEL_DESC *next = created && first >= 15 ? QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 1, 0) : nullptr;
    QEL_FillColumnString(&s, next, 0, 0, "after");
    QEL_link(page, next);
    created = created && (first < 15 || next);
    if (created)
      QEL_PrintPage(print, page);
    QEL_Free(page);
  }
  QEL_PrintClose(print);
  return created;
}

class AllocationFailure : public qeltest::SessionTest {
protected:
  // The document, the log texts of every route and whether a descriptor
  // was refused.
  std::tuple<std::string, std::vector<std::string>, bool> run(Part part) {
    out_.Rewind();
    qeltest::LogCapture log;
    bool refused = false;
    try {
      refused = !part(session_);
    } catch (...) {
      ADD_FAILURE() << "exception escaped";
    }
    framework::testing::setFailAfter(-1);
    return {out_.pTail(), log.all(), refused};
  }

  void sweep(const std::string &what, Part part, Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    const long start = framework::Memory::totalAllocations();
    const auto [document, log, refused] = run(part);
    const long points = framework::Memory::totalAllocations() - start;
    EXPECT_FALSE(refused) << what;
    const std::set<std::string> referenceLog(log.begin(), log.end());
    for (long i = 0; i < points; ++i) {
      for (bool persistent : {false, true}) {
        SCOPED_TRACE(testing::Message() << what << ", allocation " << i
                                        << (persistent ? " and all after it" : " alone"));
        const long live = framework::Memory::liveAllocations();
        framework::testing::setFailAfter(i, persistent);
        const auto [failedDocument, failedLog, failedRefused] = run(part);
        EXPECT_EQ(framework::Memory::liveAllocations(), live) << "leaked blocks";
        bool reported = failedRefused;
        for (const auto &text : failedLog)
          reported = reported || !referenceLog.count(text);
        if (failedDocument != document && !reported)
          ADD_FAILURE() << "a different document without a reported failure:\n" << failedDocument;
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
