# How every target of this project is compiled, and helpers for tests, fuzz targets and benchmarks.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_package(Threads REQUIRED)
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("#include <atomic>
std::atomic<unsigned long long> number;
std::atomic<unsigned> word;
int main() { return ++number == 1 && word.is_lock_free() ? 0 : 1; }" ZELTO_ATOMICS_ARE_BUILT_IN)

add_library(zelto_build_flags INTERFACE)
target_compile_options(zelto_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 warns of overlapping copies inside its own std::string when it optimises (bug 105651).
  target_compile_options(zelto_build_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(NOT ZELTO_ATOMICS_ARE_BUILT_IN)
  target_link_libraries(zelto_build_flags INTERFACE atomic)
endif()
# Files beyond 2 GiB and times beyond 2038 on 32-bit hosts too.
target_compile_definitions(zelto_build_flags INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
include(ZeltoHardening)
if(WIN32)
  # Found first, so that the system's own headers stand in the contract's place.
  target_include_directories(zelto_build_flags INTERFACE
    "${PROJECT_SOURCE_DIR}/platform/coredll/windows/contract")
endif()
target_include_directories(zelto_build_flags INTERFACE "${PROJECT_SOURCE_DIR}")
if(ZELTO_SANITIZE)
  target_compile_options(zelto_build_flags INTERFACE
    -fsanitize=${ZELTO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zelto_build_flags INTERFACE -fsanitize=${ZELTO_SANITIZE})
endif()
if(ZELTO_LIBFUZZER)
  # All code reports its coverage, not the targets alone: it is what guides the fuzzer.
  target_compile_options(zelto_build_flags INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(zelto_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

set(zelto_time_limit 60)  # s, for one test; an emulated processor is slower
if(CMAKE_CROSSCOMPILING)
  set(zelto_time_limit 300)
endif()

# zelto_add_test(name SOURCES a.cpp ... LIBS lib ...): one test program; its cases are discovered,
# each runs in a process of its own with a time limit.
function(zelto_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE zelto_build_flags ${ARG_LIBS} GTest::gtest_main)
  gtest_discover_tests(${name} PROPERTIES TIMEOUT ${zelto_time_limit} DISCOVERY_TIMEOUT 60)
  add_dependencies(zelto_tests ${name})
endfunction()

# zelto_started_by_others(name...): programs that tests and scripts start by their path. Built for
# another machine, each gets a launcher in its place that starts the emulator with it.
function(zelto_started_by_others)
  if(NOT CMAKE_CROSSCOMPILING OR NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
  endif()
  foreach(name ${ARGN})
    add_custom_command(TARGET ${name} POST_BUILD
      COMMAND "${CMAKE_COMMAND}" "-DPROGRAM=$<TARGET_FILE:${name}>"
              "-DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
              -P "${PROJECT_SOURCE_DIR}/cmake/MakeLauncher.cmake" VERBATIM)
  endforeach()
endfunction()

# zelto_add_fuzz(name LIBS lib ...): the fuzz target of name_fuzz.cpp, for libFuzzer, or run once
# over every file of the folder name_corpus as an ordinary test.
add_custom_target(zelto_fuzz)
function(zelto_add_fuzz name)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  set(program ${name}_fuzz)
  add_executable(${program} ${program}.cpp)
  target_link_libraries(${program} PRIVATE zelto_build_flags ${ARG_LIBS})
  add_dependencies(zelto_fuzz ${program})
  if(ZELTO_LIBFUZZER)
    target_link_options(${program} PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(${program} PRIVATE "${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp")
    add_test(NAME ${program}.corpus
      COMMAND ${program} "${CMAKE_CURRENT_SOURCE_DIR}/${name}_corpus")
    set_tests_properties(${program}.corpus PROPERTIES TIMEOUT ${zelto_time_limit})
  endif()
endfunction()

# zelto_add_bench(name SOURCES a.cpp ... LIBS lib ...): one Google Benchmark program.
function(zelto_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE zelto_build_flags ${ARG_LIBS} benchmark::benchmark_main)
  add_dependencies(zelto_bench ${name})
endfunction()
