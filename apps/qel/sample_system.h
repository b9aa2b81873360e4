// The built-in sample storage system: every registered table filled the way
// a command handler fills it, from the generated sample data.
#ifndef QEL_APPS_SAMPLE_SYSTEM_H
#define QEL_APPS_SAMPLE_SYSTEM_H

#include <qel/qel.h>

namespace sample {

/// The index of the show table for \p basetype, or -1.
int findShown(const char *basetype);

/// Whether `--rows` may scale show table \p index.
bool isScalable(int index);

/// Builds the output chain of `show <basetype>` for show table \p index:
/// the table itself, its linked objects, then the command-status object.
/// Scalable tables get \p scaleRows rows when it is not negative; the show
/// table gets console layout \p layout (a QEL_ConsoleFormat) when it is not
/// negative. Null when a descriptor could not be created (the library
/// logged why).
QEL_DESC *buildShow(services::user::Session &session, int index, int scaleRows, int layout);

/// Rows \p first to \p first + \p count - 1 of scalable show table \p index
/// scaled to any number of rows, as one descriptor (layout as above): a
/// page of the table that buildShow would build whole. Null as above.
QEL_DESC *buildPage(services::user::Session &session, int index, long first, int count, int layout);
/// What buildShow links after show table \p index: its linked objects and
/// the command-status object; null when there are none.
QEL_DESC *buildTrailer(services::user::Session &session, int index);

} // namespace sample

#endif
