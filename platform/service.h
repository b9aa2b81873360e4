// The service framework's object model: items, entities, services, service
// factories and the process container that builds and finds services.
//
// A service is registered by a factory object created when its library is
// loaded; the container builds it by name and other services find it there.
#ifndef QEL_PLATFORM_SERVICE_H
#define QEL_PLATFORM_SERVICE_H

#include <qel/platform/export.h>
#include <qel/platform/keywords.h>

#include <cstddef>
#include <cstdint>

namespace utility {
class PutStream;
class GetStream;
class BufferStream;
class XMLDocument;
} // namespace utility

namespace framework {

class Service;

/// A text the object owns (the framework's headers do without std::string).
class QEL_API OwnedText {
public:
  OwnedText() = default;
  explicit OwnedText(const char *text) { *this = text; }
  ~OwnedText();
  OwnedText(const OwnedText &) = delete;
  /// Replaces the text with a copy of \p text (null: empty).
  OwnedText &operator=(const char *text);
  const char *c_str() const { return m_text ? m_text : ""; }
  void clear() { *this = nullptr; }

private:
  char *m_text = nullptr;
};

/// A service's information record, read by the framework.
struct ServiceInfoData {
  std::uint32_t values[3];
};

/// The root of the framework's objects: change tracking and persistence.
/// The persistence operations are not supported here and report failure.
class QEL_API Item {
public:
  Item();
  virtual ~Item();
  virtual GS_TokenValues getName() const = 0;
  virtual const char *getNameString() const = 0;
  virtual void information(utility::PutStream &out, int level, bool verbose) const = 0;
  virtual Item *clone() const = 0;
  virtual int getAccess();
  virtual bool isChanged() const;
  virtual void setChanged();
  virtual void clearChanged();
  virtual void discardChanged();
  virtual bool toStream(utility::PutStream &out) const;
  virtual bool toFile(char const *path) const;
  virtual bool fromStream(utility::GetStream &in);
  virtual bool fromFile(char const *path);
  virtual bool fromXML(utility::XMLDocument &document);

private:
  bool m_changed = false;
};

/// A named framework object with an error state. Entities are allocated with
/// their own operator new (from framework::Memory).
class QEL_API Entity : public virtual Item {
public:
  Entity();
  ~Entity() override;
  GS_TokenValues getName() const override;         ///< the token 367
  const char *getNameString() const override;      ///< pGSEntity
  void information(utility::PutStream &out, int level, bool verbose) const override;
  Item *clone() const override;                    ///< null
  virtual bool inError();
  virtual const char *ErrorMessage();
  virtual void ClearError();
  virtual void setResources();
  virtual void setError(char const *fmt, ...) QEL_PRINTF(2, 3);

  static void *operator new(std::size_t size);
  static void operator delete(void *block);

private:
  bool m_inError = false;
  OwnedText m_errorMessage;
};

/// A service: named by its keyword text, with a status text.
class QEL_API Service : public Entity {
public:
  explicit Service(char const *name);
  ~Service() override;
  GS_TokenValues getName() const override;     ///< token of the service name
  const char *getNameString() const override;  ///< the service name
  void information(utility::PutStream &out, int level, bool verbose) const override;
  virtual void Announce();
  virtual const char *InstanceName() const;
  virtual GS_TokenValues ServiceName() const;
  virtual GS_TokenValues ServiceType() const;
  virtual GS_TokenValues ServiceClass() const;
  virtual const char *ServiceNameString() const;
  virtual const char *ServiceTypeString() const;
  virtual const char *ServiceClassString() const;
  virtual const char *ServiceStatus() const;
  /// Announces the service and marks it started; true.
  virtual bool Startup();
  /// Marks it stopped; true.
  virtual bool Shutdown();
  virtual bool isHidden();
  virtual int Dispatch(int request, utility::BufferStream *in, utility::BufferStream *out);
  virtual void threadsInformation(utility::PutStream &out, int level, bool verbose) const;
  virtual int NumRequestedThreads();
  virtual void RunThread();
  virtual void serviceEvent(unsigned int event, void const *data);
  virtual const ServiceInfoData *serviceInfo() const;
  virtual const unsigned *eventSubscription() const;
  virtual void setStatus(char const *status);

  bool isStarted() const { return m_started; }

  static ServiceInfoData m_serviceInfoData;

private:
  OwnedText m_name;
  OwnedText m_status;
  bool m_started = false;
};

/// Builds a service from its name.
using ServiceBuilder = Service *(*)(char const *name);

/// The load-time registration of a service: a builder and a name. The
/// constructor registers the factory with the process container.
class QEL_API ServiceFactory : public Entity {
public:
  ServiceFactory(ServiceBuilder builder, char const *name);
  ~ServiceFactory() override;
  ServiceBuilder builder() const { return m_builder; }
  const char *name() const { return m_name; }
  /// Builds the service (exceptions of the builder propagate).
  Service *build() const { return m_builder(m_name); }

private:
  ServiceBuilder m_builder;
  const char *m_name;
};

/// The process's container of services. Thread-safe.
class QEL_API Container {
public:
  Container();
  virtual ~Container();
  Container(const Container &) = delete;
  Container &operator=(const Container &) = delete;

  /// The process's container (m_pMe).
  static Container *getContainer();

  void registerFactory(ServiceFactory *factory);
  /// The factory registered under \p name, or null.
  ServiceFactory *findFactory(char const *name);
  /// The service built under \p name, or null.
  virtual Service *findService(char const *name);
  /// Builds the service registered under \p name (once: a second call
  /// returns the first one); null without a factory.
  Service *buildService(char const *name);
  /// Forgets and deletes the service built under \p name.
  void removeService(char const *name);
  /// How many times findService was asked.
  long lookupCount() const { return m_lookups; }

  static Container *m_pMe;

private:
  struct State; ///< the registered factories and built services, locked
  State *m_state;
  long m_lookups = 0;
};

} // namespace framework

#endif
