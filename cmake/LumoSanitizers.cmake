# LUMO_SANITIZE names a sanitizer set: "address" (with undefined behaviour) or "thread".
set(LUMO_SANITIZE "" CACHE STRING "address or thread; empty for none")

if(LUMO_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  set(suppressions ${CMAKE_CURRENT_LIST_DIR}/LeakSanitizerSuppressions.cpp)
elseif(LUMO_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
  set(suppressions ${CMAKE_CURRENT_LIST_DIR}/ThreadSanitizerSuppressions.cpp)
elseif(NOT LUMO_SANITIZE STREQUAL "")
  message(FATAL_ERROR "LUMO_SANITIZE must be empty, address or thread, not ${LUMO_SANITIZE}")
endif()

if(suppressions)
  target_sources(lumo_warnings INTERFACE
    "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${suppressions}>")
endif()

# Most of what the optimiser does beyond the basics only costs time here, and so do all debuggers' facts but lines.
if(LUMO_SANITIZE)
  add_compile_options(-O1 -g1)
endif()

# GCC warns of optionals that are read only when they are set, once the sanitizers' checks lie between.
if(LUMO_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-maybe-uninitialized)
endif()
