# Builds for the Mac on Linux with clang, lld and LLVM's tools. Whoever uses it brings the SDK and a Qt built for the
# Mac, and sees to it that their licences allow that:
#   LUMO_MACOS_SDK   the SDK's folder, the one that holds System/ and usr/
#   LUMO_MACOS_QT    the folder of a Qt for macOS
#   LUMO_MACOS_JSON  the folder that nlohmann-json is installed in; this system's own, which lies beside the headers of its
#                    C library, will not do
#   LUMO_MACOS_ARCH  arm64 (the default) or x86_64
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LUMO_MACOS_SDK LUMO_MACOS_QT LUMO_MACOS_JSON LUMO_MACOS_ARCH)
if(NOT LUMO_MACOS_SDK OR NOT EXISTS ${LUMO_MACOS_SDK}/System/Library/Frameworks)
  message(FATAL_ERROR "Please set LUMO_MACOS_SDK to the folder of an SDK for macOS that you may use here")
endif()
if(NOT LUMO_MACOS_ARCH)
  set(LUMO_MACOS_ARCH arm64)
endif()
set(CMAKE_SYSTEM_PROCESSOR ${LUMO_MACOS_ARCH})
set(CMAKE_OSX_ARCHITECTURES ${LUMO_MACOS_ARCH} CACHE STRING "" FORCE)
set(CMAKE_OSX_DEPLOYMENT_TARGET 13.0 CACHE STRING "" FORCE)
set(CMAKE_OSX_SYSROOT ${LUMO_MACOS_SDK} CACHE PATH "" FORCE)
foreach(language C CXX OBJCXX)
  set(CMAKE_${language}_COMPILER_TARGET ${LUMO_MACOS_ARCH}-apple-macosx13.0)
endforeach()
find_program(CMAKE_C_COMPILER NAMES clang-16 clang REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES clang++-16 clang++ REQUIRED)
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
find_program(CMAKE_AR NAMES llvm-ar-16 llvm-ar)
find_program(CMAKE_RANLIB NAMES llvm-ranlib-16 llvm-ranlib)
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool-16 llvm-install-name-tool)
# CMake knows how to name the folder of the bundle's libraries on a Mac only.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,-rpath,@executable_path/../Frameworks")
set(CMAKE_FIND_ROOT_PATH ${LUMO_MACOS_SDK} ${LUMO_MACOS_QT} ${LUMO_MACOS_JSON})
set(CMAKE_PREFIX_PATH ${LUMO_MACOS_QT} ${LUMO_MACOS_JSON})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
