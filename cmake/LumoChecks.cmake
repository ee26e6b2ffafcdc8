# What a build can check beyond the compiler's warnings.
option(LUMO_CHECK_LIBRARY "Have the C++ library check indices, empty containers and empty optionals" OFF)
option(LUMO_CHECK_TYPES "Fail to link where two types have one name (GCC only)" OFF)

if(LUMO_CHECK_LIBRARY)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Only a link of all code by its meaning sees all types. It needs what the optimiser of the link needs, even if nothing is
# optimised. That of the program does it; all others take the machine code that the objects hold as well. The compiler
# forgets the check where it is told -fno-lto first and -flto after.
if(LUMO_CHECK_TYPES AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-flto=auto -ffat-lto-objects)
  add_link_options($<IF:$<BOOL:$<TARGET_PROPERTY:LUMO_CHECKS_TYPES>>,-flto=auto,-fno-lto>)
endif()

# lumo_check_types(<program>)
function(lumo_check_types program)
  if(LUMO_CHECK_TYPES AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_target_properties(${program} PROPERTIES LUMO_CHECKS_TYPES ON)
    target_link_options(${program} PRIVATE -Wodr -Werror=odr -Wlto-type-mismatch -Werror=lto-type-mismatch)
  endif()
endfunction()
