// Metadata documents: the registry's table definitions as an XML document,
// a JSON script or bare tag elements.
//
//   <OBJECT name="title" basetype="events">
//   <PROPERTY name="time-stamp" type="string" draw="true" size="25"
//    sort="datetime" key="false" abbr="" desc="...">Timestamp</PROPERTY>
//   <PROPERTY name="time-stamp-numeric" type="uint32" draw="false" ...
//
//   new APIData([
//     new APIEvents([
//       new APIProp({name:"time-stamp",value:"Timestamp",type:"string",...}),
//       ...
//       ], {basetype:"events",name:"meta",oid:"31",primaryKey:"event-id",...})
//   ])
//
// Texts are written as they stand: the dictionary holds no double quote,
// "<" or "&" (its generator refuses them), so no escaping is needed. A text
// the dictionary lacks is written as "".
#include <qel/metadata/meta_data_db.h>

#include <qel/fieldnames/fieldnames.h>
#include <qel/internal.h>
#include <qel/renderers/cli_JSONRenderer.h>

#include <qel/platform/helpers.h>
#include <qel/platform/streams.h>

#include <strings.h>

#include <cstring>
#include <string>

namespace {

enum class Family { None, Xml, Json, Tag };

Family familyOf(services::user::Preferences::OutputType type) {
  using P = services::user::Preferences;
  switch (type) {
  case P::OUTPUT_API:
  case P::OUTPUT_XML2:
  case P::OUTPUT_API_BRIEF:
  case P::OUTPUT_XML2_BRIEF:
    return Family::Xml;
  case P::OUTPUT_JSON:
  case P::OUTPUT_JSON_ALT:
    return Family::Json;
  case P::OUTPUT_TAG:
    return Family::Tag;
  default:
    return Family::None;
  }
}

const char *flag(bool on) { return on ? "true" : "false"; }

// The types whose properties the metadata documents describe with a
// "-numeric" companion. ENUMTOKEN is not among them, although printed tables
// give ENUMTOKEN cells a companion (Renderer::isNumericColumn): the metadata
// documents have always omitted it and their readers expect them as they are.
bool hasCompanion(ColumnDataType type) {
  switch (type) {
  case COLTYPE_ENUM:
  case COLTYPE_BLOCKS:
  case COLTYPE_DATETIME:
  case COLTYPE_TIME:
  case COLTYPE_BLOCKS2BYTES:
    return true;
  default:
    return false;
  }
}

// The texts of one property in a locale.
struct Texts {
  const char *name, *label, *abbreviation, *description;
};

Texts textsOf(const PropertyMetaData &p, GS_TokenValues table, LocaleCode locale) {
  const int token = static_cast<int>(p.keywordId);
  const int tableId = static_cast<int>(table);
  return {qel_detail::text(getAPIName(p.keywordId)), qel_detail::text(getConsoleLabel(token, tableId, locale)),
          qel_detail::text(getConsoleAbbreviation(token, tableId, locale)),
          qel_detail::text(getConsoleDescription(token, tableId, locale))};
}

} // namespace

void TableMetaData::renderPropertyMetaDataXML(utility::PutStream *stream, int column,
                                              bool numeric, LocaleCode locale) {
  const PropertyMetaData &p = properties[column];
  const Texts t = textsOf(p, tableId, locale);
  if (numeric) {
    stream->PutF("<PROPERTY name=\"%s-numeric\" ", t.name);
    stream->PutS("type=\"uint32\" ");
    stream->PutS("draw=\"false\" ");
  } else {
    stream->PutF("<PROPERTY name=\"%s\" ", t.name);
    stream->PutF("type=\"%s\" ", getDataTypeStr(p.type));
    stream->PutF("draw=\"%s\" ", flag(p.draw));
  }
  stream->PutF("size=\"%d\" ", p.size);
  stream->PutF("sort=\"%s\" ", getSortType(p.sortType));
  stream->PutF("key=\"%s\" ", flag(p.key));
  stream->PutF("abbr=\"%s\" ", t.abbreviation);
  stream->PutF("desc=\"%s\">", t.description);
  stream->PutS(t.label);
  stream->PutS("</PROPERTY>\n");
}

void TableMetaData::renderPropertyMetaDataJSON(utility::PutStream *stream, int column,
                                               bool numeric, LocaleCode locale) {
  const PropertyMetaData &p = properties[column];
  const Texts t = textsOf(p, tableId, locale);
  if (numeric) {
    stream->PutF("    new APIProp({name:\"%s-numeric\",", t.name);
    stream->PutF("value:\"%s\",", t.label);
    stream->PutS("type:\"uint32\",");
    stream->PutF("size:\"%d\",", p.size);
    stream->PutS("draw:\"false\",");
    stream->PutS("sort:\"false\",");
    stream->PutS("sortType:\"integer\",");
  } else {
    stream->PutF("    new APIProp({name:\"%s\",", t.name);
    stream->PutF("value:\"%s\",", t.label);
    stream->PutF("type:\"%s\",", getDataTypeStr(p.type));
    stream->PutF("size:\"%d\",", p.size);
    stream->PutF("draw:\"%s\",", flag(p.draw));
    stream->PutF("sort:\"%s\",", flag(p.sort));
    stream->PutF("sortType:\"%s\",", getSortType(p.sortType));
  }
  stream->PutF("key:\"%s\",", flag(p.key));
  stream->PutF("abbr:\"%s\",", t.abbreviation);
  stream->PutF("desc:\"%s\"})", t.description);
}

void TableMetaData::renderMetaData(utility::PutStream *stream,
                                   services::user::Preferences::OutputType type, int oid,
                                   LocaleCode locale) {
  const Family family = familyOf(type);
  if (family == Family::None)
    return;
  const char *keyword = qel_detail::text(strings::GS.toString(tableId));
  if (family == Family::Xml) {
    char lower[256];
    strcpyAssert(lower, keyword, sizeof lower);
    stream->PutF("<OBJECT name=\"title\" basetype=\"%s\">\n", strlwr(lower));
  } else if (family == Family::Json) {
    char name[80];
    strcpyAssert(name, keyword, sizeof name);
    stream->PutF("  new API%s([\n", toJson(name));
  }
  // Nested-table properties at the end are left out; others are skipped.
  int n = numColumns;
  while (n > 0 && properties[n - 1].type == COLTYPE_QEL)
    --n;
  for (int i = 0; i < n; ++i) {
    const PropertyMetaData &p = properties[i];
    if (p.type == COLTYPE_QEL)
      continue;
    const bool companion = hasCompanion(p.type);
    if (family == Family::Json) {
      renderPropertyMetaDataJSON(stream, i, false, locale);
      if (companion) {
        stream->PutS(",\n");
        renderPropertyMetaDataJSON(stream, i, true, locale);
      }
      if (i < n - 1)
        stream->PutS(",\n");
    } else {
      renderPropertyMetaDataXML(stream, i, false, locale);
      if (companion)
        renderPropertyMetaDataXML(stream, i, true, locale);
    }
  }
  if (family == Family::Xml)
    stream->PutS("</OBJECT>\n");
  else if (family == Family::Json)
    stream->PutF("\n    ], {basetype:\"%s\",name:\"meta\",oid:\"%d\",primaryKey:\"%s\","
                 "parentBasetype:\"%s\",parentKeyProp:\"%s\"})",
                 keyword, oid, qel_detail::text(primaryKey), qel_detail::text(parentBasetype),
                 qel_detail::text(parentKeyProp));
}

int TableMetaDataManager::renderMetaData(utility::PutStream *stream,
                                         services::user::Preferences::OutputType type,
                                         const char *which) {
  return renderMetaData(stream, type, which, getLocale());
}

int TableMetaDataManager::renderMetaData(utility::PutStream *stream,
                                         services::user::Preferences::OutputType type,
                                         const char *which, LocaleCode locale) {
  const Family family = familyOf(type);
  if (family == Family::Xml)
    stream->PutS("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<RESPONSE>\n");
  else if (family == Family::Json)
    stream->PutS("new APIData([");

  int rendered = 0;
  auto render = [&](TableMetaData *table, int oid) {
    if (family == Family::Json)
      stream->PutS(rendered == 0 ? "\n" : ",\n");
    table->renderMetaData(stream, type, oid, locale);
    ++rendered;
  };

  const bool all = !which || strcasecmp(which, "all") == 0;
  const bool wbi = which && strcasecmp(which, "wbi") == 0;
  if (all || wbi) {
    // Slot order: the indexed slots, then the basetypes kept in overflow
    // slots; the oid is the slot number.
    for (int slot = 0; slot < kSlots; ++slot) {
      TableMetaData *table = tables[slot];
      if (table && (all || table->isWBI()))
        render(table, slot);
    }
  } else {
    // One name, or names separated by commas, taken as they stand: a blank
    // or an empty name is an unknown name, skipped without a message.
    const bool list = std::strchr(which, ',') != nullptr;
    std::string names(which);
    std::size_t start = 0;
    for (;;) {
      std::size_t comma = names.find(',', start);
      std::string name = names.substr(start, comma == std::string::npos ? std::string::npos
                                                                        : comma - start);
      if (TableMetaData *table = getTable(strings::GS.toToken(name.c_str())))
        render(table, list ? rendered : 0);
      if (comma == std::string::npos)
        break;
      start = comma + 1;
    }
  }

  if (family == Family::Xml)
    stream->PutS("</RESPONSE>\n");
  else if (family == Family::Json)
    stream->PutS("\n])\n");
  return 0;
}

int cli_metaHandler(services::user::Session *session, const char *which) {
  if (!session)
    return 0;
  const services::user::Preferences &prefs = session->getPreferences();
  const LocaleCode locale = prefs.getLocale();
  utility::PutStream &stream = session->getOutputStream();
  stream.setSilentTruncation(true);
  // The locale travels with the call: other threads change the registry's
  // current locale at any time.
  return TableMetaDataManager::getTableMetaDataManager(locale)->renderMetaData(
      &stream, prefs.getOutputFormat(), which, locale);
}
