// The sample storage system as data: generated from the sample_*.txt
// sources by tools/gen_sample.py.
#ifndef QEL_APPS_SAMPLE_DATA_H
#define QEL_APPS_SAMPLE_DATA_H

#include <cstdint>

namespace sample {

/// One filled cell. Which member counts depends on the column's type:
/// \c text (\c size bytes) for texts, big numbers and byte strings,
/// \c object for nested tables, \c number for everything else.
struct Value {
  int row;
  int column;
  std::uint32_t number;
  const char *text;
  int size;
  int object; ///< index into tables, or -1
};

/// A table of the sample system: a "show" table that `qel show` prints, or
/// an object nested in a cell or linked after a show table.
struct Table {
  const char *name;     ///< the basetype for show tables
  const char *basetype; ///< keyword of the registered table
  bool shown;
  std::uint8_t layout;  ///< QEL_ConsoleFormat
  bool scalable;        ///< --rows may repeat its rows
  int rows;
  const Value *values;  ///< row by row, columns ascending
  int valueCount;
  const int *links;     ///< objects printed after it, in order
  int linkCount;
};

extern const Table tables[];
extern const int tableCount;

} // namespace sample

#endif
