# What "cmake --install" puts where. install_places.cmake has the places.

install(TARGETS quill quill-book RUNTIME DESTINATION ${bin_dir})
install(FILES ${PROJECT_BINARY_DIR}/quill.bbk data/modern.ini DESTINATION ${data_dir})
install(FILES data/modern.ini DESTINATION ${settings_dir} RENAME quill.ini)

if(QUILL_ONE_FOLDER)
  install(FILES LICENSE DESTINATION . RENAME LICENSE.txt)
  install(FILES packaging/README.txt DESTINATION .)
  return()
endif()

# The manual pages are compressed as the system has its own; without gzip they stay as they are.
find_program(GZIP_PROGRAM gzip)
set(manual_pages "")
foreach(page quill.6 quill-book.1)
  set(source ${PROJECT_SOURCE_DIR}/docs/man/${page})
  set(installed ${source})
  if(GZIP_PROGRAM)
    set(installed ${PROJECT_BINARY_DIR}/${page}.gz)
    add_custom_command(OUTPUT ${installed}
      COMMAND ${GZIP_PROGRAM} -9nc ${source} > ${installed}
      DEPENDS ${source} VERBATIM)
  endif()
  list(APPEND manual_pages ${installed})
  string(REGEX MATCH "[0-9]$" section ${page})
  install(FILES ${installed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
add_custom_target(manual_pages ALL DEPENDS ${manual_pages})

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN man EXCLUDE)

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/package.cmake)
endif()
