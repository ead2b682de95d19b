# The common part of the toolchain files for mingw-w64's g++, which set `triple`. In the variant with POSIX threads, which has
# std::thread and std::mutex. Debian marks it by the suffix -posix; other systems have only this variant.
set(CMAKE_SYSTEM_NAME Windows)

find_program(ORVELLOGIN_GCC NAMES ${triple}-gcc-posix ${triple}-gcc REQUIRED)
find_program(ORVELLOGIN_GXX NAMES ${triple}-g++-posix ${triple}-g++ REQUIRED)
set(CMAKE_C_COMPILER ${ORVELLOGIN_GCC})
set(CMAKE_CXX_COMPILER ${ORVELLOGIN_GXX})
set(CMAKE_RC_COMPILER ${triple}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# In the library's own tree, tests and examples run under Wine.
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/../script/wine-run)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../script/wine-run)
endif()
