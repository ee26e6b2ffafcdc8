# The dependency table of the project, as the build sees it: a folder below src/ is one library, and its
# headers can be included only by the folders that name it in LINKS. Each library therefore gets an include
# root of its own that holds nothing but links to its headers.

add_library(lumo_warnings INTERFACE)
target_compile_features(lumo_warnings INTERFACE cxx_std_20)
target_compile_options(lumo_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(APPLE)
  # Else the system's headers define check(), require() and verify() as macros.
  target_compile_definitions(lumo_warnings INTERFACE __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES=0)
endif()

# lumo_library(<folder> SOURCES <files> [LINKS <libraries>] [PRIVATE_LINKS <libraries>])
# Declares the library lumo_<folder> (slashes become underscores). Without sources it is header-only.
function(lumo_library folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  string(REPLACE "/" "_" name lumo_${folder})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(GLOB headers RELATIVE ${CMAKE_SOURCE_DIR}/src CONFIGURE_DEPENDS
       ${CMAKE_SOURCE_DIR}/src/${folder}/*.h)
  file(REMOVE_RECURSE ${root})
  file(MAKE_DIRECTORY ${root}/${folder})
  foreach(header IN LISTS headers)
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${header} ${root}/${header} SYMBOLIC)
  endforeach()
  if(ARG_SOURCES)
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${root})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE lumo_warnings ${ARG_PRIVATE_LINKS})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${root})
    target_link_libraries(${name} INTERFACE ${ARG_LINKS})
  endif()
endfunction()
