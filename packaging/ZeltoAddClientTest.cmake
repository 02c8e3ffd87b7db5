# zelto_add_client_test(NAME [SCRIPT file] [FAULT name] [TIME_SCALE n] COMMAND program [argument...])
#
# Adds a test that runs a client on a device of its own, where a navigator is ready, and passes when
# the client ends with 0 and, with a script, the navigator was asked just what it says. The program
# is a target or a path. A relative script is one of the current source folder. Once for each fault
# in place of one run: COMMAND zeltoport torture -- program, by add_test.
function(zelto_add_client_test name)
  cmake_parse_arguments(PARSE_ARGV 1 client "" "SCRIPT;FAULT;TIME_SCALE" "COMMAND")
  if(NOT client_COMMAND OR client_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zelto_add_client_test(${name}): NAME [SCRIPT file] [FAULT name] "
      "[TIME_SCALE n] COMMAND program [argument...]")
  endif()
  if(TARGET zeltoport)
    set(zeltoport "$<TARGET_FILE:zeltoport>")
  else()
    find_program(ZELTOPORT_PROGRAM zeltoport
      HINTS "${ZeltoPORT_DIR}/../../../bin" "${ZeltoPORT_DIR}/../../../../bin"
            "${ZeltoPORT_DIR}/tools/zeltoport" REQUIRED)
    set(zeltoport "${ZELTOPORT_PROGRAM}")
  endif()
  list(POP_FRONT client_COMMAND program)
  if(TARGET "${program}")
    set(program "$<TARGET_FILE:${program}>")
  endif()
  set(options "")
  if(client_SCRIPT)
    cmake_path(ABSOLUTE_PATH client_SCRIPT BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND options --script "${client_SCRIPT}")
  endif()
  if(client_FAULT)
    list(APPEND options --fault "${client_FAULT}")
  endif()
  if(client_TIME_SCALE)
    list(APPEND options --time-scale "${client_TIME_SCALE}")
  endif()
  add_test(NAME "${name}" COMMAND "${zeltoport}" run ${options} -- "${program}" ${client_COMMAND})
endfunction()
