# The flags that all targets share, and the functions that declare the targets.

find_package(Threads REQUIRED)

add_library(quill_flags INTERFACE)
target_include_directories(quill_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
# SSE2 is part of x86-64. POPCNT is the only instruction that a portable program uses beyond that,
# so that it runs on any processor that has it.
if(NOT QUILL_PORTABLE)
  target_compile_options(quill_flags INTERFACE -march=native)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  target_compile_options(quill_flags INTERFACE -mpopcnt)
endif()
target_compile_options(quill_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)
target_link_libraries(quill_flags INTERFACE Threads::Threads)
if(QUILL_STATIC)
  target_link_options(quill_flags INTERFACE -static)
endif()
if(QUILL_SANITIZE)
  target_compile_options(quill_flags INTERFACE
    -fsanitize=${QUILL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quill_flags INTERFACE -fsanitize=${QUILL_SANITIZE})
endif()

if(QUILL_FUZZ)
  target_compile_options(quill_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# A release is the same wherever it is built: its programs name no folder of the machine.
target_compile_options(quill_flags INTERFACE $<$<CONFIG:Release>:
  -ffile-prefix-map=${PROJECT_BINARY_DIR}=. -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)

# scripts/release uses these two, with g++. The record lies beside the object files. It counts
# branches only: values would bring the addresses of one run into it.
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ${QUILL_LTO})
if(QUILL_PROFILE STREQUAL "generate")
  target_compile_options(quill_flags INTERFACE -fprofile-generate -fno-profile-values)
  target_link_options(quill_flags INTERFACE -fprofile-generate)
elseif(QUILL_PROFILE STREQUAL "use")
  # There is none of what a training run does not link: quill-book.
  target_compile_options(quill_flags INTERFACE
    -fprofile-use -fno-profile-values -Wno-missing-profile)
elseif(QUILL_PROFILE)
  message(FATAL_ERROR "QUILL_PROFILE is neither generate nor use: ${QUILL_PROFILE}")
endif()

# quill_library(NAME SOURCES file... [LINK library...]): a library of the engine. A file can be a
# pattern, such as board/*.cpp.
function(quill_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  file(GLOB sources CONFIGURE_DEPENDS ${arg_SOURCES})
  add_library(${name} STATIC ${sources})
  target_compile_options(${name} PRIVATE -fno-exceptions)
  target_link_libraries(${name} PUBLIC quill_flags ${arg_LINK})
endfunction()

# quill_tests(FOLDER library...): the program FOLDER_tests, made from the files of tests/FOLDER.
# ctest runs its tests one by one; those of a suite whose name ends in "Slow" have the label slow.
function(quill_tests folder)
  file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
  set(program ${folder}_tests)
  add_executable(${program} ${sources})
  # Compiling the tests takes most of a build. The code that they test is in the libraries, which
  # are fully optimised.
  target_compile_options(${program} PRIVATE $<$<CONFIG:Release>:-O1>)
  # g++ sees uninitialised variables in the standard library's <regex> where a sanitizer is on.
  if(QUILL_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${program} PRIVATE -Wno-maybe-uninitialized)
  endif()
  target_link_libraries(${program} PRIVATE quill_test_support ${ARGN})
  # GoogleTest's headers take longer than most tests: they are compiled once for all programs.
  if(TARGET platform_tests AND NOT program STREQUAL "platform_tests")
    target_precompile_headers(${program} REUSE_FROM platform_tests)
  else()
    target_precompile_headers(${program} PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  gtest_discover_tests(${program} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    TEST_FILTER "-*Slow.*" PROPERTIES TIMEOUT 600)
  gtest_discover_tests(${program} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    TEST_FILTER "*Slow.*" TEST_LIST ${program}_slow PROPERTIES LABELS slow TIMEOUT 1800)
endfunction()

# quill_benchmark(NAME library...): the program bench_NAME, made from bench/NAME.cpp. ctest runs it
# for a moment, to see that it works.
function(quill_benchmark name)
  set(program bench_${name})
  add_executable(${program} ${name}.cpp)
  target_link_libraries(${program} PRIVATE quill_flags benchmark::benchmark_main ${ARGN})
  add_test(NAME ${program}_smoke COMMAND ${program} --benchmark_min_time=0.001)
  set_tests_properties(${program}_smoke PROPERTIES LABELS bench TIMEOUT 600)
endfunction()

# quill_can_build(RESULT WISH WHAT target...): sets RESULT to whether all the targets that WHAT
# needs are found. Looks for their packages; a package's name is what stands before the "::". With
# the wish AUTO a missing target is reported and nothing more; with ON it is an error.
function(quill_can_build result wish what)
  set(missing "")
  foreach(target ${ARGN})
    string(REGEX REPLACE "::.*" "" package ${target})
    find_package(${package} QUIET)
    if(NOT TARGET ${target})
      list(APPEND missing ${target})
    endif()
  endforeach()
  if(missing)
    list(JOIN missing ", " missing)
    if(NOT wish STREQUAL "AUTO")
      message(FATAL_ERROR "${what} can't be built: ${missing} not found")
    endif()
    message(STATUS "${what} are left out: ${missing} not found")
    set(${result} FALSE PARENT_SCOPE)
  else()
    set(${result} TRUE PARENT_SCOPE)
  endif()
endfunction()
