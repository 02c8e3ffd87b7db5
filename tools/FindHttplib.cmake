# Sets ZELTO_HAS_HTTPLIB and makes the target zelto_httplib where cpp-httplib can be compiled and
# linked, as a library with pkg-config, else as headers alone.
include(CheckCXXSourceCompiles)
add_library(zelto_httplib INTERFACE)
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(CPP_HTTPLIB QUIET IMPORTED_TARGET cpp-httplib)
endif()
target_link_libraries(zelto_httplib INTERFACE Threads::Threads
  $<$<BOOL:${CPP_HTTPLIB_FOUND}>:PkgConfig::CPP_HTTPLIB>)
set(CMAKE_REQUIRED_LIBRARIES Threads::Threads)
if(CPP_HTTPLIB_FOUND)
  list(APPEND CMAKE_REQUIRED_LIBRARIES PkgConfig::CPP_HTTPLIB)
endif()
check_cxx_source_compiles("#include <httplib.h>
int main() { httplib::Server server; return server.is_running(); }" ZELTO_HAS_HTTPLIB)
unset(CMAKE_REQUIRED_LIBRARIES)
