// The service framework's object model.
#include <qel/platform/framework.h>
#include <qel/platform/internal.h>
#include <qel/platform/service.h>

#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <string>

namespace framework {

// --- Item -------------------------------------------------------------------

Item::Item() = default;
Item::~Item() = default;
int Item::getAccess() { return 0; }
bool Item::isChanged() const { return m_changed; }
void Item::setChanged() { m_changed = true; }
void Item::clearChanged() { m_changed = false; }
void Item::discardChanged() { m_changed = false; }
bool Item::toStream(utility::PutStream &) const { return false; }
bool Item::toFile(char const *) const { return false; }
bool Item::fromStream(utility::GetStream &) { return false; }
bool Item::fromFile(char const *) { return false; }
bool Item::fromXML(utility::XMLDocument &) { return false; }

// --- OwnedText --------------------------------------------------------------

OwnedText::~OwnedText() { delete[] m_text; }

OwnedText &OwnedText::operator=(const char *text) {
  char *copy = nullptr;
  if (text && *text) {
    const std::size_t size = std::strlen(text) + 1;
    copy = new char[size];
    std::memcpy(copy, text, size);
  }
  delete[] m_text;
  m_text = copy;
  return *this;
}

// --- Entity -----------------------------------------------------------------

Entity::Entity() = default;
Entity::~Entity() = default;
GS_TokenValues Entity::getName() const { return static_cast<GS_TokenValues>(367); }
const char *Entity::getNameString() const { return pGSEntity; }
void Entity::information(utility::PutStream &, int, bool) const {}
Item *Entity::clone() const { return nullptr; }
bool Entity::inError() { return m_inError; }
const char *Entity::ErrorMessage() { return m_errorMessage.c_str(); }
void Entity::ClearError() {
  m_inError = false;
  m_errorMessage.clear();
}
void Entity::setResources() {}

void Entity::setError(char const *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  m_errorMessage = platform_detail::vformat(fmt, args).c_str();
  va_end(args);
  m_inError = true;
}

void *Entity::operator new(std::size_t size) {
  if (void *block = Memory::StaticAlloc(size))
    return block;
  throw std::bad_alloc();
}

void Entity::operator delete(void *block) { Memory::StaticFree(block); }

// --- Service ----------------------------------------------------------------

ServiceInfoData Service::m_serviceInfoData = {{0, 0, 0}};

Service::Service(char const *name) : m_name(name) {}
Service::~Service() = default;

GS_TokenValues Service::getName() const { return strings::GS.toToken(m_name.c_str()); }
const char *Service::getNameString() const { return m_name.c_str(); }
void Service::information(utility::PutStream &, int, bool) const {}
void Service::Announce() {}
const char *Service::InstanceName() const { return m_name.c_str(); }
GS_TokenValues Service::ServiceName() const { return getName(); }
GS_TokenValues Service::ServiceType() const { return tGS_NoToken; }
GS_TokenValues Service::ServiceClass() const { return tGS_NoToken; }
const char *Service::ServiceNameString() const { return m_name.c_str(); }
const char *Service::ServiceTypeString() const { return ""; }
const char *Service::ServiceClassString() const { return ""; }
const char *Service::ServiceStatus() const { return m_status.c_str(); }

bool Service::Startup() {
  Announce();
  m_started = true;
  return true;
}

bool Service::Shutdown() {
  m_started = false;
  return true;
}

bool Service::isHidden() { return false; }
int Service::Dispatch(int, utility::BufferStream *, utility::BufferStream *) { return 0; }
void Service::threadsInformation(utility::PutStream &, int, bool) const {}
int Service::NumRequestedThreads() { return 0; }
void Service::RunThread() {}
void Service::serviceEvent(unsigned int, void const *) {}
const ServiceInfoData *Service::serviceInfo() const { return &m_serviceInfoData; }
const unsigned *Service::eventSubscription() const { return nullptr; }
void Service::setStatus(char const *status) { m_status = status; }

// --- ServiceFactory ---------------------------------------------------------

ServiceFactory::ServiceFactory(ServiceBuilder builder, char const *name)
    : m_builder(builder), m_name(name) {
  Container::getContainer()->registerFactory(this);
}

ServiceFactory::~ServiceFactory() = default;

// --- Container --------------------------------------------------------------

Container *Container::m_pMe = nullptr;

struct Container::State {
  std::mutex mutex;
  std::map<std::string, ServiceFactory *> factories;
  std::map<std::string, Service *> services;
};

Container::Container() : m_state(new State) {}
Container::~Container() { delete m_state; }

Container *Container::getContainer() {
  // Created on first use: factories register during static initialisation,
  // in whatever order the loader runs it.
  static Container *const process = new Container();
  if (!m_pMe)
    m_pMe = process;
  return m_pMe;
}

void Container::registerFactory(ServiceFactory *factory) {
  std::lock_guard<std::mutex> lock(m_state->mutex);
  m_state->factories[factory->name()] = factory;
}

ServiceFactory *Container::findFactory(char const *name) {
  std::lock_guard<std::mutex> lock(m_state->mutex);
  auto it = m_state->factories.find(name ? name : "");
  return it == m_state->factories.end() ? nullptr : it->second;
}

Service *Container::findService(char const *name) {
  std::lock_guard<std::mutex> lock(m_state->mutex);
  ++m_lookups;
  auto it = m_state->services.find(name ? name : "");
  return it == m_state->services.end() ? nullptr : it->second;
}

Service *Container::buildService(char const *name) {
  if (Service *built = findService(name))
    return built;
  ServiceFactory *factory = findFactory(name);
  if (!factory)
    return nullptr;
  Service *service = factory->build();
  std::lock_guard<std::mutex> lock(m_state->mutex);
  auto inserted = m_state->services.emplace(name, service);
  if (!inserted.second) { // built meanwhile by another thread
    delete service;
    return inserted.first->second;
  }
  return service;
}

void Container::removeService(char const *name) {
  Service *service = nullptr;
  {
    std::lock_guard<std::mutex> lock(m_state->mutex);
    auto it = m_state->services.find(name ? name : "");
    if (it == m_state->services.end())
      return;
    service = it->second;
    m_state->services.erase(it);
  }
  delete service;
}

} // namespace framework
