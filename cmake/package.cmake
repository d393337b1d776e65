# The Debian package, made by CPack: cmake --build --preset package.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quill)
set(CPACK_PACKAGE_VENDOR "the quill authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for UCI chess programs")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${PROJECT_SOURCE_DIR}/packaging/debian/description)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
# The settings lie outside the prefix. With DESTDIR they go into the package all the same.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "the quill authors <maintainers@quill.example>")
# Not "games", whose programs lie in /usr/games: that is not on the PATH of root and of services.
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xboard | scid | pychess | gnome-chess, polyglot")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What only Debian wants: the licence and both lists of changes under its own names.
set(documents copyright changelog.gz changelog.Debian.gz)
set(sources LICENSE CHANGELOG.md packaging/debian/changelog)
foreach(document source IN ZIP_LISTS documents sources)
  set(source ${PROJECT_SOURCE_DIR}/${source})
  set(document ${PROJECT_BINARY_DIR}/debian/${document})
  set(command ${CMAKE_COMMAND} -E cat)
  if(document MATCHES "gz$")
    set(command gzip -9nc)
  endif()
  add_custom_command(OUTPUT ${document}
    COMMAND ${command} ${source} > ${document} DEPENDS ${source} VERBATIM)
  install(FILES ${document} DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT debian EXCLUDE_FROM_ALL)
  list(APPEND debian_documents ${document})
endforeach()
add_custom_target(debian_documents ALL DEPENDS ${debian_documents})
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${PROJECT_BINARY_DIR};quill;Unspecified;/" "${PROJECT_BINARY_DIR};quill;debian;/")

include(CPack)
