// The output service: construction running start-up once, status order on
// start-up, and finding the running instance.
#include "support/library.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using services::qel::Qel;

// Forget any service a previous test built in this process.
void resetContainer() {
  framework::Container::getContainer()->removeService(pGSQel);
  Qel::m_Qel = nullptr;
}

TEST(QelService, GetQelWithoutTheServiceLogsAndThrows) {
  resetContainer();
  LogCapture log;
  std::unique_ptr<framework::Exception> error;
  try {
    Qel::getQel();
  } catch (framework::Exception *e) {
    error.reset(e);
  }
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), 1231u);
  EXPECT_STREQ(error->message(), "Qel Not Available");
  EXPECT_STREQ(error->file(), "qel_Qel");
  EXPECT_STREQ(error->function(), "static services::qel::Qel& services::qel::Qel::getQel()");
  EXPECT_TRUE(error->flag());
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "Unable to find Qel Service.");
  EXPECT_EQ(log.records[0].type, 0);
  EXPECT_STREQ(log.records[0].function, error->function());
  EXPECT_GT(log.records[0].line, 0);
  EXPECT_EQ(Qel::m_Qel, nullptr) << "a failure is not cached";
}

TEST(QelService, TheLoadTimeFactoryBuildsItOnceAndGetQelFindsIt) {
  resetContainer();
  LogCapture log;
  // Before the service is built no table is known, and the log says why.
  EXPECT_EQ(QEL_Create(nullptr, tGSvolumes, tGSnone, 1, 0), nullptr);
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            std::vector<std::string>{"QEL_Create: Could not find table volumes: the output "
                                     "service is not built (call framework::Container::"
                                     "getContainer()->buildService(pGSQel)->Startup() first)"});
  log.records.clear();
  framework::Container *container = framework::Container::getContainer();
  ASSERT_NE(services::qel::pFactoryQel, nullptr);
  EXPECT_EQ(services::qel::pFactoryQel->builder(), &services::qel::BuildQel);
  EXPECT_EQ(container->findFactory("Qel"), services::qel::pFactoryQel);
  framework::Service *service = container->buildService(pGSQel);
  ASSERT_NE(service, nullptr);
  EXPECT_EQ(container->buildService(pGSQel), service);
  const long before = container->lookupCount();
  EXPECT_EQ(&Qel::getQel(), service);
  EXPECT_EQ(&Qel::getQel(), service);
  EXPECT_EQ(container->lookupCount() - before, 1) << "the instance is cached";
  // Usable before Startup: the dictionary and the registry answer.
  EXPECT_STREQ(getConsoleLabel(tGSserial_2Dnumber, 0, LOCALE_EN), "Serial Number");
  TableMetaData *volumes =
      TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(tGSvolumes);
  EXPECT_NE(volumes, nullptr);
  EXPECT_EQ(log.records.size(), 0u) << "start-up is quiet";

  // A second service object runs start-up again: nothing changes.
  const long allocations = framework::Memory::totalAllocations();
  std::unique_ptr<framework::Service> second(services::qel::BuildQel(pGSQel));
  QEL_Start();
  init_FieldNames();
  init_LocaleFieldNames();
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
  EXPECT_EQ(service.events,
            (std::vector<std::string>{"status Ready", "framework start-up"}));
  EXPECT_STREQ(service.ServiceStatus(), "Ready");
  EXPECT_TRUE(service.isStarted());
  EXPECT_TRUE(service.Shutdown());
  EXPECT_FALSE(service.isStarted());
}

} // namespace
