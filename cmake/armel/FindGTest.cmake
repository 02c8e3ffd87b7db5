# Built from the sources of Debian's package, with the target's compiler.
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
foreach(name gtest gtest_main gmock gmock_main)
  if(NOT TARGET GTest::${name})
    add_library(GTest::${name} ALIAS ${name})
  endif()
endforeach()
