# Builds the plug-in for 32-bit macOS on Debian: clang compiles, assemble.py fits its assembly to the
# only free linker that still knows this processor, that linker links at two addresses, and check.py
# holds the two images against each other before either counts as built.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET i386-apple-macosx10.6)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# The headers here stand in for the system's, which Debian doesn't have. The stack is brought to 16
# bytes by each function, in case a host's code doesn't.
set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc++ -nostdlibinc -isystem ${CMAKE_CURRENT_LIST_DIR}/include -mstackrealign")

set(CMAKE_USER_MAKE_RULES_OVERRIDE_CXX ${CMAKE_CURRENT_LIST_DIR}/rules.cmake)
