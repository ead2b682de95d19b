#!/bin/bash
# package.sh SOURCE BUILD: uses the package as a host project does, from a folder with a name that hurts.
# The ZIP is unpacked, a project outside the tree finds it and builds README's host, and the host signs in. Every
# installed header compiles alone, with g++ and with clang. What carries a version carries the project's.
set -euo pipefail
source=$1 build=$2
scratch="$build/tests/package/a host's folder, größer и дальше"
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch"
expect() { # WHAT CONDITION...
  local what=$1
  shift
  "$@" || {
    echo "not so: $what"
    exit 1
  }
}

(cd "$build" && cpack -B "$scratch" > "$scratch/cpack.log") || { cat cpack.log && exit 1; }
cmake -E tar xf ./*.zip
package=$(echo "$scratch"/orvellogin-*-mingw-x86)
expect "one package" [ -d "$package" ]

cross=(-G Ninja --toolchain "$source/cmake/mingw-x86.cmake" "-DCMAKE_PREFIX_PATH=$package"
  -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH)

echo "== a project outside the tree"
mkdir project
cp "$source/tests/package/consumer/CMakeLists.txt" project/
# shellcheck disable=SC2016  # the backquotes are README's
sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$source/README.md" > project/host.cpp
cmake -S project -B project/build "${cross[@]}"
cmake --build project/build
cp -r "$package/share/orvellogin/examples/standins/OrvelLoginManagerClient" project/build/
output=$("$source/script/wine-run" project/build/host.exe | tr -d '\r')
expect "the host signs in: $output" [ "$output" = "signed in: Ada Lovelace" ]

echo "== the examples in the package"
for example in "$package"/share/orvellogin/examples/signin*/CMakeLists.txt; do
  example=${example%/*}
  cmake -S "$example" -B "${example##*/}" "${cross[@]}"
  cmake --build "${example##*/}"
done

echo "== headers alone"
gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")
clang=(clang++ --target=i686-w64-mingw32 -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/i686-w64-mingw32"
  -isystem "$gcc/include/c++/backward")
count=0
while IFS= read -r header; do
  for compiler in i686-w64-mingw32-g++-posix "${clang[*]}"; do
    # shellcheck disable=SC2086  # a command with its options
    $compiler -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$package/include" -include "$header" -x c++ /dev/null
  done
  count=$((count + 1))
done < <(cd "$package/include" && find . -name '*.h')
expect "headers are installed" [ "$count" -gt 0 ]

echo "== versions"
version=$(sed -n 's/^project(orvellogin VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
for file in "$package"/bin/{orvellogin.dll,OrvelLoginClientCLR.dll,*.exe}; do
  [ -e "$file" ] || continue
  expect "${file##*/} carries version $version" python3 - "$file" "$version" << 'END'
import sys
data = open(sys.argv[1], "rb").read()
at = data.find("ProductVersion".encode("utf-16-le"))
sys.exit(at < 0 or sys.argv[2].encode("utf-16-le") not in data[at:at + 80])
END
done
echo "package: $count headers, all well"
rm -rf "$scratch"
