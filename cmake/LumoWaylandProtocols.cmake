# lumo_wayland_protocols(<library> <protocol file>...)
# Declares a static library of what wayland-scanner makes of Wayland protocols, in C: name.xml becomes the header
# <name-client-protocol.h>. The generated code is not held to this project's warnings.
function(lumo_wayland_protocols library)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(WAYLAND_CLIENT REQUIRED IMPORTED_TARGET wayland-client)
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${library})
  file(MAKE_DIRECTORY ${folder})
  foreach(file IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH file)
    cmake_path(GET file STEM LAST_ONLY name)
    set(header ${folder}/${name}-client-protocol.h)
    set(code ${folder}/${name}-protocol.c)
    add_custom_command(
      OUTPUT ${header} ${code}
      COMMAND ${WAYLAND_SCANNER} client-header ${file} ${header}
      COMMAND ${WAYLAND_SCANNER} private-code ${file} ${code}
      DEPENDS ${file}
      VERBATIM)
    list(APPEND generated ${header} ${code})
  endforeach()
  add_library(${library} STATIC ${generated})
  target_compile_options(${library} PRIVATE -w)
  target_include_directories(${library} SYSTEM PUBLIC ${folder})
  target_link_libraries(${library} PUBLIC PkgConfig::WAYLAND_CLIENT)
endfunction()
