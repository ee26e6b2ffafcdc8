# What is installed on a desktop of freedesktop.org's kind beside the program: its desktop entry and service file, its
# description for software catalogues, the manual page and the icons.
include(GNUInstallDirs)
set(sources ${CMAKE_SOURCE_DIR}/packaging)
set(made ${CMAKE_CURRENT_BINARY_DIR})
set(id app.lumo.Lumo)

# A catalogue fetches its pictures from the web: <image> takes no other address.
set(LUMO_PICTURES_ADDRESS "" CACHE STRING "The web address of docs/images, for catalogues; without one they show no picture")
set(LUMO_SCREENSHOTS "")
if(LUMO_PICTURES_ADDRESS)
  set(type " type=\"default\"")
  foreach(picture IN ITEMS
      "soft-blur.jpg|Soft blur: what lies behind is alive, but out of focus"
      "dim.jpg|Dim: the window in focus stays clear, the others recede"
      "tint.jpg|Tint: the others turn blue"
      "interface/settings-appearance-light@2x.png|The settings window")
    string(REGEX MATCH "^(.*)\\|(.*)$" whole "${picture}")
    string(APPEND LUMO_SCREENSHOTS "    <screenshot${type}>\n      <caption>${CMAKE_MATCH_2}</caption>\n"
      "      <image>${LUMO_PICTURES_ADDRESS}/${CMAKE_MATCH_1}</image>\n    </screenshot>\n")
    set(type "")
  endforeach()
  set(LUMO_SCREENSHOTS "  <screenshots>\n${LUMO_SCREENSHOTS}  </screenshots>\n")
endif()
execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/package/release-notes metainfo
  OUTPUT_VARIABLE LUMO_RELEASES OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

configure_file(${sources}/linux/${id}.metainfo.xml.in ${made}/${id}.metainfo.xml @ONLY)
configure_file(${sources}/linux/lumo.1.in ${made}/lumo.1 @ONLY)
# A service names the program by its full path, which is known when it is installed.
install(CODE "
  set(LUMO_PROGRAM \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/lumo\")
  configure_file(\"${sources}/linux/${id}.service.in\" \"${made}/${id}.service\" @ONLY)")

install(TARGETS lumo)
install(FILES ${sources}/linux/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${made}/${id}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES ${made}/${id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${made}/lumo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${sources}/lumo.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps RENAME ${id}.svg)
install(FILES ${sources}/lumo-symbolic.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps RENAME ${id}-symbolic.svg)
