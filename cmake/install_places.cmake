# Where an installed quill has its parts. A place is a path from the prefix, or an absolute one if
# it lies outside the prefix: the settings are in /etc for the prefix /usr.
#
# The program finds its settings and its book from its own folder, so that an installed tree can be
# moved as a whole: QUILL_SETTINGS_DIR and QUILL_DATA_DIR are paths from there.

include(GNUInstallDirs)

if(QUILL_ONE_FOLDER)
  set(bin_dir .)
  set(settings_dir .)
  set(data_dir .)
  set(QUILL_SETTINGS_DIR .)
  set(QUILL_DATA_DIR .)
else()
  set(bin_dir ${CMAKE_INSTALL_BINDIR})
  set(settings_dir ${CMAKE_INSTALL_FULL_SYSCONFDIR}/quill)
  set(data_dir ${CMAKE_INSTALL_FULL_DATADIR}/quill)
  cmake_path(RELATIVE_PATH settings_dir BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
    OUTPUT_VARIABLE QUILL_SETTINGS_DIR)
  cmake_path(RELATIVE_PATH data_dir BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
    OUTPUT_VARIABLE QUILL_DATA_DIR)
  # "cmake --install --prefix" moves only what has a path from the prefix.
  foreach(place settings_dir data_dir)
    cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX ${${place}} is_inside)
    if(is_inside)
      cmake_path(RELATIVE_PATH ${place} BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    endif()
  endforeach()
endif()
