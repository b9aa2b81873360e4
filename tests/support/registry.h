// Test support: tables registered for the lifetime of one object, so that a
// test leaves the process-wide registry as it found it.
#ifndef QEL_TESTS_SUPPORT_REGISTRY_H
#define QEL_TESTS_SUPPORT_REGISTRY_H

#include "support/library.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>
#include <vector>

/// Reaches the registry's slots (a friend of TableMetaDataManager).
class RegistryTestAccess {
public:
  using Slots = std::pair<std::vector<TableMetaData *>, int>; // the tables, overflowUsed
  static Slots save(const TableMetaDataManager &r) { return {{std::begin(r.tables), std::end(r.tables)}, r.overflowUsed}; }
  static void restore(TableMetaDataManager &r, const Slots &saved) {
    std::copy(saved.first.begin(), saved.first.end(), r.tables);
    r.overflowUsed = saved.second;
  }
};

namespace qeltest {

/// Starts the library, then saves the registry. On destruction the slots,
/// the instance pointer and the print and draw defaults of every property
/// registered before or through add() are put back, and the tables that
/// the slots gained meanwhile are deleted. A test that replaces a table it
/// registered itself deletes the replaced one.
class ScopedRegistry {
public:
  ScopedRegistry()
      : registry_((startLibrary(), TableMetaDataManager::getTableMetaDataManager(LOCALE_EN))),
        saved_(RegistryTestAccess::save(*registry_)) {
    for (TableMetaData *t : saved_.first)
      if (t)
        keepDefaults(t->getPropertyDef(0), t->getNumColumns());
  }
  ~ScopedRegistry() {
    TableMetaDataManager::m_Instance = registry_;
    const std::set<TableMetaData *> before(saved_.first.begin(), saved_.first.end());
    std::set<TableMetaData *> added; // a table in several slots is deleted once
    for (int slot = 0; slot < TableMetaDataManager::kSlots; ++slot)
      if (TableMetaData *t = registry_->getSlot(slot); t && !before.count(t))
        added.insert(t);
    for (TableMetaData *t : added)
      delete t;
    RegistryTestAccess::restore(*registry_, saved_);
    for (auto d = defaults_.rbegin(); d != defaults_.rend(); ++d) // the first record wins
      d->property->print = d->print, d->property->draw = d->draw;
  }
  ScopedRegistry(const ScopedRegistry &) = delete;
  ScopedRegistry &operator=(const ScopedRegistry &) = delete;

  /// Registers \p columns under \p token: wbi, no keys, no parent.
  void add(GS_TokenValues token, PropertyMetaData *columns, int numColumns) {
    keepDefaults(columns, numColumns);
    registry_->addTable(token, columns, numColumns, true, pGSnone, pGSnone, pGSnone);
  }
  TableMetaDataManager *registry() const { return registry_; }

private:
  struct Defaults {
    PropertyMetaData *property;
    bool print, draw;
  };
  void keepDefaults(PropertyMetaData *columns, int numColumns) {
    for (int i = 0; i < numColumns; ++i)
      defaults_.push_back({columns + i, bool(columns[i].print), bool(columns[i].draw)});
  }

  TableMetaDataManager *registry_;
  RegistryTestAccess::Slots saved_;
  std::vector<Defaults> defaults_;
};

} // namespace qeltest

#endif
