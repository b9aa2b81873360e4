# The library proper: descriptor API, renderers, metadata, dictionary and
# the output service.

set(Q ${CMAKE_CURRENT_LIST_DIR})
set(QGEN ${QEL_GEN_DIR}/qel)

# Field-name dictionary: one generated source per locale, plus the builders.
set(DICT ${Q}/fieldnames/dictionary)
set(DICT_LOCALES en es fr de it jp nl zh_chs zh_cht ko)
set(DICT_INPUTS ${PROJECT_SOURCE_DIR}/platform/keywords.txt ${DICT}/basetypes.txt ${DICT}/elements.txt)
set(DICT_OUTPUTS ${QGEN}/fieldnames/field_name_arrays.h ${QGEN}/fieldnames/field_names_init.cpp)
foreach(loc ${DICT_LOCALES})
  list(APPEND DICT_INPUTS ${DICT}/${loc}.txt)
  list(APPEND DICT_OUTPUTS ${QGEN}/fieldnames/field_names_${loc}.cpp)
endforeach()
qel_generate(
  OUTPUTS ${DICT_OUTPUTS}
  SCRIPT tools/gen_dictionary.py
  INPUTS ${DICT_INPUTS} ${PROJECT_SOURCE_DIR}/platform/decoders.txt
         ${Q}/metadata/catalogue.txt ${Q}/metadata/registrations.txt
         ${PROJECT_SOURCE_DIR}/tools/gen_catalogue.py ${PROJECT_SOURCE_DIR}/tools/gen_decoders.py
  ARGS platform/keywords.txt qel/fieldnames/dictionary ${QGEN}/fieldnames
       platform/decoders.txt qel/metadata/catalogue.txt qel/metadata/registrations.txt)

# Table catalogue.
set(CAT ${Q}/metadata)
set(CAT_OUTPUTS ${QGEN}/metadata/catalogue_arrays.h ${QGEN}/metadata/catalogue.cpp)
qel_generate(
  OUTPUTS ${CAT_OUTPUTS}
  SCRIPT tools/gen_catalogue.py
  INPUTS ${PROJECT_SOURCE_DIR}/platform/keywords.txt ${PROJECT_SOURCE_DIR}/platform/decoders.txt
         ${CAT}/catalogue.txt ${CAT}/registrations.txt ${PROJECT_SOURCE_DIR}/tools/gen_decoders.py
  ARGS platform/keywords.txt platform/decoders.txt qel/metadata/catalogue.txt
       qel/metadata/registrations.txt ${CAT_OUTPUTS})

qel_objects(qel_objects
  ${Q}/cli_qel.cpp
  ${Q}/cli_qel_data.cpp
  ${Q}/fieldnames/fieldnames.cpp
  ${Q}/metadata/library_decoders.cpp
  ${Q}/metadata/meta_data_db.cpp
  ${Q}/metadata/meta_data_render.cpp
  ${Q}/service/qel_Qel.cpp
  ${Q}/renderers/renderer.cpp
  ${Q}/renderers/cli_ConsoleRenderer.cpp
  ${Q}/renderers/cli_XMLRenderer.cpp
  ${Q}/renderers/cli_TagRenderer.cpp
  ${Q}/renderers/cli_JSONRenderer.cpp
  ${Q}/renderers/cli_StdJSONRenderer.cpp
  ${Q}/renderers/cli_CSVRenderer.cpp
  ${Q}/renderers/cli_HTMLRenderer.cpp
  ${DICT_OUTPUTS}
  ${CAT_OUTPUTS})

# The public headers: the descriptor API, the registry, the dictionary's
# lookups and the service. Renderers and generated data stay inside.
install(FILES ${Q}/qel.h ${Q}/cli_qel.h DESTINATION ${QEL_HEADER_DIR})
install(FILES ${Q}/service/qel_Qel.h DESTINATION ${QEL_HEADER_DIR}/service)
install(FILES ${Q}/metadata/meta_data_db.h DESTINATION ${QEL_HEADER_DIR}/metadata)
install(FILES ${Q}/fieldnames/fieldnames.h DESTINATION ${QEL_HEADER_DIR}/fieldnames)
