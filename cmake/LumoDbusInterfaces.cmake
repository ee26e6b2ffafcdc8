# lumo_dbus_interfaces(<library> <interface file>...)
# Declares a static library of what gdbus-codegen makes of D-Bus interfaces: proxies to call objects of
# other programs, and skeletons for own ones, in C. The file org.example.Name.xml becomes the header
# <org.example.Name.h>; the annotation org.gtk.GDBus.C.Name in it, after "Dbus" and "dbus_", is what its
# types and functions are called by. The generated code is not held to this project's warnings.
function(lumo_dbus_interfaces library)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0 gio-unix-2.0)
  find_program(GDBUS_CODEGEN gdbus-codegen REQUIRED)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${library})
  file(MAKE_DIRECTORY ${folder})
  foreach(file IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH file)
    cmake_path(GET file STEM LAST_ONLY interface)
    add_custom_command(
      OUTPUT ${folder}/${interface}.c ${folder}/${interface}.h
      COMMAND ${GDBUS_CODEGEN} --c-namespace Dbus --c-generate-autocleanup none
              --generate-c-code ${interface} --output-directory ${folder} ${file}
      DEPENDS ${file}
      VERBATIM)
    list(APPEND generated ${folder}/${interface}.c ${folder}/${interface}.h)
  endforeach()
  add_library(${library} STATIC ${generated})
  target_compile_options(${library} PRIVATE -w)
  set_target_properties(${library} PROPERTIES UNITY_BUILD OFF)
  target_include_directories(${library} SYSTEM PUBLIC ${folder})
  target_link_libraries(${library} PUBLIC PkgConfig::GIO)
endfunction()
