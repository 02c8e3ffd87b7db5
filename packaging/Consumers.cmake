# find_package and pkg-config: both follow the installed tree when it is moved, and both find the
# library in the build tree by -DZeltoPORT_DIR=BUILD or PKG_CONFIG_PATH=BUILD.
set(config_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZeltoPORT")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

foreach(file IN ITEMS ZeltoPORTConfig.cmake ZeltoAddClientTest.cmake)
  configure_file(${file} "${PROJECT_BINARY_DIR}/${file}" COPYONLY)
endforeach()
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZeltoPORTConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
export(EXPORT ZeltoPORTTargets NAMESPACE ZeltoPORT::
  FILE "${PROJECT_BINARY_DIR}/ZeltoPORTTargets.cmake")
install(EXPORT ZeltoPORTTargets NAMESPACE ZeltoPORT:: DESTINATION "${config_dir}"
  COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/ZeltoPORTConfig.cmake"
              "${PROJECT_BINARY_DIR}/ZeltoAddClientTest.cmake"
              "${PROJECT_BINARY_DIR}/ZeltoPORTConfigVersion.cmake"
  DESTINATION "${config_dir}" COMPONENT development)

# write_pkgconfig(FILE PREFIX LIBDIR INCLUDEDIR RPATH)
function(write_pkgconfig file prefix libdir includedir rpath)
  configure_file(zelto_port.pc.in "${file}" @ONLY)
endfunction()

file(RELATIVE_PATH up "/${pkgconfig_dir}" "/")
string(REGEX REPLACE "/$" "" up "${up}")
write_pkgconfig("${CMAKE_CURRENT_BINARY_DIR}/zelto_port.pc" "\${pcfiledir}/${up}"
  "\${prefix}/${CMAKE_INSTALL_LIBDIR}" "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}" "")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zelto_port.pc"
  DESTINATION "${pkgconfig_dir}" COMPONENT development)
write_pkgconfig("${PROJECT_BINARY_DIR}/zelto_port-uninstalled.pc" "\${pcfiledir}"
  "\${prefix}/plugins/zelto_port_dll" "${PROJECT_SOURCE_DIR}/plugins/zelto_port_dll"
  "-Wl,-rpath,\${libdir} ")
