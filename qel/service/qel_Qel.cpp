// The output service and the library's start-up.
#include <qel/service/qel_Qel.h>

#include <qel/fieldnames/fieldnames.h>
#include <qel/internal.h>
#include <qel/metadata/meta_data_db.h>

#include <qel/platform/framework.h>

#include <atomic>
#include <mutex>

namespace {
std::atomic<bool> started{false}; // set once QEL_Start has built the tables
} // namespace

bool qel_detail::libraryStarted() { return started.load(std::memory_order_acquire); }

void QEL_Start() {
  // The tables are written once, before anyone can reach the service; a
  // second service object must not register the catalogue again.
  static std::once_flag once;
  std::call_once(once, [] {
    init_FieldNames();
    init_LocaleFieldNames();
    initGSables();
    started.store(true, std::memory_order_release);
  });
}

namespace services {
namespace qel {

Qel *Qel::m_Qel = nullptr;
framework::ServiceInfoData Qel::m_serviceInfoData = {{635, 635, 1981}};

framework::ServiceFactory *pFactoryQel = new framework::ServiceFactory(BuildQel, pGSQel);

framework::Service *BuildQel(char const *name) { return new Qel(name); }

Qel::Qel(char const *name) : framework::Service(name) { QEL_Start(); }

Qel::~Qel() = default;

bool Qel::Startup() {
  setStatus(pGSReady);
  return framework::Service::Startup();
}

bool Qel::Shutdown() { return framework::Service::Shutdown(); }

const framework::ServiceInfoData *Qel::serviceInfo() const { return &m_serviceInfoData; }

Qel &Qel::getQel() {
  if (Qel *cached = __atomic_load_n(&m_Qel, __ATOMIC_ACQUIRE))
    return *cached;
  static const char kMethod[] = "static services::qel::Qel& services::qel::Qel::getQel()";
  framework::Service *service = framework::Container::getContainer()->findService(pGSQel);
  if (Qel *found = dynamic_cast<Qel *>(service)) {
    __atomic_store_n(&m_Qel, found, __ATOMIC_RELEASE);
    return *found;
  }
  framework::Logger::StaticLogMethod(0, kMethod, __LINE__, "Unable to find Qel Service.");
  throw new framework::Exception(1231, "qel_Qel", __LINE__, kMethod, "Qel Not Available", true);
}

} // namespace qel
} // namespace services
