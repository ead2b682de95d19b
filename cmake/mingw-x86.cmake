# Targets 32-bit Windows with mingw-w64's g++.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(triple i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
