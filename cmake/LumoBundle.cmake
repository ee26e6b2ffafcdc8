# The application bundle of macOS: Lumo.app with its property list, its icon and, when there is an identity to sign
# with, a signature with the hardened runtime.
set(LUMO_SIGNING_IDENTITY "-" CACHE STRING "Identity to sign the bundle with; - signs for this Mac only, empty not at all")
set(LUMO_UPDATE_FEED "" CACHE STRING "Address of the update feed; empty leaves updates out")
set(LUMO_UPDATE_KEY "" CACHE STRING "Public key with which the updates in that feed are signed")

set(packaging ${CMAKE_SOURCE_DIR}/packaging/macos)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core)
target_link_libraries(lumo PRIVATE Qt6::Core)
target_compile_options(lumo PRIVATE -fobjc-arc)
set(icon ${CMAKE_CURRENT_BINARY_DIR}/Lumo.icns)
add_custom_command(OUTPUT ${icon}
  COMMAND ${packaging}/make-icon ${CMAKE_SOURCE_DIR}/packaging/lumo.svg ${icon}
  DEPENDS ${packaging}/make-icon ${CMAKE_SOURCE_DIR}/packaging/lumo.svg
  VERBATIM)
target_sources(lumo PRIVATE ${icon})
set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
set_target_properties(lumo PROPERTIES
  MACOSX_BUNDLE ON
  OUTPUT_NAME Lumo
  MACOSX_BUNDLE_INFO_PLIST ${packaging}/Info.plist.in
  BUILD_RPATH "@executable_path/../Frameworks")
if(LUMO_SIGNING_IDENTITY)
  find_program(CODESIGN codesign)
  if(CODESIGN)
    add_custom_command(TARGET lumo POST_BUILD
      COMMAND ${CODESIGN} --force --options runtime --entitlements ${packaging}/Lumo.entitlements
              --sign ${LUMO_SIGNING_IDENTITY} $<TARGET_BUNDLE_DIR:lumo>
      VERBATIM)
  endif()
endif()
