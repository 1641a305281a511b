# Install and package. `cmake --install` puts the programs, share/gorvan (the
# stylesheet, images, skins, help, tips), the desktop entry, the MIME package,
# the icon and the man pages in their freedesktop places; `make package`
# builds a .deb with CPack. Included after every program's add_subdirectory,
# so that `if(TARGET gorvan)` sees the desktop program once it exists.
include(GNUInstallDirs)

install(TARGETS gorvan-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set(gorvan_man_pages gorvan-cli.1)
if(TARGET gorvan)
  install(TARGETS gorvan RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  list(APPEND gorvan_man_pages gorvan.1)
  # The launcher and the catalog type's handler only come with the program they start.
  install(FILES packaging/gorvan.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
endif()

install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/gorvan PATTERN .gitkeep EXCLUDE)
install(FILES packaging/gorvan.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES share/images/gorvan.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

# Man pages are installed compressed, as Debian wants them.
set(gorvan_man_files)
foreach(page IN LISTS gorvan_man_pages)
  set(out ${PROJECT_BINARY_DIR}/man/${page})
  add_custom_command(OUTPUT ${out}.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/packaging/${page} ${out}
    COMMAND gzip -9nf ${out}
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/${page}
    VERBATIM)
  list(APPEND gorvan_man_files ${out}.gz)
endforeach()
add_custom_target(gorvan_man ALL DEPENDS ${gorvan_man_files})
install(FILES ${gorvan_man_files} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The Debian package. dpkg-shlibdeps finds the libraries the programs link;
# libarchive is loaded on first use (dlopen) and so is named by hand.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME gorvan)
set(CPACK_PACKAGE_VENDOR "Gorvan")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Catalog of removable media and folders")
set(CPACK_PACKAGE_DESCRIPTION
  "Gorvan records every folder and file of a CD, DVD, USB stick, disk or folder\n\
(names, sizes, dates, MP3 tags, archive members, audio CD track lists) in one\n\
catalog file, to be browsed, searched and exported later without the medium.\n\
It has a desktop program (gorvan) and a command line (gorvan-cli).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Gorvan developers <maintainers@gorvan.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libarchive13")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "shared-mime-info, desktop-file-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "nautilus | dolphin | nemo | thunar")
include(CPack)
