# qel_generate(OUTPUTS <files...> SCRIPT <tools/x.py> INPUTS <files...> [ARGS <args...>])
#
# Runs a Python generator at build time. The rule depends on the generator,
# the shared generator library and every input, so editing any of them
# regenerates; generators rewrite only the outputs whose text changed.
function(qel_generate)
  cmake_parse_arguments(G "" "SCRIPT" "OUTPUTS;INPUTS;ARGS" ${ARGN})
  add_custom_command(
    OUTPUT ${G_OUTPUTS}
    COMMAND Python3::Interpreter ${G_SCRIPT} ${G_ARGS}
    DEPENDS ${G_SCRIPT} ${PROJECT_SOURCE_DIR}/tools/genlib.py ${G_INPUTS}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Generating ${G_OUTPUTS}"
    VERBATIM)
endfunction()
