# The files that `cmake --install` and `./dev package` install.
include(GNUInstallDirs)
set(package vrkt-wlan-udi-log-decode)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/${package})

install(TARGETS vrkt_wlan_udi_log_decode RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Everything that the README points to.
install(FILES README.md CONTRIBUTING.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs/ DESTINATION ${documents}/docs PATTERN *.1 EXCLUDE)
install(FILES examples/session.udi examples/session.txt DESTINATION ${documents}/examples)
# The form of the text for the log viewer lnav, which has the forms for all users in /etc.
set(settings ${CMAKE_INSTALL_SYSCONFDIR})
if(CPACK_GENERATOR STREQUAL "DEB")
  set(settings /etc)
  file(WRITE ${CMAKE_BINARY_DIR}/packaging/conffiles
    "/etc/lnav/formats/vrkt_wlan_udi_log/vrkt_wlan_udi_log.json\n")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/packaging/conffiles)
endif()
install(FILES packaging/vrkt_wlan_udi_log.json
  DESTINATION ${settings}/lnav/formats/vrkt_wlan_udi_log)

# Debian requires these files compressed. -n leaves out the time stamp, so that builds
# are reproducible.
find_program(GZIP gzip)
function(install_compressed file name destination)
  get_filename_component(file ${file} ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
  if(NOT GZIP)
    install(FILES ${file} DESTINATION ${destination} RENAME ${name})
    return()
  endif()
  set(compressed ${CMAKE_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
    COMMAND ${GZIP} -9nc ${file} > ${compressed}
    DEPENDS ${file}
    VERBATIM)
  add_custom_target(compress_${name} ALL DEPENDS ${compressed})
  install(FILES ${compressed} DESTINATION ${destination})
endfunction()
install_compressed(docs/vrkt_wlan_udi_log_decode.1 vrkt_wlan_udi_log_decode.1
  ${CMAKE_INSTALL_MANDIR}/man1)

# Where Wireshark looks for plugins of all users, and the dynamic linker for what SQLite
# loads by its name alone. Debian's look in the directory of the architecture.
set(libraries "${CMAKE_INSTALL_LIBDIR}")
if(CPACK_GENERATOR STREQUAL "DEB" AND CMAKE_LIBRARY_ARCHITECTURE)
  set(libraries "lib/${CMAKE_LIBRARY_ARCHITECTURE}")
endif()
if(NOT CMAKE_CROSSCOMPILING)
  install(FILES "${CMAKE_BINARY_DIR}/wireshark/udi.lua" DESTINATION "${libraries}/wireshark/plugins")
  install(DIRECTORY wireshark/profiles DESTINATION ${CMAKE_INSTALL_DATADIR}/wireshark)
endif()

set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The authors of vrkt_wlan_udi_log_decode <udi-log-decode@vrkt.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "decoder for the UDI log of a WLAN driver")
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_SOURCE_DIR}/build/packages)
# The archive runs on any Linux PC or phone with this processor.
set(CPACK_ARCHIVE_FILE_NAME ${package}-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR}-static)
set(CPACK_PACKAGE_FILE_NAME ${CPACK_ARCHIVE_FILE_NAME})

if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION net)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS sqlite3)
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Reads a WLAN driver's debug log of the signals between host and Wi-Fi
firmware, from a file or live from a pipe, and prints one line of text per
signal, with each field by name and enumerated values as labels.")
  install(FILES packaging/copyright DESTINATION ${documents})
  # Its first entry has the version of the package.
  set(changelog ${CMAKE_BINARY_DIR}/packaging/changelog)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  execute_process(
    COMMAND awk -v version=${PROJECT_VERSION} -f packaging/changelog.awk CHANGELOG.md
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} RESULT_VARIABLE failed OUTPUT_VARIABLE entries)
  if(failed OR NOT entries MATCHES "\\(([^)]*)\\)")
    message(FATAL_ERROR "CHANGELOG.md cannot be made into the package's change log.")
  endif()
  set(CPACK_DEBIAN_PACKAGE_VERSION ${CMAKE_MATCH_1})
  file(WRITE ${changelog} "${entries}")
  install_compressed(${changelog} changelog ${documents})
endif()
include(CPack)
