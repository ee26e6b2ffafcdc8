# What a build can check beyond the compiler's warnings.
option(LUMO_CHECK_LIBRARY "Have the C++ library check indices, empty containers and empty optionals" OFF)
option(LUMO_CHECK_TYPES "Fail to link where two types have one name (GCC only)" OFF)

if(LUMO_CHECK_LIBRARY)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Only the link sees all types. It needs what the optimiser of the link needs, even if nothing is optimised.
if(LUMO_CHECK_TYPES AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  add_link_options(-Wodr -Werror=odr -Wlto-type-mismatch -Werror=lto-type-mismatch)
endif()
