// libqel: the output generator of the storage-array management controller.
//
// The one header a program needs: it declares the library's whole external
// interface, the platform layer included.
//
// Threads. Command handlers print concurrently; the contract is:
// - Before any other thread uses the library: start-up (QEL_Start, run by
//   the Qel service's constructor) and any further registration
//   (TableMetaDataManager::addTable). Start-up itself may be raced: it runs
//   once, and every caller returns after it has finished.
// - Safe from any thread at any time: QEL_Start, Qel::getQel and the process
//   container; the registry's lookups (getTableMetaDataManager, getTable,
//   getColumnType), the dictionary's labels, the metadata command
//   (cli_metaHandler); TableMetaDataManager::SetColumnPrint (its flags are
//   atomic, see PropertyFlag); the logger and its sink; framework::Memory;
//   the debug categories and the localization switch.
// - Owned by one thread at a time: a descriptor chain with its nested
//   tables (creating, filling, linking, sorting, printing and freeing it; a
//   console print marks it printed), a Session with its Preferences, every
//   stream, and a renderer. Hand one to another thread only with the usual
//   synchronisation (a mutex, a queue, a join).
// - The calling thread's locale (setThreadLocale) is per thread.
// - Test hooks (framework::testing::setFailAfter) act on the whole process.
#ifndef QEL_QEL_H
#define QEL_QEL_H

#include <qel/platform/debug.h>
#include <qel/platform/decoders.h>
#include <qel/platform/framework.h>
#include <qel/platform/helpers.h>
#include <qel/platform/keywords.h>
#include <qel/platform/locale.h>
#include <qel/platform/service.h>
#include <qel/platform/streams.h>
#include <qel/platform/user.h>

#include <qel/cli_qel.h>
#include <qel/fieldnames/fieldnames.h>
#include <qel/metadata/meta_data_db.h>
#include <qel/service/qel_Qel.h>

#endif
