// The output service: the framework object whose construction builds the
// field-name dictionary and registers the table catalogue.
#ifndef QEL_SERVICE_QEL_QEL_H
#define QEL_SERVICE_QEL_QEL_H

#include <qel/platform/export.h>
#include <qel/platform/service.h>


/// Builds the dictionary (init_FieldNames, init_LocaleFieldNames) and then
/// registers the catalogue (initGSables), in that order, once per process:
/// later calls leave every table as it is.
QEL_API void QEL_Start();

namespace services {
namespace qel {

/// The output service, registered with the framework as pGSQel. Other
/// services call the library's functions directly; the object exists so the
/// framework loads, starts and stops the library like any other service.
class QEL_API Qel : public framework::Service {
public:
  /// Constructs the service and runs QEL_Start.
  explicit Qel(char const *name);
  ~Qel() override;

  /// Sets the status to pGSReady, then runs the framework's start-up.
  bool Startup() override;
  /// The framework's shut-down; the library's tables stay as they are.
  bool Shutdown() override;
  /// The record {635, 635, 1981}.
  const framework::ServiceInfoData *serviceInfo() const override;

  /// The running instance, found in the process container on the first call
  /// and cached. Throws framework::Exception* (code 1231, "Qel Not
  /// Available") when the container has no such service.
  static Qel &getQel();

  static Qel *m_Qel; ///< read and written atomically
  static framework::ServiceInfoData m_serviceInfoData;
};

/// The factory's builder: a new Qel named \p name.
QEL_API framework::Service *BuildQel(char const *name);

/// The factory created when the library is loaded; never released.
extern QEL_API framework::ServiceFactory *pFactoryQel;

} // namespace qel
} // namespace services

#endif
