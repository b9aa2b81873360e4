# Installs the build tree into a scratch prefix, then builds and runs the
# consumer program twice: through find_package(qel) and through pkg-config;
# then the README's example (EXAMPLE, examples/hello.cpp) through
# pkg-config, which must print its table and log nothing.
# Arguments: BUILD_DIR, SOURCE_DIR, WORK_DIR, GENERATOR, EXAMPLE.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}")
  endif()
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/cmake-build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
file(GLOB libdirs LIST_DIRECTORIES true ${prefix}/lib*)
set(ENV{LD_LIBRARY_PATH} "${prefix}/lib:${prefix}/lib64")
run(${WORK_DIR}/cmake-build/consumer)

file(GLOB_RECURSE pcfile ${prefix}/*/qel.pc)
get_filename_component(pcdir "${pcfile}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND pkg-config --cflags --libs qel
  OUTPUT_VARIABLE flags RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not find qel")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
# The headers compile clean with the consumer's strictest usual warnings.
run(c++ -std=c++17 -Wall -Wextra -pedantic -Werror ${SOURCE_DIR}/main.cpp ${flags}
    -o ${WORK_DIR}/consumer-pc)
run(${WORK_DIR}/consumer-pc)

run(c++ -std=c++17 ${EXAMPLE} ${flags} -o ${WORK_DIR}/hello)
execute_process(COMMAND ${WORK_DIR}/hello
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT err STREQUAL ""
   OR NOT out MATCHES "vol-b  00C0FF0A000000000000000000000002\n"
   OR NOT out MATCHES "<PROPERTY name=\"volume-name\"[^>]*>vol-b</PROPERTY>")
  message(FATAL_ERROR "examples/hello.cpp: exit ${rc}\nstdout:\n${out}\nstderr:\n${err}")
endif()

# The README shows the same program.
get_filename_component(source_root ${EXAMPLE} DIRECTORY)
file(READ ${EXAMPLE} example_text)
file(READ ${source_root}/../README.md readme_text)
string(FIND "${readme_text}" "${example_text}" at)
if(at EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/hello.cpp as it is")
endif()
