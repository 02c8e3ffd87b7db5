# Manual pages and completions, where there is a Python to make them. A sanitized program is not run
# while building.
find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_FOUND OR ZELTO_SANITIZE)
  return()
endif()
set(maker "${CMAKE_CURRENT_SOURCE_DIR}/make-manual.py")
set(manuals "${CMAKE_CURRENT_BINARY_DIR}/manuals")

# make_manual(NAME COMPONENT ARGUMENTS... DEPENDS what): runs the maker whenever `what` has changed.
function(make_manual name component)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_custom_command(OUTPUT "${manuals}/${name}.made"
    COMMAND "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=$<TARGET_FILE_DIR:zelto_port>"
            "${Python3_EXECUTABLE}" "${maker}" "${manuals}/${component}" ${ARG_UNPARSED_ARGUMENTS}
    COMMAND "${CMAKE_COMMAND}" -E touch "${manuals}/${name}.made"
    DEPENDS "${maker}" ${ARG_DEPENDS} VERBATIM)
  add_custom_target(zelto_manual_${name} ALL DEPENDS "${manuals}/${name}.made")
endfunction()

set(header "${PROJECT_SOURCE_DIR}/plugins/zelto_port_dll/zelto_port.h")
make_manual(library development library "${header}" DEPENDS "${header}")
# Pages of docs/ that have a manual, and the package that it is in: NAME.SECTION:FILE:COMPONENT.
set(documents zelto-protocol.7:protocol:development zelto-device.7:device-layer:development
    zelto-request.7:a-requests-way:development zelto-record-files.5:record-files:development
    zelto-registry.5:registry-format:development
    zelto-codepage-tables.5:codepage-tables:development zelto-workbench.7:workbench:tools
    zelto-scripts.7:scripts:tools zelto-picture.7:picture:tools zelto-positions.7:positions:tools)
foreach(document ${documents})
  string(REGEX MATCH "(.*)\\.([0-9]):(.*):(.*)" parts ${document})
  set(page "${PROJECT_SOURCE_DIR}/docs/${CMAKE_MATCH_3}.md")
  make_manual(${CMAKE_MATCH_1} ${CMAKE_MATCH_4} document "${page}" ${CMAKE_MATCH_1}
    ${CMAKE_MATCH_2} DEPENDS "${page}")
endforeach()
install(DIRECTORY "${manuals}/development/man/" DESTINATION "${CMAKE_INSTALL_MANDIR}"
  COMPONENT development)
if(ZELTO_BUILD_TOOLS)
  foreach(program zeltoport zelto-navigator)
    make_manual(${program} tools program "$<TARGET_FILE:${program}>" DEPENDS ${program})
  endforeach()
  install(DIRECTORY "${manuals}/tools/man/" DESTINATION "${CMAKE_INSTALL_MANDIR}" COMPONENT tools)
  install(DIRECTORY "${manuals}/tools/bash/" COMPONENT tools
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(DIRECTORY "${manuals}/tools/zsh/" COMPONENT tools
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions")
  install(DIRECTORY "${manuals}/tools/fish/" COMPONENT tools
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endif()
