# The libraries of the tests for a foreign system, for which Debian has no packages: GoogleTest from
# its sources, and the header of the JSON library apart from the other headers of this system. What
# is not installed stays missing.
set(googletest_sources /usr/src/googletest)
if(EXISTS ${googletest_sources}/CMakeLists.txt)
  set(INSTALL_GTEST OFF)
  add_subdirectory(${googletest_sources} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()

set(json_headers /usr/include/nlohmann)
if(EXISTS ${json_headers})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include)
  file(CREATE_LINK ${json_headers} ${PROJECT_BINARY_DIR}/include/nlohmann SYMBOLIC)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE
    ${PROJECT_BINARY_DIR}/include)
endif()
