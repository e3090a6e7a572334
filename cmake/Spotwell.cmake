# Compiler settings shared by every target, and the two helpers the folders use.

add_library(spotwell_options INTERFACE)
target_compile_options(spotwell_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-qual -Wformat=2 -Wundef -Werror)
target_compile_definitions(spotwell_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(spotwell_options INTERFACE ${PROJECT_SOURCE_DIR})
if(CMAKE_UNITY_BUILD)
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
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# spotwell_library(NAME SOURCES ... LINK ...): one library per folder.
function(spotwell_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC spotwell_options ${ARG_LINK})
endfunction()

# spotwell_test(NAME SOURCES ... LINK ... [SUPPRESSIONS file]): one GoogleTest program, each of its tests known to CTest.
# SUPPRESSIONS are ThreadSanitizer's, tests/tsan.supp by default.
function(spotwell_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT;SUPPRESSIONS" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(NOT ARG_SUPPRESSIONS)
    set(ARG_SUPPRESSIONS ${PROJECT_SOURCE_DIR}/tests/tsan.supp)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE spotwell_options ${ARG_LINK} GTest::gtest Threads::Threads)
  if(SPOTWELL_SANITIZE MATCHES "address")
    set(suppressions ${PROJECT_SOURCE_DIR}/tests/LeakSuppressions.cpp)
    target_sources(${name} PRIVATE ${suppressions})
    set_source_files_properties(${suppressions} TARGET_DIRECTORY ${name} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  endif()
  # One variable is all that the discovered tests' environment can hold.
  gtest_discover_tests(${name}
    TEST_PREFIX "${name}."
    DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "TSAN_OPTIONS=suppressions=${ARG_SUPPRESSIONS}")
endfunction()
