# zelto_host_headers(TARGET FOLDER [DEFINITION...]): a library of headers alone, which the host's
# package serves as well. It is reached through a folder that has nothing else of the host.
function(zelto_host_headers target folder)
  if(TARGET ${target})
    return()
  endif()
  set(headers "${PROJECT_BINARY_DIR}/host-headers")
  file(MAKE_DIRECTORY "${headers}")
  file(CREATE_LINK "/usr/include/${folder}" "${headers}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} INTERFACE "${headers}")
  target_compile_definitions(${target} INTERFACE ${ARGN})
endfunction()
