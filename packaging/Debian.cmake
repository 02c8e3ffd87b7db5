# Debian packages by CPack: library, development, tools and the Python module.
# `cpack --config BUILD/CPackConfig.cmake` in a build with CMAKE_INSTALL_PREFIX=/usr makes them;
# scripts/release does.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL library development tools python)
set(CPACK_PACKAGE_VENDOR "The ZeltoPORT authors")
set(CPACK_PACKAGE_CONTACT "The ZeltoPORT authors <maintainers@zeltoport.example.org>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)

# describe_package(COMPONENT PACKAGE SECTION TEXT DEPENDS): its control file, and the documents that
# every package has.
macro(describe_package component package section text depends)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${key}_DESCRIPTION "${text}")
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}")
  install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/copyright"
    DESTINATION "share/doc/${package}" COMPONENT ${component})
  install_compressed("${PROJECT_SOURCE_DIR}/CHANGELOG.md" changelog "share/doc/${package}"
    ${component})
  set(package_name ${package})
  configure_file(changelog.Debian.in ${package}.changelog @ONLY)
  install_compressed("${CMAKE_CURRENT_BINARY_DIR}/${package}.changelog" changelog.Debian
    "share/doc/${package}" ${component})
endmacro()

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
string(TIMESTAMP changed "%a, %d %b %Y %H:%M:%S +0000" UTC)  # that of SOURCE_DATE_EPOCH, if set
describe_package(library libzelto-port4 libs
"A client tells a navigator application to show itself, open a file, keep
waypoints, drive somewhere, follow a route or answer a question. This is the
shared library with its 26 exported functions." "")
describe_package(development libzelto-port-dev libdevel
"Header, CMake package and pkg-config file of the ZeltoPORT library, through
which one program remotely controls a navigator application, with its manuals."
"libzelto-port4 ${same_version}")
describe_package(tools zeltoport utils
"The program zeltoport makes calls of the ZeltoPORT library from the command
line; zelto-navigator stands in for the navigator while a client is developed."
"libzelto-port4 ${same_version}")
describe_package(python python3-zeltoport python
"A module over the ZeltoPORT library, with a pytest fixture that gives each
test a device and a navigator of its own." "libzelto-port4 ${same_version}, python3:any")

set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)  # whatever the sources have
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_SOURCE_DIR}/triggers")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/plugins/zelto_port_dll")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/python/zeltoport" DESTINATION lib/python3/dist-packages
  COMPONENT python FILES_MATCHING PATTERN "*.py")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs/" DESTINATION share/doc/libzelto-port-dev
  COMPONENT development FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION share/doc/libzelto-port-dev
  COMPONENT development PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE)

include(CPack)
