// Threads: racing first use of start-up and getQel, and eight threads
// creating, filling and printing tables in different locales and output
// types while another changes column defaults. Each test runs in a process
// of its own (CTest), so the first test really is the first use. Built and
// run under ThreadSanitizer in CI.
#include "support/fixture_tables.h"

#include <atomic>
#include <iterator>
#include <thread>

namespace {

using Preferences = services::user::Preferences;

constexpr int kThreads = 8;

// Runs \p body on kThreads threads released together.
template <typename F> void race(F body) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      waiting.fetch_sub(1);
      while (waiting.load() > 0)
        std::this_thread::yield();
      body(t);
    });
  for (auto &thread : threads)
    thread.join();
}

TEST(Concurrency, FirstUseOfStartUpAndGetQel) {
  services::qel::Qel *found[kThreads] = {};
  race([&](int t) {
    if (t % 2)
      QEL_Start();
    framework::Container::getContainer()->buildService(pGSQel);
    found[t] = &services::qel::Qel::getQel();
    EXPECT_NE(TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(tGSvolumes), nullptr) << t;
  });
  for (int t = 0; t < kThreads; ++t)
    EXPECT_EQ(found[t], found[0]) << t;
  EXPECT_EQ(framework::Container::getContainer()->findService(pGSQel), found[0]);
}

// A `managed-logs` table with a nested `snmp-users` table and a row of every
// cell type linked after it, printed in \p type and \p locale.
std::string printJob(Preferences::OutputType type, LocaleCode locale) {
  utility::BufferStream out(1 << 16);
  services::user::Session s(out);
  s.getPreferences().setOutputFormat(type);
  s.getPreferences().setLocale(locale);
  QEL_DESC *top = QEL_Create(&s, tGSmanaged_2Dlogs, tGSnone, 2, 0); // the first row empty
  QEL_DESC *nested = QEL_Create(&s, tGSsnmp_2Dusers, tGSnone, 2, 0);
  QEL_DESC *types = QEL_Create(&s, tGSspares, tGSnone, 1, 0);
  QEL_FillColumnString(&s, top, 0, 1, "b<&>");
  QEL_FillColumnU32(&s, nested, 1, 1, 9);
  QEL_FillColumnQEL(&s, top, 1, 1, nested);
  qeltest::fillEveryType(s, types, 0);
  QEL_link(top, types);
  QEL_Print_Data(top, &s, out, true, true, "show");
  QEL_Free(top);
  cli_metaHandler(&s, "snmp-users");
  return out.pTail();
}

TEST(Concurrency, ThreadsPrintInTheirOwnLocalesAndTypes) {
  qeltest::FixtureTables tables;
  const LocaleCode locales[] = {LOCALE_EN, LOCALE_DE, LOCALE_JP, LOCALE_FR,
                                LOCALE_ZH_CHT, LOCALE_KO, LOCALE_ES, LOCALE_NL};
  // Thread t prints in locale t and every output type in turn; each
  // document is printed alone first.
  constexpr int kTypes = static_cast<int>(std::size(qeltest::outputTypes));
  std::string expected[kThreads][kTypes];
  for (int t = 0; t < kThreads; ++t)
    for (int k = 0; k < kTypes; ++k)
      expected[t][k] = printJob(qeltest::outputTypes[k], locales[t]);
  // The print and draw defaults of a column every thread creates, set to
  // what they are while the threads read them.
  std::atomic<bool> done{false};
  std::thread defaults([&done, &slot = qeltest::twoColumns[1]] {
    while (!done.load())
      TableMetaDataManager::SetColumnPrint(tGSsnmp_2Dusers, tGSslot, slot.print, slot.draw);
  });
  race([&](int t) {
    for (int i = 0; i < 26; ++i)
      EXPECT_EQ(printJob(qeltest::outputTypes[(t + i) % kTypes], locales[t]), expected[t][(t + i) % kTypes])
          << "thread " << t << ", " << strings::GS.toString(qeltest::outputTypes[(t + i) % kTypes]);
  });
  done.store(true);
  defaults.join();
}

} // namespace
