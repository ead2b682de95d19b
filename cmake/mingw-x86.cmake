# Targets 32-bit Windows with mingw-w64's g++, in the variant with POSIX threads, which has std::thread and std::mutex. Debian
# marks it by the suffix -posix; other systems have only this variant.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

find_program(ORVELLOGIN_GCC NAMES i686-w64-mingw32-gcc-posix i686-w64-mingw32-gcc REQUIRED)
find_program(ORVELLOGIN_GXX NAMES i686-w64-mingw32-g++-posix i686-w64-mingw32-g++ REQUIRED)
set(CMAKE_C_COMPILER ${ORVELLOGIN_GCC})
set(CMAKE_CXX_COMPILER ${ORVELLOGIN_GXX})
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# In the library's own tree, tests and examples run under Wine.
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/../script/wine-run)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../script/wine-run)
endif()
