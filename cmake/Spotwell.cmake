# SPDX-FileCopyrightText: 2026 the spotwell developers
# SPDX-License-Identifier: MIT

# Compiler settings shared by every target, and the two helpers the folders use.

add_library(spotwell_options INTERFACE)
target_compile_options(spotwell_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-qual -Wformat=2 -Wundef $<$<BOOL:${SPOTWELL_WERROR}>:-Werror>)
target_compile_definitions(spotwell_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(spotwell_options INTERFACE ${PROJECT_SOURCE_DIR})
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Several sources in one: a test's fixture in an anonymous namespace is then no longer a file's own, which is harmless.
  target_compile_options(spotwell_options INTERFACE -Wno-subobject-linkage)
endif()
if(SPOTWELL_SANITIZE)
  add_compile_options(-fsanitize=${SPOTWELL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${SPOTWELL_SANITIZE})
  if(SPOTWELL_SANITIZE MATCHES "thread")
    # std::atomic_thread_fence in Qt's headers is not modelled by the sanitizer.
    target_compile_options(spotwell_options INTERFACE -Wno-tsan)
  endif()
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # The sloppiness is what precompiled headers take to be remembered.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
endif()

# spotwell_library(NAME SOURCES ... LINK ...): one library per folder.
function(spotwell_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC spotwell_options ${ARG_LINK})
endfunction()

# spotwell_test(NAME [TOGETHER] [FIRST] SOURCES ... LINK ... [BUSY filter] [SUPPRESSIONS file]): one GoogleTest program,
# each of its tests known to CTest. TOGETHER they are one test to it, in one process: where they wait for nothing,
# starting a process for each takes longer than they do. FIRST, they begin before all others. Those that a BUSY filter
# names compute for as long as they take, so that fewer of them run side by side. SUPPRESSIONS are ThreadSanitizer's,
# tests/tsan.supp by default.
function(spotwell_test name)
  cmake_parse_arguments(ARG "TOGETHER;FIRST" "TIMEOUT;SUPPRESSIONS;BUSY" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  if(NOT ARG_SUPPRESSIONS)
    set(ARG_SUPPRESSIONS ${PROJECT_SOURCE_DIR}/tests/tsan.supp)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE spotwell_options ${ARG_LINK} GTest::gtest Threads::Threads)
  # The tests' own code is waited for when it is compiled, not when it runs: optimising it takes most of a build.
  target_compile_options(${name} PRIVATE -O0)
  if(CMAKE_UNITY_BUILD)
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    target_precompile_headers(${name} REUSE_FROM spotwell_test_headers)
  endif()
  if(SPOTWELL_SANITIZE MATCHES "undefined")
    # For the tests' own code these four take a third of the time to compile, and AddressSanitizer sees most of it.
    target_compile_options(${name} PRIVATE -fno-sanitize=null,alignment,object-size,vptr)
  endif()
  if(SPOTWELL_SANITIZE MATCHES "address")
    target_link_libraries(${name} PRIVATE spotwell_leak_suppressions)
  endif()
  # One variable is all that the discovered tests' environment can hold. Tests start processes while they have threads,
  # and further threads then, which is well since each such child becomes another program at once.
  set(environment "TSAN_OPTIONS=suppressions=${ARG_SUPPRESSIONS}:die_after_fork=0")
  if(ARG_TOGETHER)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} COST 500 ENVIRONMENT ${environment})
    return()
  endif()
  # Tests that wait for a whole program begin before the others, the longest first, so that nothing waits for them alone
  # in the end.
  set(cost 0)
  if(ARG_FIRST)
    set(cost 2000)
  elseif("${ARG_SOURCES}" MATCHES "RunningProgram")
    set(cost 1000)
  endif()
  set(properties TIMEOUT ${ARG_TIMEOUT} COST ${cost} ENVIRONMENT ${environment})
  if(ARG_BUSY)
    gtest_discover_tests(${name}
      TEST_PREFIX "${name}."
      TEST_LIST ${name}_busy
      TEST_FILTER "${ARG_BUSY}"
      DISCOVERY_MODE PRE_TEST
      PROPERTIES ${properties} PROCESSORS 5)
    set(others TEST_FILTER "-${ARG_BUSY}")
  endif()
  gtest_discover_tests(${name}
    TEST_PREFIX "${name}."
    ${others}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES ${properties})
endfunction()
