# Builds the plug-in for macOS on both 64-bit processors at once, on Debian; CMakeLists.txt adds the
# bundle for 32-bit x86. The headers and link stubs are those of that bundle.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET x86_64-apple-macosx10.9)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc++ -nostdlibinc -isystem ${CMAKE_CURRENT_LIST_DIR}/../macos-i386/include")

set(CMAKE_USER_MAKE_RULES_OVERRIDE_CXX ${CMAKE_CURRENT_LIST_DIR}/rules.cmake)
