# How an object and the bundle are made, in place of what CMake would tell Apple's tools.
set(here ${CMAKE_CURRENT_LIST_DIR})
set(libraries ${here}/libraries/Carbon.tbd ${here}/libraries/CoreFoundation.tbd
  ${here}/libraries/CoreGraphics.tbd ${here}/libraries/libSystem.tbd)

# What there is no compiler's library for.
set(PICTURE_PLATFORM_SOURCES ${here}/division.cpp)

# What everything has to be made anew for.
set(PICTURE_OBJECT_DEPENDS ${here}/assemble.py ${libraries})
set(PICTURE_LINK_DEPENDS ${here}/check.py ${here}/../bundle_tables.py ${here}/rules.cmake)

list(JOIN libraries " " libraries)
set(CMAKE_CXX_COMPILE_OBJECT
  "<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -S -o <OBJECT>.compiled.s <SOURCE>"
  "python3 ${here}/assemble.py <OBJECT>.compiled.s <OBJECT>.s ${libraries}"
  "<CMAKE_CXX_COMPILER> -c -o <OBJECT> <OBJECT>.s")

# Options for the linker reach it without a compiler in between.
set(CMAKE_CXX_LINKER_WRAPPER_FLAG "")

# The linker leaves its padding as malloc hands it out; the variable makes that zeros.
set(link "${CMAKE_COMMAND} -E env MALLOC_PERTURB_=255 ld64.lld.darwinold-13 -arch i386 \
-macosx_version_min 10.6.0 -sdk_version 10.6 -bundle <LINK_FLAGS> <OBJECTS> ${libraries}")
set(CMAKE_CXX_CREATE_SHARED_MODULE
  "${link} -image_base 0 -o <TARGET>"
  "${link} -image_base 0x10000000 -o <TARGET>.moved"
  "python3 ${here}/check.py <TARGET> <TARGET>.moved <LINK_FLAGS> ${libraries}")
