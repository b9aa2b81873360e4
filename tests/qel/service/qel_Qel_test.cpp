// The output service: construction running start-up once, status order on
// start-up, and finding the running instance. Racing first uses are in the
// concurrency tests.
#include "support/library.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using qeltest::LogCapture;
using services::qel::Qel;

// Without the service getQel logs and throws, and QEL_Create knows no
// table; the factory registered at load time then builds it once, and getQel
// finds and caches it. A previous test's service is forgotten first.
TEST(QelService, GetQelFindsTheServiceTheLoadTimeFactoryBuildsOnce) {
  framework::Container *container = framework::Container::getContainer();
  container->removeService(pGSQel);
  Qel::m_Qel = nullptr;
  LogCapture log;
  std::unique_ptr<framework::Exception> error;
  try {
    Qel::getQel();
  } catch (framework::Exception *e) {
    error.reset(e);
  }
  ASSERT_TRUE(error);
  const std::string function = "static services::qel::Qel& services::qel::Qel::getQel()";
  EXPECT_EQ(std::make_tuple(error->code(), std::string(error->message()), std::string(error->file()),
                            std::string(error->function()), error->flag()),
            std::make_tuple(1231u, std::string("Qel Not Available"), std::string("qel_Qel"), function, true));
  EXPECT_EQ(Qel::m_Qel, nullptr) << "a failure is not cached";
  EXPECT_EQ(QEL_Create(nullptr, tGSvolumes, tGSnone, 1, 0), nullptr);
  ASSERT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"Unable to find Qel Service.",
                                      "QEL_Create: Could not find table volumes: the output service is not "
                                      "built (call framework::Container::getContainer()->buildService(pGSQel)"
                                      "->Startup() first)"}));
  EXPECT_EQ(std::make_pair(log.records[0].type, std::string(log.records[0].function)), std::make_pair(0, function));
  log.records.clear();
  framework::Service *service = container->buildService(pGSQel);
  EXPECT_EQ(container->buildService(pGSQel), service);
  const long before = container->lookupCount();
  EXPECT_TRUE(&Qel::getQel() == service && &Qel::getQel() == service);
  EXPECT_EQ(container->lookupCount() - before, 1) << "the instance is cached";
  // Usable before Startup: the registry answers.
  TableMetaData *volumes = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(tGSvolumes);
  EXPECT_NE(volumes, nullptr);
  // A second service object runs start-up again: nothing changes, and
  // start-up stays quiet.
  const long allocations = framework::Memory::totalAllocations();
  std::unique_ptr<framework::Service> second(services::qel::BuildQel(pGSQel));
  QEL_Start();
  EXPECT_EQ(framework::Memory::totalAllocations() - allocations, 1) << "only the service object";
  EXPECT_EQ(log.records.size(), 0u);
  EXPECT_EQ(TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(tGSvolumes),
            volumes);
}

TEST(QelService, StartupSetsReadyBeforeTheFrameworkStartsIt) {
  struct Recording : Qel {
    std::vector<std::string> events;
    Recording() : Qel(pGSQel) {}
    void setStatus(char const *status) override {
      events.push_back(std::string("status ") + status);
      Qel::setStatus(status);
    }
    void Announce() override { events.push_back("framework start-up"); }
  } service;
  EXPECT_TRUE(service.Startup());
  EXPECT_EQ(service.events, (std::vector<std::string>{"status Ready", "framework start-up"}));
  EXPECT_TRUE(service.isStarted() && service.Shutdown() && !service.isStarted());
}

} // namespace
