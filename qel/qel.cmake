# The library proper: descriptor API, renderers, metadata, dictionary and
# the output service.

install(FILES ${CMAKE_CURRENT_LIST_DIR}/qel.h DESTINATION ${QEL_HEADER_DIR}/qel)
