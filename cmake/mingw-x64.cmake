# Targets 64-bit Windows with mingw-w64's g++.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(triple x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
