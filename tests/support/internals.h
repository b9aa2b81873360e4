// Test support: the library's internals that tests reach through the
// static test build (qel_testing) — renderers and generated data.
#ifndef QEL_TESTS_SUPPORT_INTERNALS_H
#define QEL_TESTS_SUPPORT_INTERNALS_H

#include <qel/fieldnames/field_name_arrays.h>
#include <qel/metadata/catalogue_arrays.h>
#include <qel/renderers/cli_ConsoleRenderer.h>
#include <qel/renderers/cli_JSONRenderer.h>
#include <qel/renderers/cli_TagRenderer.h>
#include <qel/renderers/cli_XMLRenderer.h>

#endif
