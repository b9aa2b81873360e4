# The platform layer: our stand-in for the service framework, utility
# streams, keyword repository, user services and helpers.

set(GEN ${QEL_GEN_DIR}/qel/platform)
qel_generate(
  OUTPUTS ${GEN}/gs_tokens.h ${GEN}/gs_tokens.cpp
  SCRIPT tools/gen_keywords.py
  INPUTS ${CMAKE_CURRENT_LIST_DIR}/keywords.txt
  ARGS platform/keywords.txt ${GEN}/gs_tokens.h ${GEN}/gs_tokens.cpp)

qel_generate(
  OUTPUTS ${GEN}/decoders.h ${GEN}/decoders.cpp
  SCRIPT tools/gen_decoders.py
  INPUTS ${CMAKE_CURRENT_LIST_DIR}/decoders.txt
  ARGS platform/decoders.txt ${GEN}/decoders.h ${GEN}/decoders.cpp)

set(D ${CMAKE_CURRENT_LIST_DIR})
# framework.cpp is compiled twice: as is for the library, and with the test
# hooks for qel_testing.
qel_objects(qel_framework_objects ${D}/framework.cpp)
qel_objects(qel_platform_objects
  ${D}/decoder_support.cpp
  ${D}/debug.cpp
  ${D}/file_stream.cpp
  ${D}/helpers.cpp
  ${D}/keywords.cpp
  ${D}/locale.cpp
  ${D}/service.cpp
  ${D}/streams.cpp
  ${D}/user.cpp
  ${GEN}/gs_tokens.cpp
  ${GEN}/gs_tokens.h
  ${GEN}/decoders.cpp
  ${GEN}/decoders.h)

install(FILES
  ${D}/debug.h ${D}/export.h ${D}/framework.h ${D}/helpers.h ${D}/keywords.h
  ${D}/locale.h ${D}/service.h ${D}/streams.h ${D}/user.h
  ${GEN}/gs_tokens.h ${GEN}/decoders.h
  DESTINATION ${QEL_HEADER_DIR}/platform)
