// libqel: the output generator of the storage-array management controller.
//
// The one header a program needs: it declares the library's whole external
// interface, the platform layer included.
#ifndef QEL_QEL_H
#define QEL_QEL_H

#include <platform/debug.h>
#include <platform/decoders.h>
#include <platform/framework.h>
#include <platform/helpers.h>
#include <platform/keywords.h>
#include <platform/locale.h>
#include <platform/service.h>
#include <platform/streams.h>
#include <platform/user.h>

#include <qel/cli_qel.h>
#include <qel/fieldnames/field_name_arrays.h>
#include <qel/fieldnames/fieldnames.h>
#include <qel/metadata/catalogue_arrays.h>
#include <qel/metadata/meta_data_db.h>
#include <qel/renderers/cli_ConsoleRenderer.h>
#include <qel/renderers/cli_JSONRenderer.h>
#include <qel/renderers/cli_TagRenderer.h>
#include <qel/renderers/cli_XMLRenderer.h>
#include <qel/renderers/renderer.h>
#include <qel/service/qel_Qel.h>

#endif
