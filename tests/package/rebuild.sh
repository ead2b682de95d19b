#!/bin/bash
# rebuild.sh SOURCE BUILD: another project includes a copy of the source tree. That must build only what is linked, put what a
# program needs beside it, leave the project's own names alone, and produce the same bytes.
. "$(dirname "$0")/../support/checks.sh"
# Ninja does not know a folder again whose name has "'" or "&", and would compile everything twice.
scratch="$build/tests/another project"
rm -rf "$scratch"
mkdir -p "$scratch/copy"
cd "$scratch"
tar -C "$source" --exclude=./build --exclude=./.git --exclude=./tests --exclude=./bench -cf - . | tar -C copy -xf -
cat > CMakeLists.txt << 'END'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES C CXX)
set(CMAKE_UNITY_BUILD ON)
set(CMAKE_RELEASE_POSTFIX -own)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY_RELEASE ${CMAKE_BINARY_DIR}/own)
add_custom_target(compiler_runtime ALL COMMAND ${CMAKE_COMMAND} -E touch own-target)
add_subdirectory(copy)
foreach(name add_version_info add_managed add_import_libraries add_host_headers add_pkg_config install_in_zip)
  if(COMMAND ${name})
    message(SEND_ERROR "${name} would replace a function of the project's")
  endif()
endforeach()
foreach(target orvellogin client)
  add_executable(host-${target} EXCLUDE_FROM_ALL copy/examples/signin/main.cpp)
  set_target_properties(host-${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY_RELEASE ${target})
  target_compile_features(host-${target} PRIVATE cxx_std_17)
  target_link_libraries(host-${target} PRIVATE orvellogin::${target})
  orvellogin_deploy(host-${target})
endforeach()
END
run() { "$@" > log 2>&1 || { cat log && exit 1; }; }
run cmake -S . -B build -G "Ninja Multi-Config" --toolchain "$source/cmake/mingw-$architecture.cmake"
run cmake --build build --config Release
expect "the project's own target is built" [ -e build/own-target ]
same "what is built of the library without need" "" "$(find build/copy -name '*.dll' -o -name '*.exe' -o -name '*.obj')"

run cmake --build build --config Release --target host-client
expect "only the linked DLL is built" [ -e build/copy/bin/Release/orvelloginc.dll -a ! -e build/copy/bin/Release/orvellogin.dll ]
run cmake --build build --config Release --target host-orvellogin
for target in orvellogin client; do
  cp -r build/copy/bin/Release/OrvelLoginManagerClient build/$target
  expect "a host of orvellogin::$target signs in" \
    grep -q 'nobody is signed in: code 7' <("$source/script/wine-run" "build/$target/host-$target.exe" 2>&1)
done
# Debug information may differ by relative paths, which a compiler cache makes of the absolute ones; it must name no folder.
strip() { # FILE TO
  "$(sed -n 's/^CMAKE_STRIP:FILEPATH=//p' "$build/CMakeCache.txt")" -o "$2" "$1"
}
for name in orvellogin orvelloginc; do
  strip "$build/bin/$name.dll" first.dll
  strip "build/copy/bin/Release/$name.dll" second.dll
  expect "$name.dll has the same bytes in another folder" cmp first.dll second.dll
  same "folders that $name.dll names" 0 "$(grep -c "$scratch" "build/copy/bin/Release/$name.dll" || true)"
done
for file in bin/{OrvelLoginClientCLR,libstdc++-6}.dll lib/{liborvellogin.dll.a,liborvelloginc.dll.a,orvelloginc.lib}; do
  expect "$file has the same bytes in another folder" cmp "$build/$file" "build/copy/${file%/*}/Release/${file##*/}"
done

echo 'class Added {}' >> copy/login/managed/EntryPoint.cs
run cmake --build build --config Release --target host-client
expect "a new managed part is copied beside the host" \
  cmp build/copy/bin/Release/OrvelLoginClientCLR.dll build/client/OrvelLoginClientCLR.dll
same "whether the managed part is new" 1 "$(cmp -s "$build/bin/OrvelLoginClientCLR.dll" build/client/OrvelLoginClientCLR.dll; echo $?)"
rm -rf "$scratch"
