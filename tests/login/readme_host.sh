#!/bin/bash
# readme_host.sh SOURCE BUILD SCRATCH: compiles the host printed in README by the command printed there, and runs it.
set -euo pipefail
source=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
# shellcheck disable=SC2016  # the backquotes are README's
sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$source/README.md" > "$scratch/host.cpp"
command=$(sed -n '/^i686-w64-mingw32-g++/,/[^\\]$/p' "$source/README.md")
cd "$source"
# README names the release build and a host.cpp; everything else stands as it is there.
command=${command//build\/mingw-x86-release/$build}
command=${command//host.cpp/$scratch/host.cpp}
(set -x; eval "$command")
output=$(script/wine-run "$build/bin/host.exe" | tr -d '\r')
rm -f "$build/bin/host.exe"
echo "$output"
[ "$output" = "signed in: Ada Lovelace" ]
