# How an object and the bundle are made of a slice for each processor.
set(here ${CMAKE_CURRENT_LIST_DIR})
set(libraries ${here}/../macos-i386/libraries)
set(libraries ${libraries}/Carbon.tbd ${libraries}/CoreFoundation.tbd ${libraries}/CoreGraphics.tbd
  ${libraries}/libSystem.tbd)
set(PICTURE_LINK_DEPENDS ${here}/check.py ${here}/rules.cmake ${here}/../bundle_tables.py ${libraries})

# CMake lets a compiler cache see the first command alone.
set(launcher ${CMAKE_CXX_COMPILER_LAUNCHER})
if(NOT launcher)
  set(launcher $ENV{CMAKE_CXX_COMPILER_LAUNCHER})
endif()

list(JOIN libraries " " libraries)
set(join "llvm-lipo-14 -create -output")
set(CMAKE_CXX_COMPILE_OBJECT
  "<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -c -o <OBJECT>.x86_64 <SOURCE>"
  "${launcher} <CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> --target=arm64-apple-macosx11.0 -c -o <OBJECT>.arm64 <SOURCE>"
  "${join} <OBJECT> <OBJECT>.x86_64 <OBJECT>.arm64")

# Options for the linker reach it without a compiler in between.
set(CMAKE_CXX_LINKER_WRAPPER_FLAG "")

set(link "ld64.lld-16 -bundle <LINK_FLAGS> <OBJECTS> ${libraries}")
set(CMAKE_CXX_CREATE_SHARED_MODULE
  "${link} -arch x86_64 -platform_version macos 10.9 10.9 -o <TARGET>.x86_64"
  "${link} -arch arm64 -platform_version macos 11.0 11.0 -o <TARGET>.arm64"
  "${join} <TARGET> <TARGET>.x86_64 <TARGET>.arm64"
  "python3 ${here}/check.py <TARGET> <LINK_FLAGS> ${libraries}")
