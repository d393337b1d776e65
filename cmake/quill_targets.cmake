# The flags that every target of the project shares, and the helpers that
# declare a library, a test program or a benchmark from the files of one folder.

find_package(Threads REQUIRED)

add_library(quill_flags INTERFACE)
target_include_directories(quill_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
# SSE2 is part of x86-64; POPCNT is the one instruction asked for beyond it.
# Nothing newer is assumed, so that a binary runs on any such processor.
target_compile_options(quill_flags INTERFACE
  -mpopcnt
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror
  $<$<CONFIG:Release>:-O3 -fno-plt>)
target_link_libraries(quill_flags INTERFACE Threads::Threads)
if(QUILL_SANITIZE)
  target_compile_options(quill_flags INTERFACE
    -fsanitize=${QUILL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_link_options(quill_flags INTERFACE -fsanitize=${QUILL_SANITIZE})
endif()

# quill_library(name [dependency ...]): a static library of all sources in this folder.
function(quill_library name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE quill_flags ${ARGN})
    return()
  endif()
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_compile_options(${name} PRIVATE -fno-exceptions)
  target_link_libraries(${name} PUBLIC quill_flags ${ARGN})
endfunction()

# quill_tests(folder library ...): one test program for tests/<folder>, each of
# its tests known to ctest; suites whose name ends in "Slow" carry the label slow.
function(quill_tests folder)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  set(program ${folder}_tests)
  add_executable(${program} ${sources})
  target_link_libraries(${program} PRIVATE quill_test_support ${ARGN})
  gtest_discover_tests(${program} DISCOVERY_MODE PRE_TEST
    TEST_FILTER "-*Slow.*" PROPERTIES TIMEOUT 600)
  gtest_discover_tests(${program} DISCOVERY_MODE PRE_TEST
    TEST_LIST ${program}_slow TEST_FILTER "*Slow.*" PROPERTIES LABELS slow TIMEOUT 1800)
endfunction()

# quill_benchmark(name library ...): bench/<name>.cpp, run briefly by ctest as a smoke test.
function(quill_benchmark name)
  add_executable(bench_${name} ${name}.cpp)
  target_link_libraries(bench_${name} PRIVATE quill_flags ${ARGN} benchmark::benchmark benchmark::benchmark_main)
  if(QUILL_BUILD_TESTS)
    add_test(NAME bench_${name}_smoke COMMAND bench_${name} --benchmark_min_time=0.001)
    set_tests_properties(bench_${name}_smoke PROPERTIES LABELS bench TIMEOUT 600)
  endif()
endfunction()
