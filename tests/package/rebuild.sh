#!/bin/bash
# rebuild.sh SOURCE BUILD: another project includes a copy of the source tree. That must build only what is linked, and produce the
# same bytes.
. "$(dirname "$0")/../support/checks.sh"
mkdir copy
tar -C "$source" --exclude=./build --exclude=./.git --exclude=./tests --exclude=./bench -cf - . | tar -C copy -xf -
blocks "$source/README.md" cpp > host.cpp
cat > CMakeLists.txt << 'END'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX)
add_custom_target(own ALL COMMAND ${CMAKE_COMMAND} -E touch own)
add_subdirectory(copy)
add_executable(host EXCLUDE_FROM_ALL host.cpp)
target_compile_features(host PRIVATE cxx_std_17)
target_link_libraries(host PRIVATE orvellogin::orvellogin)
orvellogin_deploy(host)
END
run() { "$@" > log 2>&1 || { cat log && exit 1; }; }
run cmake -S . -B build -G Ninja --toolchain "$source/cmake/mingw-x86.cmake" -DCMAKE_BUILD_TYPE=Release
run cmake --build build
same "what is built of the library without need" "" "$(find build/copy -name '*.dll' -o -name '*.exe' -o -name '*.obj')"
run cmake --build build --target host
cp -r build/copy/bin/OrvelLoginManagerClient build
host_says build/host.exe 0 "signed in: Ada Lovelace"
expect "no tool is built" [ ! -e build/copy/bin/orvdiag.exe ]

# Both builds have the same epoch, but different local times.
export SOURCE_DATE_EPOCH=1234567890
run cmake -DORVELLOGIN_INSTALL=ON -DORVELLOGIN_TOOLS=ON build
TZ=UTC-9 run cmake --build build --target orvellogin_zip
TZ=UTC+5 run cmake --build "$build" --target orvellogin_zip
for file in "$build"/*.zip; do
  cmp "$file" "build/copy/${file##*/}" || {
    diff -r "$build/package/$(basename "$file" .zip)" "build/copy/package/$(basename "$file" .zip)"
    exit 1
  }
done
expect "files have the time that was given" grep -q '2009-02-13 23:31' <(unzip -l "$build"/*-mingw-x86.zip)
rm -rf "$scratch"
